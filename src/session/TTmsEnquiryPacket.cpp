#include "session/TTmsEnquiryPacket.h"

#include "platform/RuntimeFailure.h"
#include "session/RequestRecord.h"

namespace brennik {

namespace {

// Places of the fields.
constexpr size_t kStatus = 2;
constexpr size_t kTerminalId = 8; // where an error reply has its text
constexpr size_t kErrorText = 8;
constexpr size_t kApplicationId = 10;

} // namespace

void TTmsEnquiryPacket::SubstituteTerminalId(const std::string& strTerminalId,
                                             std::string& strPacket) {
    EditRecord(strPacket, kTerminalId + 1, [&](std::vector<std::string>& strFields) {
        strFields[kTerminalId] = strTerminalId;
    });
}

void TTmsEnquiryPacket::SubstituteApplicationId(const std::string& strApplicationID,
                                                std::string& strPacket) {
    EditRecord(strPacket, kApplicationId + 1, [&](std::vector<std::string>& strFields) {
        strFields[kApplicationId] = strApplicationID;
    });
}

bool TTmsEnquiryPacket::IsErrorPacket(const std::string& strPacket) {
    const auto strFields = FieldsOf(strPacket);
    if (strFields.size() <= kStatus || strFields[kStatus] != "E")
        return false;
    if (strFields.size() <= kErrorText)
        throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
    strErrorMessage_ = strFields[kErrorText];
    return true;
}

} // namespace brennik
