// Comma separated records: what is split can be built again and splits the same.
#include "fuzz/Require.h"
#include "support/CSVRecord.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using namespace brennik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string strRecord(reinterpret_cast<const char*>(data), size);
    CSVRecord record;
    std::vector<std::string> strFields;
    int16_t iNoOfFields = 0;
    if (record.BreakOutFields(strFields, iNoOfFields, strRecord) != 0)
        return 0;
    fuzz::Require(iNoOfFields >= 1, "a record that splits has a field");
    fuzz::Require(strFields.size() == static_cast<size_t>(iNoOfFields) + 1,
                  "one spare entry stands behind the fields");
    fuzz::Require(strFields.back().empty(), "and it is empty");

    std::vector<std::string> strCopy = strFields;
    std::string strBuilt;
    record.bEncloseFields(true); // quoted, every field keeps its blanks
    fuzz::Require(record.BuildPacket(strCopy, iNoOfFields, strBuilt) == 0, "it can be built");
    std::vector<std::string> strAgain;
    int16_t iAgain = 0;
    fuzz::Require(record.BreakOutFields(strAgain, iAgain, strBuilt) == 0, "and split again");
    fuzz::Require(iAgain == iNoOfFields && strAgain == strFields, "into the same fields");
    return 0;
}
