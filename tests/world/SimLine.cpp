#include "tests/world/SimLine.h"

#include "platform/LineSettings.h"

#include <algorithm>
#include <utility>

namespace brennik::world {

namespace {

constexpr int64_t kNanosecondsOfHalfBit = 500'000'000; // over the rate
constexpr int64_t kNanosecondsOfMicrosecond = 1000;

int64_t ByteNanoseconds(const DCB& dcb) {
    return HalfBitsOfByte(dcb) * kNanosecondsOfHalfBit / std::max(dcb.BaudRate, 1);
}

/// What a line of so many data bits carries of a byte.
char DataBitsOf(char cByte, const DCB& dcb) {
    return static_cast<char>(static_cast<unsigned char>(cByte) & ((1U << dcb.ByteSize) - 1U));
}

} // namespace

/// Where the mangler puts what it lets through.
class SimLine::LineOutlet : public Outlet {
  public:
    LineOutlet(SimLine& line, Direction direction) : line_(line), direction_(direction) {}

    void Put(std::string_view strBytes, Microseconds delay) override {
        const bool bToFar = direction_ == Direction::ToServer;
        line_.Launch(bToFar ? line_.toFar_ : line_.toNear_, bToFar ? line_.near_ : line_.far_,
                     strBytes, bToFar, delay);
    }

  private:
    SimLine& line_;
    Direction direction_;
};

SimLine::SimLine(SimTimeline& timeline) : timeline_(timeline) {
}

SimLine::~SimLine() = default;

// What is plugged in.

void SimLine::ServeEachOpening(std::function<std::unique_ptr<sim::FarEnd>()> makeFarEnd) {
    Unplug();
    makeFarEnd_ = std::move(makeFarEnd);
}

void SimLine::Plug(std::unique_ptr<sim::FarEnd> farEnd) {
    Unplug();
    makeFarEnd_ = nullptr;
    farEnd_ = std::move(farEnd);
    farEnd_->Connected(*this, timeline_.Now());
    ArmDeadline(false);
}

void SimLine::Unplug() {
    farEnd_ = nullptr;
    ArmDeadline(false);
}

void SimLine::EndFarEnd(bool bTell) {
    if (farEnd_ == nullptr || makeFarEnd_ == nullptr) {
        return;
    }
    const std::shared_ptr<sim::FarEnd> gone = std::move(farEnd_);
    ArmDeadline(false);
    if (bTell) {
        gone->Disconnected(timeline_.Now());
    }
    // It may be the caller, further up; it goes when time moves next.
    timeline_.At(0, [gone] {});
}

void SimLine::HangUp() {
    bDown_ = true;
    Break(true);
}

void SimLine::Break(bool bTellFarEnd) {
    bHangUpBehindSent_ = false;
    toFar_.Drop();
    toNear_.Drop();
    strHeld_.clear();
    bDead_ = bOpen_;
    EndFarEnd(bTellFarEnd);
}

void SimLine::HoldOutput(bool bHold) {
    bHold_ = bHold;
    if (!bHold && !strHeld_.empty()) {
        const std::string strHeld = std::exchange(strHeld_, {});
        Pass(Direction::ToServer, strHeld);
    }
}

// The far side.

void SimLine::Send(std::string_view strBytes) {
    if (!bDown_ && !bHangUpBehindSent_) {
        nSentByFarEnd_ += static_cast<int64_t>(strBytes.size());
        Pass(Direction::ToClient, strBytes);
    }
}

void SimLine::Close() {
    if (toNear_.bytes.empty()) {
        Break(false);
    } else {
        bHangUpBehindSent_ = true;
        EndFarEnd(false);
    }
}

void SimLine::Reset() {
    Break(false);
}

void SimLine::HangUp(Microseconds back) {
    bDown_ = true;
    Break(false);
    timeline_.At(back, [this] { ComeBack(); });
}

// The program's side.

void SimLine::Open() {
    bOpen_ = true;
    ++nOpenings_;
    bDead_ = false;
    near_ = DCB{};
    timeouts_ = kTimeoutsAtOpening;
    strWaiting_.clear();
    if (makeFarEnd_) {
        EndFarEnd(true); // when the last bytes for it are still under way
        bEndBehindSent_ = false;
        toFar_.Drop();
        toNear_.Drop();
        farEnd_ = makeFarEnd_();
        farEnd_->Connected(*this, timeline_.Now());
        ArmDeadline(false);
    }
}

void SimLine::CloseByProgram() {
    // What has been written still leaves; the far end hears of the closing behind it.
    bOpen_ = false;
    bDead_ = false;
    strWaiting_.clear();
    strHeld_.clear();
    if (bHangUpBehindSent_) {
        Break(false); // its last bytes would run into nothing
    } else if (toFar_.bytes.empty()) {
        EndFarEnd(true);
    } else {
        bEndBehindSent_ = true;
    }
}

std::string SimLine::Take(size_t nMost) {
    std::string strTaken = strWaiting_.substr(0, nMost);
    strWaiting_.erase(0, strTaken.size());
    return strTaken;
}

void SimLine::Write(std::string_view strBytes) {
    nSentByProgram_ += static_cast<int64_t>(strBytes.size());
    if (bHold_) {
        strHeld_ += strBytes;
    } else {
        Pass(Direction::ToServer, strBytes);
    }
}

void SimLine::DropUnsent() {
    toFar_.Drop();
    strHeld_.clear();
}

Microseconds SimLine::ByteTime() const {
    return ByteNanoseconds(near_) / kNanosecondsOfMicrosecond;
}

// The line.

bool SimLine::bSetAlike() const {
    return sim::SuitsSpeed(near_.BaudRate, far_.BaudRate) && near_.ByteSize == far_.ByteSize &&
           near_.Parity == far_.Parity;
}

void SimLine::Pass(Direction direction, std::string_view strBytes) {
    LineOutlet outlet(*this, direction);
    if (mangler_ == nullptr) {
        outlet.Put(strBytes, 0);
    } else {
        mangler_->Pass(direction, strBytes, outlet);
    }
}

void SimLine::Launch(Flight& flight, const DCB& settings, std::string_view strBytes, bool bToFar,
                     Microseconds delay) {
    const Microseconds earliest = timeline_.Now() + std::max<Microseconds>(delay, 0);
    flight.freeAtNs = std::max(flight.freeAtNs, earliest * kNanosecondsOfMicrosecond);
    for (const char cByte : strBytes) {
        flight.freeAtNs += ByteNanoseconds(settings);
        const Microseconds due =
            (flight.freeAtNs + kNanosecondsOfMicrosecond - 1) / kNanosecondsOfMicrosecond;
        flight.bytes.push_back({due, DataBitsOf(cByte, settings), bSetAlike()});
    }
    Arm(bToFar);
}

/// Only ever earlier: an event of bytes that were dropped since finds nothing due, or another byte
/// that is.
void SimLine::Arm(bool bToFar) {
    Flight& flight = bToFar ? toFar_ : toNear_;
    if (!flight.bytes.empty() && flight.bytes.front().due < flight.armedFor) {
        flight.armedFor = flight.bytes.front().due;
        timeline_.AtMoment(flight.armedFor, [this, bToFar] { Arrived(bToFar); });
    }
}

void SimLine::Arrived(bool bToFar) {
    Flight& flight = bToFar ? toFar_ : toNear_;
    if (flight.armedFor <= timeline_.Now()) {
        flight.armedFor = kNever;
    }
    std::string strArrived;
    while (!flight.bytes.empty() && flight.bytes.front().due <= timeline_.Now()) {
        const Byte byte = flight.bytes.front();
        flight.bytes.pop_front();
        strArrived += byte.bClear && bSetAlike() ? byte.cByte : NoiseOf(byte.cByte);
    }
    Arm(bToFar);
    if (bToFar) {
        nLeft_ += static_cast<int64_t>(strArrived.size());
        TellFarEnd(strArrived);
        if (bEndBehindSent_ && flight.bytes.empty()) {
            bEndBehindSent_ = false;
            EndFarEnd(true);
        }
        return;
    }
    if (bOpen_ && !bDead_) {
        strWaiting_ += strArrived;
    }
    if (bHangUpBehindSent_ && flight.bytes.empty()) {
        Break(false);
    }
}

void SimLine::TellFarEnd(std::string_view strBytes) {
    if (farEnd_ != nullptr && !strBytes.empty()) {
        farEnd_->Received(*this, timeline_.Now(), strBytes);
        ArmDeadline(false);
    }
}

// The far end's deadlines: a planned event is passed over when it is no longer the current one.

void SimLine::ArmDeadline(bool bElapsed) {
    const auto deadline = farEnd_ == nullptr ? std::nullopt : farEnd_->NextDeadline();
    if (!deadline) {
        bArmed_ = false;
        ++nGeneration_;
        return;
    }
    if (bArmed_ && !bElapsed && armedFor_ == *deadline) {
        return;
    }
    bArmed_ = true;
    armedFor_ = *deadline;
    const uint64_t nGeneration = ++nGeneration_;
    const Microseconds moment = std::max(*deadline, timeline_.Now() + (bElapsed ? 1 : 0));
    timeline_.AtMoment(moment, [this, nGeneration] { DeadlineCame(nGeneration); });
}

void SimLine::DeadlineCame(uint64_t nGeneration) {
    if (nGeneration != nGeneration_ || farEnd_ == nullptr) {
        return;
    }
    bArmed_ = false;
    farEnd_->Elapsed(*this, timeline_.Now());
    ArmDeadline(true);
}

} // namespace brennik::world
