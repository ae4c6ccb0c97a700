#include "session/RequestRecord.h"

#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/CSVRecord.h"

namespace brennik {

std::vector<std::string> FieldsOf(const std::string& strRecord) {
    CSVRecord oRecord;
    std::vector<std::string> strFields;
    int16_t iNoFields = 0;
    if (oRecord.BreakOutFields(strFields, iNoFields, strRecord) != 0)
        return {};
    strFields.resize(static_cast<size_t>(iNoFields));
    return strFields;
}

std::string RecordOf(std::vector<std::string> strFields) {
    CSVRecord oRecord;
    std::string strRecord;
    if (oRecord.BuildPacket(strFields, Narrow<int16_t>(strFields.size()), strRecord) != 0)
        throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
    return strRecord;
}

} // namespace brennik
