#include "passthru/ManagementMessages.h"

#include "config/TBrennikClientConfig.h"
#include "session/RequestRecord.h"
#include "support/AsciiText.h"

namespace brennik {

namespace {

// Places of the fields of a reply.
constexpr size_t kCommand = 2;
constexpr size_t kData = 8;

/// The version of the messages that the platform speaks.
std::string VersionOf(const TBrennikClientConfig& oConfig) {
    return UpperCase(oConfig.strPlatformName()) == "P400PLUS" ? "5.8" : "3.9";
}

std::string DataOf(const TBrennikClientConfig& oConfig) {
    switch (oConfig.lPassThruType()) {
    case 0:
        return "T,";
    case 2:
        return "F,";
    default:
        return "U," + ToDecimal(oConfig.lUploadFileType());
    }
}

/// The fields of a reply; empty for one of too few.
std::vector<std::string> ReplyFields(const std::string& strReply) {
    std::vector<std::string> strFields = FieldsOf(strReply);
    if (strFields.size() <= kData)
        strFields.clear();
    return strFields;
}

} // namespace

std::string BuildTransferCommandMessage(const TBrennikClientConfig& oConfig) {
    // The data has a comma of its own, which nothing quotes.
    const std::string strData = DataOf(oConfig);
    return VersionOf(oConfig) + "," + ToDecimal(strData.size()) + ",U,Q,0,0,,," + strData;
}

std::string BuildStatusQueryMessage(const TBrennikClientConfig& oConfig) {
    return VersionOf(oConfig) + ",0,LS,Q,0,0,,,";
}

bool IsTransferAuthorisedReply(const std::string& strReply) {
    const auto strFields = ReplyFields(strReply);
    return !strFields.empty() && (strFields[kCommand] == "T" || strFields[kCommand] == "U") &&
           strFields[kData] == "A";
}

bool IsDeviceReadyReply(const std::string& strReply) {
    const auto strFields = ReplyFields(strReply);
    return !strFields.empty() && strFields[kData] == "R";
}

bool IsDeviceErrorReply(const std::string& strReply) {
    const auto strFields = ReplyFields(strReply);
    return !strFields.empty() && strFields[kCommand] == "E";
}

} // namespace brennik
