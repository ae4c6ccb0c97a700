#include "sim/DeviceMessages.h"

#include "sim/Codec.h"

namespace brennik::sim {

namespace {

constexpr size_t kPositions = 9;
constexpr size_t kWhat = 2;
constexpr size_t kData = 8;

// Data holds commas that nothing quotes: it is what stands behind the eighth.
std::string_view DataOf(std::string_view strPayload) {
    for (size_t n = 0; n + 1 < kPositions; ++n) {
        const size_t nComma = strPayload.find(',');
        if (nComma == std::string_view::npos) {
            return {};
        }
        strPayload.remove_prefix(nComma + 1);
    }
    return strPayload;
}

std::string Reply(const ManagementMessage& message, std::string_view strWhat,
                  std::string_view strData) {
    return JoinRecord({message.strVersion, std::to_string(strData.size()), std::string(strWhat),
                       "R", "0", "0", "", "", std::string(strData)});
}

} // namespace

ManagementMessage ReadManagementMessage(std::string_view strPayload) {
    using Kind = ManagementMessage::Kind;
    const auto fields = SplitRecord(strPayload);
    ManagementMessage message;
    message.strVersion = fields[0];
    message.strData = DataOf(strPayload);
    if (fields.size() >= kPositions) {
        message.kind = fields[kWhat] == "U"    ? Kind::TransferCommand
                       : fields[kWhat] == "LS" ? Kind::StatusQuery
                                               : Kind::Other;
    }
    return message;
}

std::optional<std::string> ReplyTo(const ManagementMessage& message, const DeviceAnswer& answer) {
    using Kind = DeviceAnswer::Kind;
    const std::string_view strTransfer = message.bUpload() ? "U" : "T";
    switch (answer.kind) {
    case Kind::Agree:
    case Kind::AgreeOnly:
        return Reply(message, strTransfer, "A");
    case Kind::Refuse:
        return Reply(message, strTransfer, "D");
    case Kind::Short: {
        const std::string strWhole = Reply(message, strTransfer, "");
        return strWhole.substr(0, strWhole.size() - 1);
    }
    case Kind::Ready:
        return Reply(message, "LS", "R");
    case Kind::Error:
        return Reply(message, "E", "");
    case Kind::Other:
        return Reply(message, "LS", "B");
    case Kind::Bytes:
        return answer.strBytes;
    case Kind::Syn:
    case Kind::Silence:
    case Kind::Deaf:
        break;
    }
    return std::nullopt;
}

bool bAgrees(std::string_view strReply) {
    const auto fields = SplitRecord(strReply);
    return fields.size() >= kPositions && (fields[kWhat] == "T" || fields[kWhat] == "U") &&
           fields[kData] == "A";
}

} // namespace brennik::sim
