// A link over a scripted channel in a simulated host, and a way to its private operations.
// Nothing of it is real but the link itself.
#pragma once

#include "link/TIsoProtocol.h"
#include "tests/link/FakeChannel.h"
#include "tests/link/LinkFixture.h"

#include <string>
#include <string_view>

namespace brennik {

class TIsoProtocolTestAccess {
  public:
    static IsoReadResult InternalReadPacket(TIsoProtocol& link, std::string& strData,
                                            std::string_view strInitial) {
        bool bWaited = false;
        return link.InternalReadPacket(strData, strInitial, bWaited);
    }
    static void SendAck(TIsoProtocol& link) { link.SendAck(); }
    static void SendNak(TIsoProtocol& link) { link.SendNak(); }
    static void SendEot(TIsoProtocol& link) { link.SendEot(); }
    static void SendEnq(TIsoProtocol& link) { link.SendEnq(); }
};

inline constexpr const char* kTimedOutText = "Timed out reading ISO packet";

inline const std::string kEnq = "\x05";
inline const std::string kAck = "\x06";
inline const std::string kNak = "\x15";

/// Worked out by hand: "S" ETX has the CRC 0x6A0F and the XOR 0x50.
inline const std::string kFrameS = "\x02S\x03\x6A\x0F";
inline const std::string kBadFrameS = "\x02S\x03\x6A\x0E";

class IsoFixture : public LinkFixture {
  protected:
    struct Settings {
        int32_t lChecksumType = 2;
        int32_t lPacketTimeout = 5;
        int32_t lAckTimeout = 10;
        int16_t iStartChar = 2;
        int32_t lReadAttempts = 3;
        int32_t lSendAttempts = 3;
        bool bServerSide = false;
        bool bAckPackets = true;
    };

    IsoFixture() { Use({}); }

    void Use(const Settings& settings) {
        // The character time limit, here 99, is read by nothing.
        ASSERT_EQ(link.InitialiseObject(
                      channel, log, settings.lChecksumType, 99, settings.lPacketTimeout,
                      settings.lAckTimeout, settings.iStartChar, settings.lReadAttempts,
                      settings.lSendAttempts, settings.bServerSide, settings.bAckPackets),
                  0);
    }

    /// Makes it exactly that second of the day, and keeps the log's calls from adding to it.
    void StartAt(int64_t lSeconds, world::Microseconds more = 0) {
        static_cast<void>(log.TurnOffLogging());
        host.clock.SetTimeOfDay(lSeconds * world::kSecond + more);
    }

    /// Puts a failure into the link that the next operation must leave alone.
    void MarkError() {
        StartLog(false, false);
        channel.lWriteStatus = 1;
        ASSERT_EQ(link.SendArbitraryData("x"), 1);
        channel.lWriteStatus = 0;
        channel.writes.clear();
        StartLog(true, true);
        ExpectError(4711, "the line is cut");
    }

    void ExpectError(int32_t lErrorCode, const std::string& strErrorMessage) const {
        EXPECT_EQ(link.lErrorCode(), lErrorCode);
        EXPECT_EQ(link.strErrorMessage(), strErrorMessage);
    }

    FakeChannel channel{host};
    TIsoProtocol link;
};

/// For reads: where the payload goes, and a way to read without further attempts.
class IsoReadFixture : public IsoFixture {
  protected:
    IsoReadResult ReadOnce(const std::string& strInitial = "") {
        return TIsoProtocolTestAccess::InternalReadPacket(link, strData, strInitial);
    }

    std::string strData = "old";
};

} // namespace brennik
