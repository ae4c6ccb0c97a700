// One serial line of the simulated host: bytes under way in both directions at the pace of the
// sender's settings, what waits at the port, and what is plugged in at the other side. An end that
// hears another rate, size or parity than its own hears only noise. Made and owned by SimComPorts.
// The far end acts through the Wire that this is; the program acts through the port calls.
#pragma once

#include "platform/ComPorts.h"
#include "sim/FarEnd.h"
#include "sim/LineNoise.h"
#include "tests/world/Mangler.h"
#include "tests/world/SimTimeline.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace brennik::world {

using sim::NoiseOf;

class SimLine : public sim::Wire {
  public:
    explicit SimLine(SimTimeline& timeline);
    ~SimLine() override;
    SimLine(const SimLine&) = delete;
    SimLine& operator=(const SimLine&) = delete;

    // The far side: a byte leaves at the pace of the far settings, one behind the other. With the
    // port closed bytes run into nothing. A far end of one opening that closes, resets or hangs up
    // is let go and told nothing more; the port is dead, and a new opening is possible at once, or
    // after a HangUp when its time has passed.
    void Send(std::string_view strBytes) override;
    void Close() override;
    void Reset() override;
    void HangUp(Microseconds back) override;

    // For tests: what is plugged in at the other side. Each replaces what was there.

    /// Each opening of the port meets a new far end and an empty line. It is told of the closing,
    /// behind the last byte that was written, and of a hang-up.
    void ServeEachOpening(std::function<std::unique_ptr<sim::FarEnd>()> makeFarEnd);
    /// One far end that lives whether or not the port is open; connected now. It hears of no
    /// closing and of no hang-up.
    void Plug(std::unique_ptr<sim::FarEnd> farEnd);

    /// The settings of the other side: at first 9600 bits per second, 8 data bits, no parity.
    void SetFarRate(int32_t lBaudRate) { far_.BaudRate = lBaudRate; }
    void SetFarSettings(const DCB& dcb) { far_ = dcb; }

    /// The line goes down: an open port fails from now on (once it has read what came before), and
    /// opening it fails, until it comes back. An open port stays dead until it is closed.
    void HangUp();
    void ComeBack() { bDown_ = false; }

    /// Nothing that the program writes moves while it is held.
    void HoldOutput(bool bHold);
    /// What the wire does to bytes; null is a wire that does nothing.
    void SetMangler(std::unique_ptr<Mangler> mangler) { mangler_ = std::move(mangler); }

    bool IsOpen() const { return bOpen_; }
    int32_t nOpenings() const { return nOpenings_; }
    /// The control block and time limits of the port, as last set.
    const DCB& State() const { return near_; }
    const CommTimeouts& Timeouts() const { return timeouts_; }
    /// Bytes that each end has put on the line, before any mangling.
    int64_t nSentByProgram() const { return nSentByProgram_; }
    int64_t nSentByFarEnd() const { return nSentByFarEnd_; }
    /// Puts bytes straight in front of the program.
    void Feed(std::string_view strBytes) { strWaiting_.append(strBytes); }

  private:
    friend class SimComPorts;

    struct Byte {
        Microseconds due;
        char cByte;
        bool bClear; ///< both ends were set alike when it left
    };
    /// One direction. Ends are counted in nanoseconds, so that no rounding adds up.
    struct Flight {
        std::deque<Byte> bytes;
        int64_t freeAtNs = 0;
        Microseconds armedFor = kNever;

        void Drop() {
            bytes.clear();
            freeAtNs = 0;
        }
    };
    class LineOutlet;

    // The program's side.
    void Open();
    void CloseByProgram();
    bool Dead() const { return bDead_; }
    size_t nWaiting() const { return strWaiting_.size(); }
    std::string Take(size_t nMost);
    /// Puts bytes on the line; what is still to leave is counted by nUnsent.
    void Write(std::string_view strBytes);
    size_t nUnsent() const { return toFar_.bytes.size() + strHeld_.size(); }
    int64_t nLeft() const { return nLeft_; }
    void DropUnsent();
    Microseconds ByteTime() const;

    void Launch(Flight& flight, const DCB& settings, std::string_view strBytes, bool bToFar,
                Microseconds delay);
    void Pass(Direction direction, std::string_view strBytes);
    void Arm(bool bToFar);
    void Arrived(bool bToFar);
    void TellFarEnd(std::string_view strBytes);
    /// Lets the far end of an opening go; a plugged one stays.
    void EndFarEnd(bool bTell);
    void Unplug();
    /// What is under way is lost, and so is an open port.
    void Break(bool bTellFarEnd);
    void ArmDeadline(bool bElapsed);
    void DeadlineCame(uint64_t nGeneration);
    bool bSetAlike() const;

    SimTimeline& timeline_;
    std::unique_ptr<Mangler> mangler_;
    std::function<std::unique_ptr<sim::FarEnd>()> makeFarEnd_;
    std::unique_ptr<sim::FarEnd> farEnd_;
    DCB near_;
    DCB far_;
    CommTimeouts timeouts_ = kTimeoutsAtOpening;
    Flight toFar_;
    Flight toNear_;
    std::string strWaiting_;
    std::string strHeld_;
    bool bOpen_ = false;
    bool bDown_ = false;
    bool bDead_ = false; ///< the open port has met a hang-up
    bool bHold_ = false;
    bool bHangUpBehindSent_ = false; ///< the far end has closed and its last bytes are under way
    bool bEndBehindSent_ = false;    ///< the program has, and so have its own
    int32_t nOpenings_ = 0;
    int64_t nLeft_ = 0; ///< bytes of the program that have left
    int64_t nSentByProgram_ = 0;
    int64_t nSentByFarEnd_ = 0;

    bool bArmed_ = false;
    Microseconds armedFor_ = 0;
    uint64_t nGeneration_ = 0;
};

} // namespace brennik::world
