// A number with the word for what it counts, as the far ends and their program tell it.
// Plain text work, for real and in tests alike.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace brennik::sim {

/// "1 byte", "2 bytes": the word stands in the plural where it belongs.
template <std::integral Number>
std::string Counted(Number count, std::string_view strWhat) {
    return std::to_string(count).append(" ").append(strWhat).append(count == 1 ? "" : "s");
}

} // namespace brennik::sim
