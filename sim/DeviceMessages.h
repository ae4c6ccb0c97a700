// The management messages by which a device is asked whether it will transfer and whether it is
// ready, and its replies: nine comma-separated positions, the last of which may hold commas.
// Pure text work, for real and in tests alike.
#pragma once

#include "sim/DeviceScript.h"

#include <optional>
#include <string>
#include <string_view>

namespace brennik::sim {

struct ManagementMessage {
    enum class Kind { TransferCommand, StatusQuery, Other };

    Kind kind = Kind::Other;
    std::string strVersion;
    std::string strData; ///< all behind the eighth comma
    /// A transfer command that wants files of the device.
    bool bUpload() const { return kind == Kind::TransferCommand && strData.starts_with('U'); }
};

ManagementMessage ReadManagementMessage(std::string_view strPayload);

/// The payload of the reply that an answer of the script stands for, in the version of the message;
/// nothing when there is none.
std::optional<std::string> ReplyTo(const ManagementMessage& message, const DeviceAnswer& answer);

/// A reply that lets the transfer begin.
bool bAgrees(std::string_view strReply);

} // namespace brennik::sim
