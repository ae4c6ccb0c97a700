#include "platform/WriteProgress.h"

#include "platform/LineSettings.h"

#include <algorithm>

namespace brennik {

namespace {

constexpr int64_t kMicrosecondsOfSecond = 1000000;
constexpr int64_t kAsGoodAsOutMicroseconds = 10000;
constexpr int64_t kShortestPauseMicroseconds = 1000;
constexpr int64_t kLongestPauseMicroseconds = 5000;
constexpr int64_t kNanosecondsOfMicrosecond = 1000;

} // namespace

WriteProgress::WriteProgress(const DCB& dcb, int32_t lCount)
    : lCount_(lCount), lBaudRate_(dcb.BaudRate), lHalfBits_(HalfBitsOfByte(dcb)) {
}

void WriteProgress::Note(int32_t lTaken, int32_t lHeld, bool bSettling) {
    lTaken_ = lTaken;
    lHeld_ = lHeld;
    lGone_ = int64_t{lTaken} - lHeld;
    if (!lGoneAtFirst_ || bSettling) {
        lGoneAtFirst_ = lGone_;
    }
}

bool WriteProgress::IsOut() const {
    return lTaken_ == lCount_ && MicrosecondsHeld() <= kAsGoodAsOutMicroseconds;
}

int64_t WriteProgress::PauseNanoseconds() const {
    return std::clamp(MicrosecondsHeld() - kAsGoodAsOutMicroseconds, kShortestPauseMicroseconds,
                      kLongestPauseMicroseconds) *
           kNanosecondsOfMicrosecond;
}

int32_t WriteProgress::Written() const {
    // Earlier bytes may be among those held: never less than none.
    return static_cast<int32_t>(IsStuck() ? std::max<int64_t>(lGone_, 0) : lTaken_);
}

int64_t WriteProgress::MicrosecondsHeld() const {
    const int64_t lBitsOfSecond = 2 * lBaudRate_;
    return (lHeld_ * lHalfBits_ * kMicrosecondsOfSecond + lBitsOfSecond - 1) / lBitsOfSecond;
}

} // namespace brennik
