#include "platform/SerialLine.h"

#include "platform/LineSettings.h"
#include "platform/SerialTerminal.h"
#include "platform/Waits.h"
#include "platform/WriteProgress.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace brennik {

namespace {

constexpr size_t kMostAhead = 65536;
constexpr int64_t kLeavingNanoseconds = 20 * kNanosecondsOfMillisecond;
constexpr int64_t kLeavingStepNanoseconds = kNanosecondsOfMillisecond;
constexpr int64_t kSettlingPart = 10;                   // of the time of a write
constexpr int64_t kLongestMilliseconds = 1000000000000; // whose nanoseconds can still be counted
constexpr int64_t kHangUpNanoseconds = 10 * kNanosecondsOfMillisecond;

using Deadline = std::optional<int64_t>;

/// The end of a call for so many bytes that begins now; none when both parts of its limit are 0.
Deadline EndOf(int32_t lConstant, int32_t lMultiplier, int64_t lCount) {
    if (lConstant == 0 && lMultiplier == 0) {
        return std::nullopt;
    }
    const int64_t lMilliseconds = std::min(lConstant + lMultiplier * lCount, kLongestMilliseconds);
    return MonotonicNow() + lMilliseconds * kNanosecondsOfMillisecond;
}

int64_t Earlier(Deadline lDeadline, int64_t lMoment) {
    return lDeadline ? std::min(*lDeadline, lMoment) : lMoment;
}

/// A failure at that moment: whoever reads a dead line again and again must not do so at full load.
bool FailLate(int64_t lMoment) {
    const int nError = errno;
    SleepUntil(lMoment);
    errno = nError;
    return false;
}

void AwaitOutput(int nTerminal) {
    const int64_t lEnd = MonotonicNow() + kLeavingNanoseconds;
    while (BytesLeaving(nTerminal) > 0 && MonotonicNow() < lEnd) {
        SleepUntil(MonotonicNow() + kLeavingStepNanoseconds);
    }
}

} // namespace

SerialLine::SerialLine(Descriptor terminal)
    : terminal_(std::move(terminal)),
      bPseudoTerminal_(IsPseudoTerminal(terminal_.Get())),
      ahead_(kMostAhead) {
}

bool SerialLine::Close() {
    if (!terminal_.IsOpen()) {
        return true;
    }
    // The operating system's own close waits for half a minute on a line that is stuck.
    AwaitOutput(terminal_.Get());
    DiscardOutput(terminal_.Get());
    DiscardInput(terminal_.Get());
    ReleaseSerialTerminal(terminal_.Get());
    return terminal_.Close();
}

int32_t SerialLine::TakeAhead(char* buffer, int32_t lCount) {
    const size_t nTaken = std::min(static_cast<size_t>(lCount), nAheadEnd_ - nAheadBegin_);
    std::memcpy(buffer, ahead_.data() + nAheadBegin_, nTaken);
    nAheadBegin_ += nTaken;
    return static_cast<int32_t>(nTaken);
}

/// Reads all that is there, which may be nothing, once nothing is left of what was read before.
bool SerialLine::ReadAhead() {
    const ssize_t nRead =
        Resumed([&] { return ::read(terminal_.Get(), ahead_.data(), ahead_.size()); });
    nAheadBegin_ = 0;
    nAheadEnd_ = static_cast<size_t>(std::max<ssize_t>(nRead, 0));
    if (nRead == 0) {
        errno = EIO; // the line hung up
    }
    return nRead > 0 || (nRead < 0 && errno == EAGAIN);
}

bool SerialLine::Read(char* buffer, int32_t lCount, int32_t& lRead) {
    lRead = 0;
    if (lCount < 0) {
        errno = EINVAL;
        return false;
    }
    lRead = TakeAhead(buffer, lCount);
    if (lRead == lCount) {
        return true;
    }
    const Deadline lEnd =
        EndOf(timeouts_.ReadTotalTimeoutConstant, timeouts_.ReadTotalTimeoutMultiplier, lCount);
    const int64_t lInterval = timeouts_.ReadIntervalTimeout * kNanosecondsOfMillisecond;
    for (;;) {
        if (!ReadAhead()) {
            // The next read finds the line as it is.
            return lRead > 0 || FailLate(lEnd.value_or(MonotonicNow() + kHangUpNanoseconds));
        }
        lRead += TakeAhead(buffer + lRead, lCount - lRead);
        if (lRead == lCount) {
            return true;
        }
        const bool bGapCounts = lRead > 0 && lInterval > 0;
        pollfd watched{terminal_.Get(), POLLIN, 0};
        const int nReady =
            PollUntil(watched, bGapCounts ? Earlier(lEnd, MonotonicNow() + lInterval) : lEnd);
        if (nReady <= 0) {
            return nReady == 0;
        }
    }
}

/// Writes what the driver takes at once.
bool SerialLine::Hand(std::string_view& strRest) {
    if (strRest.empty()) {
        return true;
    }
    const ssize_t nTaken =
        Resumed([&] { return ::write(terminal_.Get(), strRest.data(), strRest.size()); });
    strRest.remove_prefix(static_cast<size_t>(std::max<ssize_t>(nTaken, 0)));
    lHandedSinceEmpty_ += std::max<ssize_t>(nTaken, 0);
    return nTaken >= 0 || errno == EAGAIN;
}

/// Bytes that are still to leave. Some drivers count whole buffers for a few bytes, so that they
/// can't hold more than they were handed is what tells an answer of one byte as out at once.
int32_t SerialLine::Held() {
    const int nHeld = BytesLeaving(terminal_.Get());
    if (nHeld == 0) {
        lHandedSinceEmpty_ = 0;
    }
    return static_cast<int32_t>(std::min<int64_t>(nHeld, lHandedSinceEmpty_));
}

bool SerialLine::Write(std::string_view strData, int32_t& lWritten) {
    lWritten = 0;
    static_cast<void>(Held()); // for what has left since the last write
    const int32_t lCount = static_cast<int32_t>(strData.size());
    const Deadline lEnd =
        EndOf(timeouts_.WriteTotalTimeoutConstant, timeouts_.WriteTotalTimeoutMultiplier, lCount);
    const int64_t lBegin = MonotonicNow();
    const int64_t lSettled = lBegin + (lEnd.value_or(lBegin) - lBegin) / kSettlingPart;
    WriteProgress progress(dcb_, lCount);
    for (std::string_view strRest = strData;;) {
        if (!Hand(strRest)) {
            return false;
        }
        const int32_t lHeld = Held();
        if (lHeld < 0) {
            return false;
        }
        progress.Note(lCount - static_cast<int32_t>(strRest.size()), lHeld,
                      MonotonicNow() < lSettled);
        if (progress.IsOut()) {
            lWritten = lCount;
            return true;
        }
        if (lEnd && MonotonicNow() >= *lEnd) {
            break;
        }
        if (strRest.empty()) {
            SleepUntil(Earlier(lEnd, MonotonicNow() + progress.PauseNanoseconds()));
        } else {
            pollfd watched{terminal_.Get(), POLLOUT, 0};
            if (PollUntil(watched, lEnd) < 0) {
                return false;
            }
        }
    }
    lWritten = progress.Written();
    if (progress.IsStuck()) {
        DiscardOutput(terminal_.Get());
    }
    return true;
}

void SerialLine::Purge(int32_t lFlags) {
    if ((lFlags & purgeflag::kRxClear) != 0) {
        nAheadBegin_ = nAheadEnd_;
        DiscardInput(terminal_.Get());
    }
    if ((lFlags & purgeflag::kTxClear) != 0) {
        DiscardOutput(terminal_.Get());
    }
}

bool SerialLine::SetState(const DCB& dcb) {
    const auto settings = LineSettingsOf(dcb);
    if (!settings) {
        errno = EINVAL;
        return false;
    }
    AwaitOutput(terminal_.Get()); // what is still leaving was meant for the former rate
    if (!SetSerialTerminal(terminal_.Get(), *settings, bPseudoTerminal_)) {
        return false;
    }
    dcb_ = dcb;
    return true;
}

bool SerialLine::SetTimeouts(const CommTimeouts& timeouts) {
    if (timeouts.ReadIntervalTimeout < 0 || timeouts.ReadTotalTimeoutMultiplier < 0 ||
        timeouts.ReadTotalTimeoutConstant < 0 || timeouts.WriteTotalTimeoutMultiplier < 0 ||
        timeouts.WriteTotalTimeoutConstant < 0) {
        errno = EINVAL;
        return false;
    }
    timeouts_ = timeouts;
    return true;
}

} // namespace brennik
