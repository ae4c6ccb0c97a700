#include "sim/host/LineBytes.h"

#include "sim/LineNoise.h"
#include "sim/host/PseudoTerminal.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace brennik::sim {

namespace {

// On a paced line no more is read than this ahead of what is through; the rest waits at the writer.
constexpr size_t kReadAhead = 4096;

} // namespace

LineBytes::LineBytes(PseudoTerminal& line, const LineRates& rates,
                     std::function<void(Microseconds now, std::string_view)> receive)
    : line_(line), receive_(std::move(receive)), lFarEnd_(rates.lFarEnd) {
    if (rates.lPace) {
        toOther_.emplace(*rates.lPace);
        fromOther_.emplace(*rates.lPace);
    }
}

void LineBytes::Send(std::string_view strBytes) {
    if (toOther_) {
        toOther_->Put(strBytes, moment_);
    } else {
        Write(strBytes);
    }
}

void LineBytes::SetHeld(bool bHeld) {
    bHeld_ = bHeld;
    if (!bHeld) {
        strUnsent_.clear();
    }
}

short LineBytes::Events() const {
    const bool bMayRead = !fromOther_ || fromOther_->nUnderWay() < kReadAhead;
    const int events = (bMayRead ? POLLIN : 0) | (strUnsent_.empty() ? 0 : POLLOUT);
    return static_cast<short>(events);
}

std::optional<Microseconds> LineBytes::NextLook() const {
    if (!toOther_) {
        return std::nullopt;
    }
    const auto out = toOther_->NextLook();
    const auto in = fromOther_->NextLook();
    return out && in ? std::min(out, in) : out ? out : in;
}

std::string_view LineBytes::Take() {
    ssize_t nRead = 0;
    do {
        nRead = ::read(line_.Master(), buffer_.data(), buffer_.size());
    } while (nRead < 0 && errno == EINTR);
    const size_t nTaken = nRead > 0 ? static_cast<size_t>(nRead) : 0;
    if (nTaken > 0 && bNoisy()) {
        std::transform(buffer_.begin(), buffer_.begin() + nRead, buffer_.begin(),
                       [](char c) { return NoiseOf(c); });
    }
    return {buffer_.data(), nTaken};
}

void LineBytes::Arrived(Microseconds now, std::string_view strBytes) {
    if (strBytes.empty()) {
        return;
    }
    if (fromOther_) {
        fromOther_->Put(strBytes, now);
    } else {
        moment_ = now;
        receive_(now, strBytes);
    }
}

void LineBytes::WriteOn() {
    strUnsent_.erase(0, WriteNow(strUnsent_));
}

void LineBytes::Pace(Microseconds now) {
    if (!toOther_) {
        return;
    }
    if (const std::string_view strDue = toOther_->TakeThrough(now); !strDue.empty()) {
        Write(strDue);
    }
    if (const std::string_view strDue = fromOther_->TakeThrough(now); !strDue.empty()) {
        // An answer goes out from the moment at which the last byte was through, not from the
        // somewhat later one of this look, so that looks don't slow the line down.
        moment_ = fromOther_->LastThrough();
        receive_(now, strDue);
    }
}

Microseconds LineBytes::AllThrough(Microseconds now) const {
    return toOther_ ? std::max(now, toOther_->AllThrough()) : now;
}

// What the line is set to at the moment decides, as on any line.
bool LineBytes::bNoisy() const {
    return lFarEnd_ && !SuitsSpeed(line_.lSpeed(), *lFarEnd_);
}

void LineBytes::Write(std::string_view strBytes) {
    if (!bHeld_) {
        return;
    }
    const std::string strNoise = bNoisy() ? NoiseOf(strBytes) : std::string();
    strBytes = strNoise.empty() ? strBytes : strNoise;
    if (strUnsent_.empty()) {
        strBytes.remove_prefix(WriteNow(strBytes));
    }
    strUnsent_.append(strBytes);
}

size_t LineBytes::WriteNow(std::string_view strBytes) {
    ssize_t nWritten = 0;
    do {
        nWritten = ::write(line_.Master(), strBytes.data(), strBytes.size());
    } while (nWritten < 0 && errno == EINTR);
    if (nWritten >= 0) {
        return static_cast<size_t>(nWritten);
    }
    // An other end that has gone shows at the next wait; what it can't get any more is dropped.
    return errno == EAGAIN || errno == EWOULDBLOCK ? 0 : strBytes.size();
}

} // namespace brennik::sim
