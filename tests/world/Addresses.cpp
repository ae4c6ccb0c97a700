#include "tests/world/Addresses.h"

#include <array>
#include <bit>
#include <charconv>
#include <optional>

namespace brennik::world {

namespace {

/// Four decimal parts of 0 to 255; the four bytes as they stand in network order.
std::optional<std::array<unsigned char, 4>> ParseDotted(std::string_view strText) {
    std::array<unsigned char, 4> bytes{};
    const char* at = strText.data();
    const char* const end = at + strText.size();
    for (size_t nPart = 0; nPart < bytes.size(); ++nPart) {
        if (nPart > 0 && (at == end || *at++ != '.')) {
            return std::nullopt;
        }
        const auto [next, code] = std::from_chars(at, end, bytes[nPart]);
        if (code != std::errc{}) {
            return std::nullopt;
        }
        at = next;
    }
    return at == end ? std::optional(bytes) : std::nullopt;
}

} // namespace

uint32_t AddressOf(std::string_view strText) {
    const auto bytes = ParseDotted(strText);
    return bytes ? std::bit_cast<uint32_t>(*bytes) : kNoAddress;
}

bool IsDotted(std::string_view strText) {
    return ParseDotted(strText).has_value();
}

std::string TextOf(uint32_t lAddress) {
    const auto bytes = std::bit_cast<std::array<unsigned char, 4>>(lAddress);
    std::string strText;
    for (const unsigned char part : bytes) {
        strText += (strText.empty() ? "" : ".") + std::to_string(part);
    }
    return strText;
}

uint16_t SwapPort(uint16_t iPort) {
    if constexpr (std::endian::native == std::endian::big) {
        return iPort;
    }
    return static_cast<uint16_t>((iPort << 8) | (iPort >> 8));
}

} // namespace brennik::world
