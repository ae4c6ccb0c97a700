#include "sim/host/SerialServer.h"

#include "sim/host/LineBytes.h"
#include "sim/host/Waiting.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>

namespace brennik::sim {

namespace {

// How often a line that nobody has open is looked at when the host doesn't tell.
constexpr Microseconds kLook = 10'000;

// A line that hangs up loses what the other end has not read. After an orderly close it has this
// long to read the rest.
constexpr Microseconds kLinger = 100'000;

// How long an orderly close waits for the other end to take what is still unsent.
constexpr Microseconds kUnsentLimit = 30'000'000;

// The most that is still read of what an other end wrote that has gone; more than a line holds.
constexpr size_t kMostLeftBehind = size_t{64} * 1024;

// The slack of timers in nanoseconds: the usual 50,000 would make each frame of a fast line late.
constexpr unsigned long kTimerSlack = 1000;

} // namespace

// One session: the wire of its far end, and what is under way in both directions.
class SerialServer::Session : public Wire {
  public:
    Session(PseudoTerminal& line, std::optional<int64_t> lRate, std::unique_ptr<FarEnd> farEnd)
        : line_(line),
          farEnd_(std::move(farEnd)),
          bytes_(line, {lRate, std::nullopt},
                 [this](Microseconds now, std::string_view strBytes) { Deliver(now, strBytes); }) {
        const Microseconds now = Now();
        bytes_.Begin(now);
        farEnd_->Connected(*this, now);
    }

    void Send(std::string_view strBytes) override {
        if (state_ == State::Open && !bLeft_) {
            bytes_.Send(strBytes);
        }
    }

    void Close() override {
        if (state_ == State::Open) {
            state_ = State::Closing;
            closeAt_ = bytes_.AllThrough(Now()) + kUnsentLimit;
        }
    }

    // The line that the other end has left may be another's by now.
    void Reset() override { Finish(bLeft_ ? std::nullopt : std::optional<Microseconds>(0)); }

    void HangUp(Microseconds back) override { Finish(back); }

    FarEnd& End() { return *farEnd_; }
    bool bOver() const { return state_ == State::Over; }

    /// Once it is over: how long the line is to be down; nothing when it stays up, since the other
    /// end has left it.
    std::optional<Microseconds> Back() const { return back_; }

    pollfd Polled() const { return {bLeft_ ? -1 : line_.Master(), bytes_.Events(), 0}; }

    std::optional<Microseconds> Deadline() const {
        return Sooner(state_ == State::Open ? farEnd_->NextDeadline() : closeAt_,
                      bytes_.NextLook());
    }

    void Ready(short events) {
        if ((events & POLLOUT) != 0) {
            bytes_.WriteOn();
        }
        if ((events & (POLLHUP | POLLERR)) != 0) {
            Leave();
        } else if ((events & POLLIN) != 0) {
            Read();
        }
    }

    /// The other end has gone. What it wrote before is still to come, and what it should have read
    /// is of no use to anybody.
    void Leave() {
        if (std::exchange(bLeft_, true)) {
            return;
        }
        bytes_.SetHeld(false);
        size_t nRead = 0;
        for (size_t nMore = 1; nMore > 0 && nRead < kMostLeftBehind; nRead += nMore) {
            nMore = Read();
        }
    }

    /// Does what is due by now, and what can be done without a wait.
    void Proceed() {
        const Microseconds now = Now();
        if (!bOver()) {
            bytes_.Pace(now);
        }
        if (state_ == State::Open) {
            const auto due = farEnd_->NextDeadline();
            if (due && *due <= now) {
                bytes_.Begin(now);
                farEnd_->Elapsed(*this, now);
            }
        }
        if (bLeft_ && bytes_.bAllHere()) {
            FinishLeft(now);
        } else if (state_ == State::Closing) {
            FinishClosing(now);
        }
    }

  private:
    enum class State { Open, Closing, Over };

    void Deliver(Microseconds now, std::string_view strBytes) {
        if (state_ == State::Open) {
            farEnd_->Received(*this, now, strBytes);
        }
    }

    size_t Read() {
        const std::string_view strBytes = bytes_.Take();
        bytes_.Arrived(Now(), strBytes);
        return strBytes.size();
    }

    void FinishLeft(Microseconds now) {
        if (state_ == State::Open) {
            farEnd_->Disconnected(now);
        }
        Finish(std::nullopt);
    }

    void FinishClosing(Microseconds now) {
        if (bytes_.bAllOut() && !std::exchange(bLingers_, true)) {
            closeAt_ = now + kLinger;
        }
        if (*closeAt_ <= now) {
            Reset();
        }
    }

    void Finish(std::optional<Microseconds> back) {
        if (!bOver()) {
            state_ = State::Over;
            back_ = back;
        }
    }

    PseudoTerminal& line_;
    std::unique_ptr<FarEnd> farEnd_;
    State state_ = State::Open;
    bool bLeft_ = false;
    bool bLingers_ = false;
    std::optional<Microseconds> closeAt_;
    std::optional<Microseconds> back_;
    LineBytes bytes_;
};

SerialServer::SerialServer(std::string strPath, std::optional<int64_t> lRate, Callbacks callbacks)
    : lRate_(lRate), callbacks_(std::move(callbacks)), link_(std::move(strPath)) {
}

SerialServer::~SerialServer() = default;

bool SerialServer::Open(std::string& strError) {
    auto line = std::make_unique<PseudoTerminal>();
    if (!line->Open(strError) || !link_.LeadTo(line->strDevice(), strError)) {
        return false;
    }
    // An old line hangs up only now, so that whoever notices finds the new one.
    line_ = std::move(line);
    return true;
}

bool SerialServer::Run(const StopSignals& signals, bool bOnce, std::string& strError) {
    if (lRate_) {
        ::prctl(PR_SET_TIMERSLACK, kTimerSlack);
    }
    callbacks_.onDevice(line_->strDevice());
    bool bGoOn = true;
    while (bGoOn && !signals.bAsked()) {
        if (!line_) {
            signals.Wait(nullptr, 0, back_);
            bGoOn = Now() < back_ || PrepareNext(0, strError);
        } else if (!session_) {
            if (WaitForOpening(signals)) {
                line_->BeginHold();
                session_ = std::make_unique<Session>(*line_, lRate_, callbacks_.makeFarEnd());
            }
        } else if (!session_->bOver()) {
            Serve(signals);
        } else {
            // Whoever hears of the end finds the line ready.
            bGoOn = bOnce || PrepareNext(session_->Back(), strError);
            callbacks_.farEndDone(session_->End());
            session_.reset();
            if (bOnce) {
                return true;
            }
        }
    }
    if (session_) {
        session_->End().Disconnected(Now());
        callbacks_.farEndDone(session_->End());
        session_.reset();
    }
    return bGoOn && !signals.bAsked();
}

bool SerialServer::WaitForOpening(const StopSignals& signals) {
    if (line_->bOpened()) {
        return true;
    }
    pollfd polled{line_->Watch(), POLLIN, 0};
    const bool bTold = polled.fd >= 0;
    signals.Wait(&polled, 1, bTold ? std::optional<Microseconds>() : Now() + kLook);
    return false;
}

void SerialServer::Serve(const StopSignals& signals) {
    std::array<pollfd, 2> polled{session_->Polled(), pollfd{line_->Watch(), POLLIN, 0}};
    if (signals.Wait(polled.data(), polled.size(), session_->Deadline()) > 0) {
        if (polled[1].revents != 0 && line_->bChangedHands()) {
            session_->Leave();
        }
        session_->Ready(polled[0].revents);
    }
    session_->Proceed();
}

// Makes the line ready for the next session: as it is, with another terminal, or later.
bool SerialServer::PrepareNext(std::optional<Microseconds> back, std::string& strError) {
    if (back.value_or(0) > 0) {
        link_.Remove();
        line_.reset();
        back_ = Now() + *back;
        return true;
    }
    if (!back && line_->Renew()) {
        return true;
    }
    if (!Open(strError)) {
        return false;
    }
    callbacks_.onDevice(line_->strDevice());
    return true;
}

} // namespace brennik::sim
