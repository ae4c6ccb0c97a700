#include "support/TFLClientLog.h"

#include "platform/RuntimeFailure.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kFile = "C:\\log\\client.log";

class TFLClientLogTest : public world::WorldTest {
  protected:
    TFLClientLogTest() {
        host.files.MakeFolder("C:\\log");
        host.clock.SetLocal({2026, 11, 14, 23, 46, 32});
    }

    void Initialise(bool bEnabled = true, bool bControl = true, bool bProcessing = true) {
        log.InitialiseLogging("C:\\log", "client.log", bEnabled, bControl, bProcessing);
    }

    /// What stands behind date and time.
    Lines Written() {
        Lines lines = host.files.Lines(kFile);
        for (std::string& strLine : lines) {
            EXPECT_TRUE(strLine.starts_with("14 Nov 2026: 23:46:32 : ")) << strLine;
            strLine.erase(0, 24);
        }
        return lines;
    }

    TFLClientLog log;
};

TEST_F(TFLClientLogTest, LabelsInformation) {
    Initialise();
    log.Logit("Connection Closed", false);
    EXPECT_EQ(host.files.Get(kFile),
              "14 Nov 2026: 23:46:32 : [PID-TID=2044-3172] INFO   : Connection Closed\r\n");
}

TEST_F(TFLClientLogTest, LabelsErrors) {
    Initialise();
    log.Logit("text", true);
    EXPECT_EQ(Written(), Lines{"[PID-TID=2044-3172] ERROR  : text"});
}

TEST_F(TFLClientLogTest, LogsCodeAndTextOfAnError) {
    Initialise();
    log.LogErrorCodeAndMsg(1000031, "Communications aborted by user");
    log.LogErrorCodeAndMsg(-1, "");
    EXPECT_EQ(Written(), (Lines{"[PID-TID=2044-3172] ERROR  : Error Code=1000031, Error "
                                "Message=Communications aborted by user",
                                "[PID-TID=2044-3172] ERROR  : Error Code=-1, Error Message="}));
}

TEST_F(TFLClientLogTest, TellsSideAndDirectionOfAPacket) {
    Initialise();
    log.LogPacket(false, true, "a", true);
    log.LogPacket(false, false, "b", true);
    log.LogPacket(false, true, "c", false);
    log.LogPacket(true, false, "d", false);
    EXPECT_EQ(Written(),
              (Lines{"[PID-TID=2044-3172] SERVER OUT : a", "[PID-TID=2044-3172] SERVER IN  : b",
                     "[PID-TID=2044-3172] CLIENT OUT : c", "[PID-TID=2044-3172] CLIENT IN  : d"}));
}

TEST_F(TFLClientLogTest, ShowsTheControlCharactersOfAPacketByName) {
    Initialise();
    log.LogPacket(false, true, std::string_view("\x02\0S\x03\x7F", 5), false);
    EXPECT_EQ(Written(), Lines{"[PID-TID=2044-3172] CLIENT OUT : <STX><NUL>S<ETX><ASCII 127>"});
}

TEST_F(TFLClientLogTest, TheCommsLinkReplacesBothSides) {
    Initialise();
    log.SetCommsLink(true);
    log.LogPacket(false, true, "a", true);
    log.LogPacket(false, false, "b", false);
    log.SetCommsLink(false);
    log.LogPacket(false, true, "c", false);
    EXPECT_EQ(Written(), (Lines{"[PID-TID=2044-3172] QM OUT : a", "[PID-TID=2044-3172] QM IN  : b",
                                "[PID-TID=2044-3172] CLIENT OUT : c"}));
}

TEST_F(TFLClientLogTest, InitialiseLoggingClearsTheCommsLink) {
    log.SetCommsLink(true);
    Initialise();
    log.LogPacket(false, true, "a", false);
    EXPECT_EQ(Written(), Lines{"[PID-TID=2044-3172] CLIENT OUT : a"});
}

TEST_F(TFLClientLogTest, ControlAndProcessingPacketsHaveTheirOwnFlags) {
    Initialise(true, false, true);
    log.LogPacket(true, false, "control", false);
    log.LogPacket(false, false, "frame", false);
    EXPECT_EQ(Written(), Lines{"[PID-TID=2044-3172] CLIENT IN  : frame"});
    Initialise(true, true, false);
    log.LogPacket(true, false, "control", false);
    log.LogPacket(false, false, "frame", false);
    EXPECT_EQ(Written(), (Lines{"[PID-TID=2044-3172] CLIENT IN  : frame",
                                "[PID-TID=2044-3172] CLIENT IN  : control"}));
}

TEST_F(TFLClientLogTest, WritesNothingUnlessEnabled) {
    Initialise(false);
    log.Logit("x", false);
    log.LogErrorCodeAndMsg(1, "x");
    log.LogPacket(false, true, "x", false);
    EXPECT_FALSE(host.files.Exists(kFile));
}

TEST_F(TFLClientLogTest, TurnOffLoggingSilencesEverythingAndKeepsThePacketFlags) {
    Initialise(true, false, true);
    EXPECT_EQ(log.TurnOffLogging(), 0);
    log.Logit("x", false);
    log.LogErrorCodeAndMsg(1, "x");
    log.LogPacket(false, true, "x", false);
    EXPECT_FALSE(host.files.Exists(kFile));
    EXPECT_EQ(log.TurnOnLogging(), 0);
    log.LogPacket(false, true, "a", false);
    log.LogPacket(true, true, "b", false);
    log.Logit("c", false);
    EXPECT_EQ(Written(),
              (Lines{"[PID-TID=2044-3172] CLIENT OUT : a", "[PID-TID=2044-3172] INFO   : c"}));
}

TEST_F(TFLClientLogTest, NeverMasksNumbers) {
    Initialise();
    log.Logit("4111111111111111", false);
    EXPECT_EQ(Written(), Lines{"[PID-TID=2044-3172] INFO   : 4111111111111111"});
}

TEST_F(TFLClientLogTest, NeverArchives) {
    Initialise();
    host.files.Put(kFile, std::string(1048577, 'x'));
    log.Logit("x", false);
    EXPECT_EQ(host.files.Tree("C:\\log"), Lines{"client.log"});
}

TEST_F(TFLClientLogTest, WithoutAWriterMessagesAreDropped) {
    log.Logit("x", false);
    log.LogErrorCodeAndMsg(1, "x");
    log.LogPacket(false, true, "x", false); // no packets are wanted yet
    EXPECT_EQ(host.nCalls(), 0);
}

TEST_F(TFLClientLogTest, WithoutAWriterItCannotBeTurnedOnOrOff) {
    EXPECT_THROW(log.TurnOnLogging(), RuntimeFailure);
    EXPECT_THROW(log.TurnOffLogging(), RuntimeFailure);
}

TEST_F(TFLClientLogTest, AFailedLineIsDropped) {
    Initialise();
    host.FailNext(world::Op::AppendLine, {}, 3);
    log.Logit("lost", false);
    log.LogErrorCodeAndMsg(1, "lost");
    log.LogPacket(false, true, "lost", false);
    log.Logit("kept", false);
    EXPECT_EQ(Written(), Lines{"[PID-TID=2044-3172] INFO   : kept"});
}

TEST_F(TFLClientLogTest, TheServerMarkIsKeptForItsOwner) {
    EXPECT_FALSE(log.bServer());
    log.bServer(true);
    EXPECT_TRUE(log.bServer());
    Initialise();
    log.LogPacket(false, true, "a", false);
    EXPECT_EQ(Written(), Lines{"[PID-TID=2044-3172] CLIENT OUT : a"});
    EXPECT_TRUE(log.bServer());
}

} // namespace
} // namespace brennik
