// INI texts: a value that was set reads back, every other value stays, and a second set of the
// same value changes nothing.
#include "fuzz/Require.h"
#include "platform/IniText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

using namespace brennik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string strContent(reinterpret_cast<const char*>(data), size);
    const std::optional<std::string> strOther = FindIniValue(strContent, "GENERAL", "Profilecount");
    const std::string strSet = WithIniValue(strContent, "PROFILE_1", "Mode", "7");
    fuzz::Require(FindIniValue(strSet, "PROFILE_1", "Mode") == "7", "what was set reads back");
    fuzz::Require(FindIniValue(strSet, "GENERAL", "Profilecount") == strOther,
                  "another value stays");
    fuzz::Require(WithIniValue(strSet, "PROFILE_1", "Mode", "7") == strSet,
                  "setting it again changes nothing");
    fuzz::Require(strSet.size() <= strContent.size() + 32, "one line changes at most");
    return 0;
}
