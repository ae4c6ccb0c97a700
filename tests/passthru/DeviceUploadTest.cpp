// A device that is told what to do: upload its files, or take a full download.

#include "tests/passthru/DeviceWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kForced = "[3.9,2,U,Q,0,0,,,F,]";
constexpr const char* kUpload = "[3.9,4,U,Q,0,0,,,U,17]";
constexpr const char* kAgreed = "3.9,1,U,Q,0,0,,,A";

class DeviceUpload : public DeviceTest {
  protected:
    DeviceUpload() {
        config.lPassThruType(1);
        config.lUploadFileType(17);
        device.ExpectLrc(true);
        Connect();
    }

    /// The device takes the command and answers; what it is told then, it says with a CRC.
    void Agree(const std::string& strFirstPacket, const std::string& strReply = kAgreed) {
        device.Always("[]", kAck + LrcFrame(strReply));
        device.On("ACK", {CrcFrame(strFirstPacket)});
    }
};

TEST_F(DeviceUpload, TellsTheDeviceAndReadsItsFirstPacket) {
    Agree("VFI,D,XDL,F,A,T,E,1,2,DPT");
    RecordSteps();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,F,A,T,E,1,2,DPT");
    EXPECT_EQ(strPTID, "DPT");
    EXPECT_EQ(lState, PASSTHRU_ST_UPLOADFILES);
    // The reply is acknowledged, the packet is not: its answer is the server's business.
    EXPECT_THAT(device.Texts(), ElementsAre(kUpload, "ACK"));
    EXPECT_THAT(Steps(),
                ElementsAre("Write 23", "Read 1", "pump", "Read 1", "Write 1", "pump", "Read 1"));
    ExpectLink(2, false);
    ExpectError(0, "");
}

TEST_F(DeviceUpload, TellsAForcedFullDownloadInTheSameWay) {
    config.lPassThruType(2);
    Agree("VFI,D,XDL,F,A,T,E,1,2,DPT", "3.9,1,T,Q,0,0,,,A");
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,F,A,T,E,1,2,DPT");
    EXPECT_EQ(lState, PASSTHRU_ST_FULLDOWNLOAD);
    EXPECT_THAT(device.Texts(), ElementsAre(kForced, "ACK"));
}

TEST_F(DeviceUpload, NeitherPollsNorSetsARateNorKeepsOne) {
    Agree("VFI,D,XDL,F,A,T,E,1,2,DPT");
    config.lClientBaudRate(9600);
    config.bPedDownload(true); // plays no part here
    const Lines linesBefore = Log();
    const std::string strIniBefore = Ini();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Count("ENQ"), 0);
    EXPECT_EQ(Log(), linesBefore);
    EXPECT_EQ(connection.lBaudRate(), 19200);
    EXPECT_EQ(Line().State().BaudRate, 19200);
    EXPECT_EQ(Ini(), strIniBefore);
    EXPECT_THAT(host.profileStrings.writes, IsEmpty());
    EXPECT_EQ(VfiCopy(), "no file");
    EXPECT_FALSE(access.bTmsModeRequested());
    EXPECT_FALSE(access.bDeviceAnswered());
}

TEST_F(DeviceUpload, SetsTheStateWhateverTheCallGave) {
    for (const auto& [lType, state] :
         {std::pair{1, PASSTHRU_ST_UPLOADFILES}, std::pair{2, PASSTHRU_ST_FULLDOWNLOAD}}) {
        config.lPassThruType(lType);
        lState = PASSTHRU_ST_FULLTMSAPP;
        EXPECT_EQ(Handshake(), 1);
        EXPECT_EQ(lState, state);
    }
}

TEST_F(DeviceUpload, PutsTerminalAndApplicationOfTheProfileIntoTheFirstPacket) {
    config.strTerminalId("T9");
    config.strApplicationID("A9");
    config.strReleaseTitle("R9"); // titles are no business of this road
    config.strConfigTitle("C9");
    struct {
        const char* strFirst;
        const char* strEdited;
    } const cases[] = {
        {"VFI,D,XDL,F,A,T,E,1,2,DPT,,", "VFI,D,XDL,F,A9,T9,E,1,2,DPT,,"},
        {"VFI,D,XCDLF,F,A,T,E,1,2,DPT", "VFI,D,XCDLF,F,A9,T9,E,1,2,DPT"}, // the keyword stays
        {"VFI,D,XDL,P,A,T,E,1,2,DPT", "VFI,D,XDL,P,A,T9,E,1,2,DPT"},
        {"no, request,d,e,f, g ", "no,request,d,e,f,T9"},
    };
    config.bForceApplicationSwap(true); // nor has this a say in a partial request here
    for (const auto& c : cases) {
        Agree(c.strFirst);
        EXPECT_EQ(HandshakeForUpload(), 0);
        EXPECT_EQ(strPacket, c.strEdited);
    }
}

TEST_F(DeviceUpload, LeavesThePacketToTheBlankWhenTheProfileHasNoValues) {
    for (const char* strFirst : {" VFI , D,XDL,F,A,T,E,1,2, DPT ", "anything", ""}) {
        Agree(strFirst);
        EXPECT_EQ(HandshakeForUpload(), 0);
        EXPECT_EQ(strPacket, strFirst);
    }
    EXPECT_EQ(strPTID, "") << "the last packet has no id";
}

TEST_F(DeviceUpload, FailsOnADeviceThatRefuses) {
    for (const char* strReply :
         {"3.9,1,U,Q,0,0,,,R", "3.9,1,U,Q,0,0,,A", "3.9,1,E,Q,0,0,,,A", ""}) {
        device.Forget();
        device.Always("[]", kAck + LrcFrame(strReply));
        link.lChecksumType(2);
        link.bAckPackets(false);
        EXPECT_EQ(HandshakeForUpload(), 1) << strReply;
        ExpectError(1000032, kRefused);
        ExpectLink(0, true);
        EXPECT_EQ(strPacket, strReply) << "and no further frame was read";
        host.RunFor(kMillisecond); // the last byte is still under way
        EXPECT_THAT(device.Texts(), ElementsAre(kUpload, "ACK"));
        EXPECT_EQ(strPTID, "old id");
    }
}

TEST_F(DeviceUpload, RefusesAForcedFullDownloadWithTheSameWords) {
    config.lPassThruType(2);
    Agree("", "3.9,1,T,Q,0,0,,,N");
    EXPECT_EQ(Handshake(), 1);
    ExpectError(1000032, kRefused);
    EXPECT_EQ(lState, PASSTHRU_ST_FULLDOWNLOAD);
}

TEST_F(DeviceUpload, FailsOnASilentDevice) {
    const Microseconds begin = host.Now();
    EXPECT_EQ(HandshakeForUpload(), 1);
    ExpectError(1000011, kTimedOut);
    ExpectLink(0, true); // meant to stay changed
    EXPECT_GE(host.Now() - begin, 2 * kSecond) << "the wait for an ACK";
    EXPECT_LT(host.Now() - begin, 2 * kSecond + 20 * kMillisecond);
    EXPECT_EQ(strPacket, "old packet");
    EXPECT_EQ(strPTID, "old id");
    EXPECT_THAT(device.Texts(), ElementsAre(kUpload));
}

TEST_F(DeviceUpload, FailsOnALineThatTakesNothing) {
    host.FailNext(Op::ComWrite, {.lLastError = 5});
    EXPECT_EQ(HandshakeForUpload(), 1);
    ExpectError(5, "Failed writing data to the opened port");
    ExpectLink(0, true);
}

TEST_F(DeviceUpload, FailsOnADeviceThatTakesTheCommandAndSaysNoMore) {
    device.Always("[]", kAck);
    const Microseconds begin = host.Now();
    EXPECT_EQ(HandshakeForUpload(), 1);
    ExpectError(1000011, kTimedOut);
    ExpectLink(0, true);
    EXPECT_GE(host.Now() - begin, 6 * kSecond) << "two reads of three seconds";
    EXPECT_LT(host.Now() - begin, 6 * kSecond + 60 * kMillisecond);
    EXPECT_EQ(strPacket, "");
}

TEST_F(DeviceUpload, AsksForABrokenReplyOnceMore) {
    std::string strBroken = LrcFrame(kAgreed);
    strBroken.back() ^= 1;
    device.Always("[]", kAck + strBroken);
    device.On("NAK", {LrcFrame(kAgreed)});
    device.On("ACK", {CrcFrame("VFI")});
    EXPECT_EQ(HandshakeForUpload(), 0);
    EXPECT_THAT(device.Texts(), ElementsAre(kUpload, "NAK", "ACK"));
}

TEST_F(DeviceUpload, TakesNoReplyWithTheOtherBlockCheck) {
    config.lPassThruType(1);
    device.Always("[]", kAck + CrcFrame(kAgreed));
    device.Always("NAK", CrcFrame(kAgreed));
    EXPECT_EQ(HandshakeForUpload(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_EQ(device.Count("NAK"), 1);
    EXPECT_EQ(device.Count("ACK"), 0);
}

TEST_F(DeviceUpload, GivesTheLinkBackWhereTheDeviceAgreed) {
    device.Always("[]", kAck + LrcFrame(kAgreed));
    link.lChecksumType(1);
    link.bAckPackets(false);
    link.lPacketReadAttempts(0);
    EXPECT_EQ(HandshakeForUpload(), 1) << "agreed, then silent";
    ExpectError(1000011, kTimedOut);
    ExpectLink(1, false);
    EXPECT_EQ(strPacket, "");
    EXPECT_EQ(strPTID, "old id");
    EXPECT_EQ(link.lPacketReadAttempts(), 0);
    EXPECT_EQ(link.lPacketTimeout(), 3);
}

TEST_F(DeviceUpload, SetsTheLinkUpForTheCommandAlone) {
    std::vector<std::pair<int32_t, bool>> settings;
    device.onHeard = [&](const std::string&) {
        settings.emplace_back(link.lChecksumType(), link.bAckPackets());
    };
    Agree("VFI");
    EXPECT_EQ(HandshakeForUpload(), 0);
    // The ACK of the reply arrives when the next read has begun.
    EXPECT_THAT(settings, ElementsAre(std::pair(0, true), std::pair(2, false)));
}

TEST_F(DeviceUpload, TellsAnUnforeseenFailureUnderItsOwnName) {
    config.strPlatformName(std::string(2000, 'V')); // the message needs that much memory
    for (const bool bWhole : {false, true}) {
        int32_t lStatus = 0;
        {
            world::AllocationLimit limit(1000);
            lStatus = bWhole ? Handshake() : HandshakeForUpload();
        }
        EXPECT_EQ(lStatus, 1);
        ExpectError(1000000, "TBrennikProtocol.GetFirstPacketFromDeviceForUpload() Failed - Out of "
                             "memory");
    }
    EXPECT_EQ(lState, PASSTHRU_ST_UPLOADFILES);
}

} // namespace
} // namespace brennik::passthru
