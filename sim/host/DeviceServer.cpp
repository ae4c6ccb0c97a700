#include "sim/host/DeviceServer.h"

#include "sim/host/Waiting.h"

#include <array>
#include <cstddef>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <utility>

namespace brennik::sim {

namespace {

// How often a line that nobody has open is looked at when the host doesn't tell.
constexpr Microseconds kLook = 10'000;

// The most that is read at a time of what an other end wrote that may have gone; more than a line
// holds.
constexpr size_t kMostLeftBehind = size_t{64} * 1024;

// The slack of timers in nanoseconds: the usual 50,000 would make each frame of a fast line late.
constexpr unsigned long kTimerSlack = 1000;

} // namespace

/// A device can't hang its line up; it stays silent.
class DeviceServer::LineWire : public Wire {
  public:
    explicit LineWire(LineBytes& bytes) : bytes_(bytes) {}

    void Send(std::string_view strBytes) override { bytes_.Send(strBytes); }
    void Close() override {}
    void Reset() override {}

  private:
    LineBytes& bytes_;
};

DeviceServer::DeviceServer(std::string strPath, LineRates rates, FarEnd& farEnd,
                           std::function<void(const std::string& strDevice)> onDevice)
    : rates_(rates), farEnd_(farEnd), onDevice_(std::move(onDevice)), link_(std::move(strPath)) {
}

DeviceServer::~DeviceServer() = default;

bool DeviceServer::Open(std::string& strError) {
    auto line = std::make_unique<PseudoTerminal>();
    if (!line->Open(strError) || !link_.LeadTo(line->strDevice(), strError)) {
        return false;
    }
    bytes_.reset();
    line_ = std::move(line);
    bytes_.emplace(*line_, rates_, [this](Microseconds now, std::string_view strBytes) {
        LineWire wire(*bytes_);
        farEnd_.Received(wire, now, strBytes);
    });
    bytes_->SetHeld(false);
    return true;
}

bool DeviceServer::Run(const StopSignals& signals, const std::function<bool()>& bEnough,
                       std::string& strError) {
    if (rates_.lPace) {
        ::prctl(PR_SET_TIMERSLACK, kTimerSlack);
    }
    onDevice_(line_->strDevice());
    LineWire wire(*bytes_);
    farEnd_.Connected(wire, Now());
    while (!signals.bAsked()) {
        if (!Turn(signals, strError)) {
            return false;
        }
        if (!bHeld_ && bEnough()) {
            return true;
        }
    }
    return false;
}

bool DeviceServer::Turn(const StopSignals& signals, std::string& strError) {
    if (!bHeld_) {
        LookForHolder();
    }
    std::array<pollfd, 2> polled{pollfd{bHeld_ ? line_->Master() : -1, bytes_->Events(), 0},
                                 pollfd{line_->Watch(), POLLIN, 0}};
    auto until = Sooner(farEnd_.NextDeadline(), bytes_->NextLook());
    if (!bHeld_ && line_->Watch() < 0) {
        until = Sooner(until, Now() + kLook);
    }
    if (signals.Wait(polled.data(), polled.size(), until) > 0 && bHeld_) {
        const short events = polled[0].revents;
        // What is taken comes from whom the line then tells, or from those before: what is cleared
        // away for a new one can't be an answer to any of it, for that comes behind.
        const std::string strTaken = Take(events);
        const bool bGone = (events & (POLLHUP | POLLERR)) != 0;
        if ((bGone || line_->bChangedHands()) && !ForgetHolder(strError)) {
            return false;
        }
        bytes_->Arrived(Now(), strTaken);
    }
    const Microseconds now = Now();
    bytes_->Pace(now);
    if (const auto due = farEnd_.NextDeadline(); due && *due <= now) {
        LineWire wire(*bytes_);
        bytes_->Begin(now);
        farEnd_.Elapsed(wire, now);
    }
    return true;
}

std::string DeviceServer::Take(short events) {
    if ((events & POLLOUT) != 0) {
        bytes_->WriteOn();
    }
    std::string strTaken;
    if ((events & POLLIN) != 0) {
        strTaken = bytes_->Take();
    }
    // Once nobody is there any more nothing tells that there are bytes left.
    if ((events & (POLLHUP | POLLERR)) != 0) {
        for (size_t nMore = 1; nMore > 0 && strTaken.size() < kMostLeftBehind;) {
            const std::string_view strMore = bytes_->Take();
            strTaken += strMore;
            nMore = strMore.size();
        }
    }
    return strTaken;
}

void DeviceServer::LookForHolder() {
    if (line_->bOpened()) {
        line_->BeginHold();
        bHeld_ = true;
        bytes_->SetHeld(true);
    }
}

// Makes the line ready for the next one who opens it, who may be there already.
bool DeviceServer::ForgetHolder(std::string& strError) {
    bHeld_ = false;
    bytes_->SetHeld(false);
    if (!line_->Clear()) {
        if (!Open(strError)) {
            return false;
        }
        onDevice_(line_->strDevice());
    }
    LookForHolder();
    return true;
}

} // namespace brennik::sim
