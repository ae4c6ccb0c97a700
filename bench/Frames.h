// The frames of a sending service, made ahead of a measurement so that nothing is built while the
// clock runs, and the sizes that a receiver without a parser must know of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace brennik::bench {

inline constexpr char kEnq = 0x05;
inline constexpr char kAck = 0x06;
inline constexpr size_t kWriteFrameOverhead = 10; ///< start, "W", length, offset, check
inline constexpr size_t kWriteDataAt = 8;         ///< where the data of such a frame begins
inline constexpr size_t kShortFrameSize = 5;      ///< close file, session successful
inline constexpr size_t kFileNameSize = 10;       ///< every file has a name of this length
inline constexpr size_t kOpenFrameSize = 44 + kFileNameSize;

/// What a service sends in one session.
struct Job {
    int64_t lFiles = 1;
    int64_t lBlocksOfFile = 1;
    size_t nBlock = 1024; ///< data bytes of each block, at most 65535

    int64_t FileBytes() const { return lBlocksOfFile * static_cast<int64_t>(nBlock); }
    int64_t DataFrames() const { return lFiles * lBlocksOfFile; }
};

/// "f000000.dt" and so on: the name of file lFile of a session.
std::string FileNameOf(int64_t lFile);

/// A few blocks of random bytes, always the same ones; block n of a file is block n modulo their
/// number. Few enough to stay in a cache, so that the sender is no limit.
std::vector<std::string> DataBlocks(size_t nBlock);

/// The same blocks as write data frames. The offset is left 0: a receiver doesn't use it.
std::vector<std::string> WriteFrames(size_t nBlock);

std::string OpenFrame(const std::string& strName, int64_t lSize);
std::string CloseFrame();
std::string SuccessFrame();

} // namespace brennik::bench
