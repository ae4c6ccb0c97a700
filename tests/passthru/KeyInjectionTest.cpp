#include "tests/passthru/KeyInjectionWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(KeyInjection, PutsTheRecordIntoGroup15) {
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C", KeyOpen(), WritePacket(kRecord), "C"));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone));
    EXPECT_EQ(device.Payloads().back(), "S") << "the relay goes on behind it";
}

TEST_F(KeyInjection, StampsTheKeyFileWithAFixedMomentAndTheGroupWithThePresentOne) {
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(device.Payloads()[0].substr(18, 8), "20261114");
    EXPECT_EQ(device.Payloads()[2].substr(18, 14), "20150522110000");
}

TEST_F(KeyInjection, ChangesTheDirectoryOfAP400Plus) {
    config.strPlatformName("p400plus");
    EXPECT_EQ(Run(), 0);
    const std::string strFolder = "/home/usr1/flash/fernlatch";
    EXPECT_THAT(Injected(),
                ElementsAre("D" + std::string(1, static_cast<char>(strFolder.size())) + strFolder,
                            KeyOpen(), WritePacket(kRecord), "C"));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone));
}

TEST_F(KeyInjection, HashesAnEmptyPtIdBehindAComma) {
    Ask("VFI,VX520,XDL,F,DAPP,DTID,EPROM,1024,4096");
    Serve("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096", {"S"});
    EXPECT_EQ(Run(), 0);
    // SHA-1 over "KEY,5,20301231,".
    EXPECT_EQ(Injected()[3], WritePacket(kFields + ",20cb517973e58ac87fe1bbeec1ad394101100207"));
    EXPECT_EQ(Outcome()[0], "Starting public key injection process, PTID=");
}

TEST_F(KeyInjection, RefusesKeysThatArentValid) {
    const std::string strRefused =
        "Failed reading public key information from flkeyfile.txt [C:\\keys]";
    const auto refuses = [&] {
        host.files.Remove("/log/run.log");
        device.Forget();
        Ask(DeviceRequest("XDL", "F"));
        Serve(EditedRequest("XDL", "F"), {"S"});
        EXPECT_EQ(Run(), 0);
        EXPECT_THAT(Injected(), ElementsAre());
        EXPECT_THAT(Outcome(), ElementsAre(kStarting, strRefused));
    };
    for (const std::string strIndex : {"0", "-1", "", "five", "99999999999"}) {
        PutKey("KEY", strIndex, "20301231");
        refuses();
    }
    for (const std::string strDate : {"", "2030123", "203012311"}) {
        PutKey("KEY", "5", strDate);
        refuses();
    }
    PutKey("", "5", "20301231");
    refuses();
    host.files.Remove("/keys/flkeyfile.txt");
    refuses();
}

TEST_F(KeyInjection, TakesAnyEightCharactersForADate) {
    PutKey("KEY", "5", "abcdefgh");
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(Injected()[3].substr(7, 14), "KEY,5,abcdefgh");
}

// ---- Answers other than ACK, by the frame that they answer.

TEST_F(KeyInjection, EndsWithoutAnOutcomeWhenTheGroupIsRefused) {
    AnswerFrame(1, "\x15");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen()));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting));
}

TEST_F(KeyInjection, TellsASuccessWhenTheGroupsCloseIsRefused) {
    AnswerFrame(2, "\x15");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C"));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone)) << "meant";
}

TEST_F(KeyInjection, GoesOnBehindARefusedOpenPacket) {
    AnswerFrame(3, "\x15");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C", KeyOpen(), WritePacket(kRecord), "C"));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone));
}

TEST_F(KeyInjection, TellsASuccessWhenTheDataIsRefused) {
    AnswerFrame(4, "\x15");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C", KeyOpen(), WritePacket(kRecord)));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone)) << "meant, although the file is empty";
}

// ---- Silence, by the frame that it answers. The relay goes on all the same.

TEST_F(KeyInjection, EndsWithoutAWordOnSilenceBehindTheGroupItsCloseAndTheData) {
    for (const auto& [nFrame, nSent] : {std::pair(1, 1u), {2, 2u}, {4, 4u}}) {
        host.files.Remove("/log/run.log");
        device.Forget();
        Ask(DeviceRequest("XDL", "F"));
        Serve(EditedRequest("XDL", "F"), {"S"});
        const auto note = device.onHeard;
        AnswerFrame(nFrame, "");
        EXPECT_EQ(Run(), 0) << nFrame;
        device.onHeard = note;
        EXPECT_EQ(Injected().size(), nSent);
        EXPECT_THAT(Outcome(), ElementsAre(kStarting));
        EXPECT_EQ(engine->strErrorMessage(), "Timed out reading ISO packet") << "left behind";
    }
}

TEST_F(KeyInjection, TellsAFailureOnSilenceBehindTheOpenPacketAndTheLastClose) {
    for (const auto& [nFrame, nSent] : {std::pair(3, 3u), {5, 5u}}) {
        host.files.Remove("/log/run.log");
        device.Forget();
        Ask(DeviceRequest("XDL", "F"));
        Serve(EditedRequest("XDL", "F"), {"S"});
        const auto note = device.onHeard;
        AnswerFrame(nFrame, "");
        EXPECT_EQ(Run(), 0) << nFrame;
        device.onHeard = note;
        EXPECT_EQ(Injected().size(), nSent);
        EXPECT_THAT(Outcome(), ElementsAre(kStarting, kFailed));
    }
}

// ---- What the device said last.

TEST_F(KeyInjection, TakesAwayWhatTheDeviceSaidLast) {
    AnswerFrame(5, "\x06\x15"); // the close of the file
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(LogWith("Flushed"), ElementsAre("Flushed Buffer: strData=<NAK>"));
    EXPECT_EQ(server.Count("NAK"), 0) << "it doesn't reach the relay";
    EXPECT_THAT(LogWith("key"), ElementsAre(kStarting, kDone));
    const Lines log = Log();
    EXPECT_EQ(std::find(log.begin(), log.end(), kDone) + 1,
              std::find(log.begin(), log.end(), "Flushed Buffer: strData=<NAK>"));
}

TEST_F(KeyInjection, TakesItAwayBehindARefusedGroupToo) {
    AnswerFrame(1, "\x15\x15");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(LogWith("Flushed"), ElementsAre("Flushed Buffer: strData=<NAK>"));
    EXPECT_EQ(server.Count("NAK"), 0);
}

TEST_F(KeyInjection, TakesItAwayBehindKeysThatArentValidToo) {
    PutKey("", "5", "20301231");
    // Said while the verdict is under way: it lies there when the injection begins.
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "ACK")
            device.Say("\x15");
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(LogWith("Flushed"), ElementsAre("Flushed Buffer: strData=<NAK>"));
    EXPECT_EQ(server.Count("NAK"), 0);
}

TEST_F(KeyInjection, TakesItAwayBehindAFailureThatIsTold) {
    AnswerFrame(2, "\x06\x15");
    // Poll, verdict, group and its close go out; the open packet doesn't.
    host.FailNext(Op::ComWrite, {.lLastError = 5}, 1, 4);
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(LogWith("key"), ElementsAre(kStarting, kFailed));
    EXPECT_THAT(LogWith("Flushed"), ElementsAre("Flushed Buffer: strData=<NAK>"));
}

TEST_F(KeyInjection, LeavesItToTheRelayBehindASilentEnd) {
    // The group's packet, its close, and the data: what was said ahead of the one that fails.
    for (const int32_t nFrame : {2, 4}) {
        SCOPED_TRACE(nFrame);
        host.files.Remove("/log/run.log");
        device.Forget();
        server.Forget();
        Ask(DeviceRequest("XDL", "F"));
        Serve(EditedRequest("XDL", "F"), {"S"});
        server.On("NAK", {CrcFrame("S")});
        const auto note = device.onHeard;
        AnswerFrame(nFrame - 1, "\x06\x15");
        host.FailNext(Op::ComWrite, {.lLastError = 5}, 1, nFrame + 1);
        EXPECT_EQ(Run(), 0);
        device.onHeard = note;
        EXPECT_THAT(LogWith("key"), ElementsAre(kStarting));
        EXPECT_THAT(LogWith("Flushed"), IsEmpty()) << "meant";
        EXPECT_EQ(server.Count("NAK"), 1) << "taken for the answer to the server's first frame";
        EXPECT_EQ(engine->strErrorMessage(), "Failed writing data to the opened port");
        EXPECT_EQ(engine->lErrorCode(), 5) << "left behind";
    }
}

// ---- Resume replies.

TEST_F(KeyInjection, SendsTheTailOfTheRecordBehindAResumeReply) {
    AnswerFrame(3, "\x02R5\x03"); // the device holds five bytes
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(),
                ElementsAre(GroupOpen(), "C", KeyOpen(), WritePacket(kRecord.substr(5)), "C"));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone));
}

TEST_F(KeyInjection, SendsTheLastByteAloneAndNothingBehindIt) {
    constexpr char digits[] = "0123456789ABCDEF";
    const auto hex = [&](size_t n) { return std::string{digits[n >> 4], digits[n & 15]}; };
    const auto note = device.onHeard;
    AnswerFrame(3, "\x02R" + hex(kRecord.size() - 1) + "\x03");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C", KeyOpen(),
                                        WritePacket(kRecord.substr(kRecord.size() - 1)), "C"));
    device.onHeard = note;
    device.Forget();
    Ask(DeviceRequest("XDL", "F"));
    Serve(EditedRequest("XDL", "F"), {"S"});
    AnswerFrame(3, "\x02R" + hex(kRecord.size()) + "\x03");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C", KeyOpen(), "C")) << "it has it all";
    EXPECT_EQ(Outcome().back(), kDone);
}

TEST_F(KeyInjection, SendsTheWholeRecordBehindAReplyWithoutAPosition) {
    for (const std::string strReply : {"\x02R0\x03", "\x02X5\x03", "\x02R5"}) {
        device.Forget();
        Ask(DeviceRequest("XDL", "F"));
        Serve(EditedRequest("XDL", "F"), {"S"});
        const auto note = device.onHeard;
        AnswerFrame(3, strReply);
        EXPECT_EQ(Run(), 0);
        device.onHeard = note;
        EXPECT_EQ(Injected().at(3), WritePacket(kRecord)) << strReply;
    }
}

TEST_F(KeyInjection, EndsWithoutAWordOnMalformedDigits) {
    AnswerFrame(3, "\x02Rxyz\x03");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C", KeyOpen()));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting));
}

TEST_F(KeyInjection, TellsAFailureWhenTheCloseOfAWholeFileFails) {
    AnswerFrame(3, "\x02RFF\x03"); // more than there is
    host.FailNext(Op::ComWrite, {.lLastError = 5}, 1, 5);
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Injected(), ElementsAre(GroupOpen(), "C", KeyOpen()));
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kFailed));
}

// ---- A device that changes its directory: the same, with a frame less ahead of the file.

class KeyInjectionOnP400 : public KeyInjection {
  protected:
    KeyInjectionOnP400() { config.strPlatformName("P400PLUS"); }
    /// What it is sent behind the answer to that frame, and the outcome.
    void Expect(int32_t nFrame, const std::string& strAnswer, const Lines& behind,
                const Lines& outcome) {
        AnswerFrame(nFrame, strAnswer);
        EXPECT_EQ(Run(), 0);
        Lines injected = Injected();
        ASSERT_GE(injected.size(), static_cast<size_t>(nFrame));
        injected.erase(injected.begin(), injected.begin() + nFrame);
        EXPECT_EQ(injected, behind);
        EXPECT_EQ(Outcome(), outcome);
        EXPECT_EQ(device.Payloads().back(), "S") << "the relay goes on behind it";
    }
};

TEST_F(KeyInjectionOnP400, EndsWithoutAnOutcomeWhenTheDirectoryIsRefused) {
    Expect(1, "\x15", {}, {kStarting});
}

TEST_F(KeyInjectionOnP400, EndsWithoutAWordOnSilenceBehindTheDirectory) {
    Expect(1, "", {}, {kStarting});
}

TEST_F(KeyInjectionOnP400, TellsAFailureOnSilenceBehindTheOpenPacket) {
    Expect(2, "", {}, {kStarting, kFailed});
}

TEST_F(KeyInjectionOnP400, GoesOnBehindARefusedOpenPacket) {
    Expect(2, "\x15", {WritePacket(kRecord), "C"}, {kStarting, kDone});
}

TEST_F(KeyInjectionOnP400, SendsTheTailOfTheRecordBehindAResumeReply) {
    Expect(2, "\x02R5\x03", {WritePacket(kRecord.substr(5)), "C"}, {kStarting, kDone});
}

TEST_F(KeyInjectionOnP400, ClosesAFileThatIsThereAsAWhole) {
    Expect(2, "\x02R37\x03", {"C"}, {kStarting, kDone});
}

TEST_F(KeyInjectionOnP400, EndsWithoutAWordOnMalformedDigits) {
    Expect(2, "\x02Rxyz\x03", {}, {kStarting});
}

TEST_F(KeyInjectionOnP400, TellsASuccessWhenTheDataIsRefused) {
    Expect(3, "\x15", {}, {kStarting, kDone});
}

TEST_F(KeyInjectionOnP400, EndsWithoutAWordOnSilenceBehindTheData) {
    Expect(3, "", {}, {kStarting});
}

TEST_F(KeyInjectionOnP400, TellsAFailureOnSilenceBehindTheLastClose) {
    Expect(4, "", {}, {kStarting, kFailed});
}

TEST_F(KeyInjectionOnP400, TellsASuccessWhenTheLastCloseIsRefused) {
    Expect(4, "\x15", {}, {kStarting, kDone});
}

// ---- When there is one at all.

TEST_F(KeyInjection, GoesIntoFullDownloadsOnly) {
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre());
}

TEST_F(KeyInjection, GoesIntoTheLastApplicationOfASeries) {
    Ask(DeviceRequest("XCDLF", "F"));
    Serve(EditedRequest("XCDL", "F"), {"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone));
}

TEST_F(KeyInjection, GoesIntoEachApplicationOfASeries) {
    AnswerStatusQueries();
    device.Always("[]", "\x06");
    device.On("ENQ", {CrcFrame(DeviceRequest("XCDL", "F")), CrcFrame(DeviceRequest("XCDLF", "F"))});
    server.On("[" + EditedRequest("XCDL", "F") + "]",
              {Saying("\x06" + CrcFrame("S")), Saying("\x06" + CrcFrame("S"))});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone, kStarting, kDone));
}

TEST_F(KeyInjection, GoesIntoAForcedFullDownload) {
    ForceFullDownload();
    Serve("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT7,,", {"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone));
}

TEST_F(KeyInjection, GoesIntoNoUpload) {
    Upload({"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre());
}

TEST_F(KeyInjection, GoesIntoNoDownloadWhoseRequestTheServerDidNotGet) {
    host.FailNext(Op::Send);
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(Outcome(), ElementsAre());
}

TEST_F(KeyInjection, IsLeftOutWithoutTheProfilesWord) {
    config.bInjectPublicKeyFile(false);
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre());
}

TEST_F(KeyInjection, EndsWithoutAWordWhenTheHashCantBeHad) {
    host.FailNext(Op::OstRtl, {.lResult = 5});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre(kStarting));
    EXPECT_THAT(Injected(), ElementsAre());
}

TEST_F(KeyInjection, KeepsTheKeyOutOfTheLogUnlessPacketsAreLogged) {
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(LogWith("20301231").empty());
    host.files.Remove("/log/run.log");
    config.bLogProcessingPackets(true);
    Ask(DeviceRequest("XDL", "F"));
    Serve(EditedRequest("XDL", "F"), {"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(LogWith("20301231").size(), 1u) << "the frame that bears it";
}

} // namespace
} // namespace brennik::passthru
