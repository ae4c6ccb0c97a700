// What becomes of the first packet of a device that was polled: its state, its edits, and what is
// kept of it.

#include "tests/passthru/DeviceWorld.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;

class FirstPacket : public DeviceTest {
  protected:
    FirstPacket() { Connect(); }

    /// A handshake in which the device answers the first poll with that.
    int32_t HandshakeWith(const std::string& strFirst) {
        device.On("ENQ", {CrcFrame(strFirst)});
        lState = PASSTHRU_ST_START;
        return Handshake();
    }

    /// Values in the profile for all that can be edited.
    void FillProfile() {
        config.strTerminalId("T9");
        config.strApplicationID("A9");
        config.strReleaseTitle("R9");
        config.strConfigTitle("C9");
    }

    world::ProfileWrite RateWrite(const std::string& strRate) const {
        return {"PROFILE_7", "ClientBaudRate", strRate, "C:\\config\\BrennikClient.ini", true};
    }
};

// ---- States.

TEST_F(FirstPacket, DecidesTheStateByItsKind) {
    struct {
        const char* strPacket;
        PassThruState lState;
    } const cases[] = {
        {"VFI,D,XCDLF,F,A,T,E,1,2,P", PASSTHRU_ST_LASTFULLTMSAPP},
        {"VFI,D,XCDL,F,A,T,E,1,2,P", PASSTHRU_ST_FULLTMSAPP},
        {"VFI,D,XDL,F,A,T,E,1,2,P", PASSTHRU_ST_FULLDOWNLOAD},
        {"VFI,D,XDL,P,A,T,E,1,2,P", PASSTHRU_ST_PARTIALDOWNLOAD},
        {"VFI,D,XCDLF,P,A,T,E,1,2,P", PASSTHRU_ST_PARTIALDOWNLOAD},
        {"VFI,D,XUL,F,A,T,E,1,2,P", PASSTHRU_ST_PARTIALDOWNLOAD},
        {"VFI", PASSTHRU_ST_PARTIALDOWNLOAD},
        {"D,VFI,XCDL,F", PASSTHRU_ST_FULLTMSAPP}, // the letters may stand anywhere
        {"TMS,D,Q,F,A,T,E,1,2,P,A", PASSTHRU_ST_TMSENQUIRY},
        {"vfi,D,XDL,F,A,T,E,1,2,P", PASSTHRU_ST_TMSENQUIRY},
        {"", PASSTHRU_ST_TMSENQUIRY},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(HandshakeWith(c.strPacket), 0) << c.strPacket;
        EXPECT_EQ(lState, c.lState) << c.strPacket;
        EXPECT_EQ(engine.lCurrentState(), BrennikState::Idle);
    }
}

TEST_F(FirstPacket, MakesAnyTypeOfPassThruButTwoADownload) {
    for (const int32_t lType : {0, 3, -1}) {
        config.lPassThruType(lType);
        EXPECT_EQ(HandshakeWith("VFI,D,XCDL,F"), 0);
        EXPECT_EQ(lState, PASSTHRU_ST_FULLTMSAPP);
    }
}

// ---- Edits.

TEST_F(FirstPacket, GetsTheProfilesValues) {
    FillProfile();
    struct {
        const char* strPacket;
        bool bForceSwap;
        const char* strEdited;
    } const cases[] = {
        {"VFI,D,XDL,F,A,T,E,1,2,P,,", false, "VFI,D,XDL,F,A9,T9,E,1,2,P,R9,C9"},
        {"VFI,D,XDL,F,A,T,E,1,2,P", false, "VFI,D,XDL,F,A9,T9,E,1,2,P"},
        {"VFI,D,XDL,F,A,T,E,1,2,P,R,", false, "VFI,D,XDL,F,A9,T9,E,1,2,P,R,C9"},
        {"VFI,D,XDL,P,A,T,E,1,2,P,,", false, "VFI,D,XDL,P,A,T9,E,1,2,P,R9,C9"},
        {"VFI,D,XDL,P,A,T,E,1,2,P,,", true, "VFI,D,XDL,P,A9,T9,E,1,2,P,R9,C9"},
        {"VFI,D,XCDL,F,A,T,E,1,2,P,,", false, "VFI,D,XCDL,F,A9,T9,E,1,2,P,R9,C9"},
        // The server never sees which application is the last.
        {"VFI,D,XCDLF,F,A,T,E,1,2,P,,", false, "VFI,D,XCDL,F,A9,T9,E,1,2,P,R9,C9"},
        {"VFI,D,XCDLF,P,A,T,E,1,2,P", false, "VFI,D,XCDL,P,A,T9,E,1,2,P"},
        // Any other kind goes on as it came.
        {" VFI , D,XUL,F,A,T,E,1,2,P,,", true, " VFI , D,XUL,F,A,T,E,1,2,P,,"},
        // Too short for an edit, or not to be split.
        {"VFI,D,XDL,P", true, "VFI,D,XDL,P"},
        {"VFI,D,XDL,F,A", true, "VFI,D,XDL,F,A9"},
        {"VFI", true, "VFI"},
        {R"(VFI,D,XCDLF,F,A,"T,E)", true, R"(VFI,D,XCDLF,F,A,"T,E)"},
    };
    for (const auto& c : cases) {
        config.bForceApplicationSwap(c.bForceSwap);
        EXPECT_EQ(HandshakeWith(c.strPacket), 0) << c.strPacket;
        EXPECT_EQ(strPacket, c.strEdited);
    }
}

TEST_F(FirstPacket, KeepsItsOwnValuesWhereTheProfileHasNone) {
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,F,A,T,E,1,2,P,,"), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,F,A,T,E,1,2,P,,");
    config.strTerminalId("T9");
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,F,A,T,E,1,2,P,,"), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,F,A,T9,E,1,2,P,,");
    config.strTerminalId("");
    config.strApplicationID("A9");
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,F,A,T,E,1,2,P,,"), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,F,A9,T,E,1,2,P,,");
    config.strApplicationID("");
    config.strConfigTitle("C9"); // one title is enough for the edit of both
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,F,A,T,E,1,2,P,,"), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,F,A,T,E,1,2,P,,C9");
    config.strConfigTitle("");
    config.strReleaseTitle("R9");
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,F,A,T,E,1,2,P,,"), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,F,A,T,E,1,2,P,R9,");
}

TEST_F(FirstPacket, IsRebuiltEvenWhenNothingIsToBeChanged) {
    EXPECT_EQ(HandshakeWith(R"( VFI , "D",XDL, P ,A," T",E)"), 0);
    EXPECT_EQ(strPacket, "VFI,D,XDL,P,A,T,E") << "by the edit of the keyword";
}

TEST_F(FirstPacket, GivesItsPTidUnlessItIsOfAnotherKind) {
    EXPECT_EQ(HandshakeWith("VFI,D,XCDL,F,A,T,E,1,2,P1"), 0);
    EXPECT_EQ(strPTID, "P1");
    EXPECT_EQ(HandshakeWith("VFI,D,XUL,F,A,T,E,1,2,P2"), 0);
    EXPECT_EQ(strPTID, "P1") << "the last cycle's";
    EXPECT_EQ(HandshakeWith("TMS,D,XDL,F,A,T,E,1,2,P3"), 0);
    EXPECT_EQ(strPTID, "P1");
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P,A,T,E,1,2,P4"), 0);
    EXPECT_EQ(strPTID, "P4");
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,F,A,T,E,1,2"), 0);
    EXPECT_EQ(strPTID, "") << "nine fields have none";
}

TEST_F(FirstPacket, WithoutTheThreeLettersIsAnEnquiryAndGetsApplicationAndTerminal) {
    FillProfile();
    EXPECT_EQ(HandshakeWith("3.9,1,TMS,d,e,f,g,h,T,j,A,l"), 0);
    EXPECT_EQ(strPacket, "3.9,1,TMS,d,e,f,g,h,T9,j,A9,l");
    EXPECT_EQ(HandshakeWith(" 3.9,1,TMS,d,e,f,g,h,T"), 0);
    EXPECT_EQ(strPacket, "3.9,1,TMS,d,e,f,g,h,T9");
    EXPECT_EQ(HandshakeWith(" 3.9,1,TMS"), 0);
    EXPECT_EQ(strPacket, " 3.9,1,TMS") << "too short for either";
}

TEST_F(FirstPacket, LosesBothInAnEnquiryToAProfileWithoutValues) {
    EXPECT_EQ(HandshakeWith("3.9,1,TMS,d,e,f,g,h,T,j,A,l"), 0);
    EXPECT_EQ(strPacket, "3.9,1,TMS,d,e,f,g,h,,j,,l");
}

TEST_F(FirstPacket, LetsTheTmsModeBeAskedForAgainBehindAnEnquiryAlone) {
    for (const char* strRequest : {"VFI,D,XDL,F", "VFI,D,XDL,P", "VFI,D,XCDLF,F", "VFI,D,XUL,F"}) {
        access.bTmsModeRequested(true);
        EXPECT_EQ(HandshakeWith(strRequest), 0);
        EXPECT_TRUE(access.bTmsModeRequested()) << strRequest;
    }
    EXPECT_EQ(HandshakeWith("TMS"), 0);
    EXPECT_FALSE(access.bTmsModeRequested());
}

// ---- The rate is kept for the next run.

TEST_F(FirstPacket, LeavesTheRateThatWorkedInTheProfileOnDisk) {
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P"), 0);
    EXPECT_EQ(Ini(), "[PROFILE_7]\r\nProfileName=Shop\r\nClientBaudRate=19200\r\n");
    EXPECT_EQ(config.lClientBaudRate(), 19200);
}

TEST_F(FirstPacket, LeavesTheRateInEveryCycleWhateverCame) {
    for (const char* strPacketOfCycle :
         {"VFI,D,XDL,P", "VFI,D,XCDLF,F", "VFI,D,XUL,F", "TMS", ""}) {
        host.profileStrings.writes.clear();
        EXPECT_EQ(HandshakeWith(strPacketOfCycle), 0);
        EXPECT_THAT(host.profileStrings.writes, ElementsAre(RateWrite("19200")));
    }
}

TEST_F(FirstPacket, ChangesTheRateOnDiskAndNotInTheProfileOfTheRun) {
    config.lClientBaudRate(115200);
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P"), 0);
    EXPECT_THAT(host.profileStrings.writes, ElementsAre(RateWrite("19200")));
    EXPECT_EQ(config.lClientBaudRate(), 115200);
    // So the next cycle begins its hunt from there again.
    ports.rates.clear();
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P"), 0);
    ASSERT_EQ(ports.rates.size(), 2u);
    EXPECT_EQ(ports.rates[0].lBaudRate, 115200);
    EXPECT_EQ(ports.rates[1].lBaudRate, 19200);
}

TEST_F(FirstPacket, GoesOnWhenTheRateCantBeKept) {
    host.FailNext(Op::WriteProfileString);
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P"), 0);
    EXPECT_EQ(lState, PASSTHRU_ST_PARTIALDOWNLOAD);
    EXPECT_EQ(Ini(), "[PROFILE_7]\r\nProfileName=Shop\r\n");
    ExpectError(0, "");
}

// ---- The copy of the request.

TEST_F(FirstPacket, IsCopiedAsItCameWhateverIsEdited) {
    FillProfile();
    for (const std::string strCopied :
         {"VFI,D,XDL,F,A,T,E,1,2,P,,", " VFI,D,XDL,P,A,T", "VFI,D,XCDL,F,A,T", "VFI,D,XCDLF,F,A,T",
          "VFI,D,XUL,F,A,T", "a,VFI"}) {
        EXPECT_EQ(HandshakeWith(strCopied), 0);
        EXPECT_EQ(VfiCopy(), strCopied + "\r\n");
    }
    EXPECT_EQ(HandshakeWith("TMS,D,XDL"), 0);
    EXPECT_EQ(VfiCopy(), "a,VFI\r\n") << "an enquiry leaves no copy";
}

TEST_F(FirstPacket, IsCopiedBehindTheKeepingOfTheRate) {
    device.On("ENQ", {CrcFrame("VFI,D,XDL,P")});
    RecordSteps();
    EXPECT_EQ(Handshake(), 0);
    const Lines steps = Steps();
    EXPECT_EQ(Lines(steps.end() - 3, steps.end()),
              (Lines{"OpenText /opt/brennik\\vfi.txt", "StreamWrite ", "StreamClose "}));
    host.FailNext(Op::StreamClose);
    host.profileStrings.writes.clear();
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P"), 1);
    EXPECT_THAT(host.profileStrings.writes, ElementsAre(RateWrite("19200")));
}

TEST_F(FirstPacket, GoesOnWithoutACopyThatCantBeWritten) {
    host.FailNext(Op::OpenText);
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P"), 0);
    host.FailNext(Op::StreamWrite);
    EXPECT_EQ(HandshakeWith("VFI,D,XDL,P"), 0);
    ExpectError(0, "");
}

// Meant: the copy's close is the one step of the handshake that can fail so.
TEST_F(FirstPacket, FailsWhenItsCopyCantBeClosed) {
    host.FailNext(Op::StreamClose);
    access.bTmsModeRequested(true);
    FillProfile();
    EXPECT_EQ(HandshakeWith("VFI,D,XCDLF,F,A,T,E,1,2,P"), 1);
    ExpectError(1000000, "TBrennikProtocol.GetFirstPacketFromDevice() Failed - Device I/O error");
    EXPECT_EQ(lState, PASSTHRU_ST_START);
    EXPECT_EQ(strPacket, "VFI,D,XCDLF,F,A,T,E,1,2,P") << "nothing was edited";
    EXPECT_EQ(strPTID, "old id");
    EXPECT_TRUE(access.bTmsModeRequested());
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

// ---- What no device should send.

TEST_F(FirstPacket, OfSixtyThousandCommasIsAPartialRequestThatGoesOnAsItCame) {
    FillProfile();
    Line().SetFarRate(115200);
    config.lClientBaudRate(115200);
    config.lReadPacketTimeout(30);
    const std::string strHuge = "VFI,D,XCDLF,F" + std::string(60000, ',');
    EXPECT_EQ(HandshakeWith(strHuge), 0);
    EXPECT_EQ(strPacket, strHuge);
    EXPECT_EQ(lState, PASSTHRU_ST_PARTIALDOWNLOAD);
    EXPECT_EQ(strPTID, "");
    EXPECT_EQ(VfiCopy(), strHuge + "\r\n");
}

TEST_F(FirstPacket, WithABrokenQuoteIsAPartialRequestThatGoesOnAsItCame) {
    FillProfile();
    config.strTmsAppFolder("/tms");
    EXPECT_EQ(HandshakeWith(R"(VFI,D,XDL,F,"A"x,T,E,1,2,P)"), 0);
    EXPECT_EQ(strPacket, R"(VFI,D,XDL,F,"A"x,T,E,1,2,P)");
    EXPECT_EQ(lState, PASSTHRU_ST_PARTIALDOWNLOAD);
}

} // namespace
} // namespace brennik::passthru
