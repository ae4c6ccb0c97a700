// The small messages by which the system speaks to a device first: comma-separated payloads of
// ordinary frames, but with an LRC as block check and acknowledged by the link itself.
// Plain text work; tests use it as it is.
#pragma once

#include <cstdint>
#include <string>

namespace brennik {

class TBrennikClientConfig;

/// The block check of the frames that carry them.
inline constexpr int32_t kManagementChecksumType = 0;

/// What the device is to do, by lPassThruType: download, full download, or upload of the files
/// that lUploadFileType names.
std::string BuildTransferCommandMessage(const TBrennikClientConfig& oConfig);

/// Asks whether the device is ready.
std::string BuildStatusQueryMessage(const TBrennikClientConfig& oConfig);

// Each is false for a reply of fewer than 9 fields. Case counts.
bool IsTransferAuthorisedReply(const std::string& strReply);
bool IsDeviceReadyReply(const std::string& strReply);
bool IsDeviceErrorReply(const std::string& strReply);

} // namespace brennik
