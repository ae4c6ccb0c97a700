// What the far end of a client session says, for tests that play it by hand. The bytes come from
// the far ends' own codec, so that no code under test stands on both sides.
#pragma once

#include "sim/Codec.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik::session {

inline const std::string kEnq(1, sim::kEnq);
inline const std::string kAck(1, sim::kAck);
inline const std::string kNak(1, sim::kNak);

inline std::string Frame(std::string_view strPayload) {
    return sim::BuildFrame(strPayload);
}

/// An open file packet ("O", or "A" to append) of a data file.
inline std::string Open(std::string_view strName, int32_t lSize, char letter = 'O') {
    return sim::OpenPacket(letter, strName, lSize, DateTime{2026, 11, 14, 12, 0, 0});
}

inline std::string Write(std::string_view strData, uint32_t lOffset = 0) {
    return sim::WritePacket(lOffset, strData);
}

} // namespace brennik::session
