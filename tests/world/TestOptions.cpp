#include "tests/world/TestOptions.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace brennik::world {

int64_t TestOption(const char* strName, int64_t lDefault) {
    const char* value = std::getenv(strName);
    if (value == nullptr)
        return lDefault;
    const std::string_view strValue = value;
    int64_t lValue = lDefault;
    std::from_chars(strValue.data(), strValue.data() + strValue.size(), lValue);
    return lValue;
}

} // namespace brennik::world
