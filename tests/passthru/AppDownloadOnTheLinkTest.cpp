// The download of a local list by its link: refusals, failures, what others see of it, and how a
// device's request starts it.

#include "tests/passthru/AppDownloadFixture.h"
#include "tests/passthru/Golden.h"
#include "tests/world/AllocationLimit.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace brennik::passthru {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;

TEST_F(AppDownload, TellsUnforeseenFailuresUnderTheirOwnNames) {
    for (const auto& [strEnd, strOperation] :
         {std::pair<std::string, std::string>{"", "Download"}, {"\\\\", "ReadListFile"}}) {
        config.strTmsAppFolder("C:\\" + std::string(2000, 't') + strEnd);
        int32_t lStatus = 0;
        {
            world::AllocationLimit limit(1000);
            lStatus = download.Download(link, config, 1024, log);
        }
        EXPECT_EQ(lStatus, 1);
        ExpectFailure(1000000, "TTmsAppDownload." + strOperation + "() Failed - Out of memory");
    }
    EXPECT_THAT(Log(), ElementsAre("Failed reading tms client list file")) << "of the second";
}

// ---- The link.

TEST_F(AppDownload, HasTheLinkAcknowledgeAndLeavesItSo) {
    List({"*A=1"});
    EXPECT_EQ(Run(), 0);
    ExpectLink(2, true);
}

TEST_F(AppDownload, SendsAFrameAgainForANak) {
    File("a", "0123");
    List({"a"});
    const std::string strBlock = Block("0123");
    device.On("[" + strBlock + "]", {kNak, "noise" + kNak, kAck});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(device.Payloads(), ElementsAre(Opened('D', "00000004", "a"), strBlock, strBlock,
                                               strBlock, kClose, kSuccess));
    EXPECT_EQ(device.Count("NAK"), 0);
}

// Meant: attempts used up by NAKs are silent.
TEST_F(AppDownload, EndsWithoutATextWhenTheDeviceRefusesAFrameForGood) {
    List({"*A=1", "*B=2"});
    device.Always("[" + Variable("*A", "1") + "]", kNak);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(device.Payloads(), Lines(3, Variable("*A", "1")));
    ExpectFailure(0, "");
}

TEST_F(AppDownload, SendsNothingBehindAFrameThatFailed) {
    File("a", "0123");
    const std::string strOpened = Opened('D', "00000004", "a");
    const Lines all = {Variable("*A", "1"),
                       strOpened,
                       Block("01"),
                       Block("23", 2),
                       kClose,
                       Opened('D', "00000000", "SETGROUP.2"),
                       kClose,
                       kSuccess};
    ASSERT_EQ(Sent({"*A=1", "a", "SETGROUP.2"}, 2), all);
    for (size_t nFailing = 0; nFailing < all.size(); ++nFailing) {
        SCOPED_TRACE(nFailing);
        StartAt(12, 0, 0);
        device.Forget();
        device.onHeard = [&](const std::string&) {
            device.Always("[]", device.Payloads().size() > nFailing ? "" : kAck);
        };
        TTmsAppDownload fresh;
        const Microseconds begin = host.Now();
        EXPECT_EQ(fresh.Download(link, config, 2, log), 1);
        EXPECT_GE(host.Now() - begin, 2 * kSecond);
        EXPECT_EQ(fresh.lErrorCode(), 1000011);
        EXPECT_EQ(fresh.strErrorMessage(), kTimedOut);
        EXPECT_EQ(fresh.strDownloadFileName(), "");
        host.RunFor(10 * kMillisecond);
        EXPECT_EQ(device.Payloads(),
                  Lines(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(nFailing) + 1))
            << "and no session unsuccessful packet";
    }
}

TEST_F(AppDownload, TakesTheTextOfALineThatFails) {
    List({"*A=1", "*B=2"});
    host.FailNext(Op::ComWrite, {.lLastError = 5}, 1, 1);
    EXPECT_EQ(Run(), 1);
    ExpectFailure(5, "Failed writing data to the opened port");
    EXPECT_THAT(device.Payloads(), ElementsAre(Variable("*A", "1")));
}

TEST_F(AppDownload, EndsInALineThatHangsUp) {
    File("a", std::string(20000, 'x'));
    List({"a"});
    host.At(500 * kMillisecond, [&] { Line().HangUp(); });
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(1000), 1);
    EXPECT_LT(host.Now() - begin, 3 * kSecond);
    EXPECT_NE(download.strErrorMessage(), "");
}

// Meant: a time limit beyond midnight is never reached.
TEST_F(AppDownload, WaitsForAnAckPastMidnightUntilAByteEndsIt) {
    List({"*A=1"});
    StartAt(23, 59, 59);
    device.Always("[]", "");
    device.Say({kAck, 1000 * kSecond});
    device.Say({kAck, 1001 * kSecond});
    EXPECT_EQ(Run(), 0) << "the second wait began behind midnight";
}

TEST_F(AppDownload, GivesUpOnAnAckWhenMidnightIsFarAway) {
    List({"*A=1"});
    StartAt(23, 59, 50);
    device.Always("[]", "");
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    EXPECT_GE(host.Now() - begin, 2 * kSecond);
    EXPECT_LT(host.Now() - begin, 2 * kSecond + 50 * kMillisecond);
}

// ---- What others see of it.

TEST_F(AppDownload, ShowsHowFarItIs) {
    File("a.txt", "0123456789");
    List({"*A=1", "a.txt", "SETGROUP.2"});
    struct Seen {
        std::string strName;
        int32_t lSize;
        int32_t lSent;
        bool operator==(const Seen&) const = default;
    };
    std::vector<Seen> seen;
    device.onHeard = [&](const std::string&) {
        seen.push_back({download.strDownloadFileName(), download.lDownloadFileSize(),
                        download.lFileBytesDownloaded()});
        EXPECT_EQ(download.strStatusMessage(), "");
    };
    EXPECT_EQ(Run(4), 0);
    const std::vector<Seen> expected = {
        {"*A=1", 0, 0},       {"a.txt", 10, 0},     {"a.txt", 10, 0},
        {"a.txt", 10, 4},     {"a.txt", 10, 8},     {"a.txt", 10, 10},
        {"SETGROUP.2", 0, 0}, {"SETGROUP.2", 0, 0}, {"", 0, 0}, // the end of the session
    };
    EXPECT_TRUE(seen == expected);
    ExpectProgress("", 0, 0);
}

TEST_F(AppDownload, StartsEveryEntryFromNothing) {
    File("a", "0123");
    File("b", "01");
    List({"a", "b"});
    std::vector<int32_t> sent;
    device.onHeard = [&](const std::string& strWhat) {
        if (strWhat[1] == 'O')
            sent.push_back(download.lFileBytesDownloaded());
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(sent, ElementsAre(0, 0));
}

TEST_F(AppDownload, PumpsEventsAtTheHeadOfEachEntry) {
    List({"*A=1", "*B=2"});
    RecordSteps();
    EXPECT_EQ(Run(), 0);
    const Lines steps = Steps();
    const auto first = std::ranges::find(steps, "log Filename=*A=1, FileSize=0");
    ASSERT_NE(first, steps.begin());
    EXPECT_EQ(*(first - 1), "pump");
    const auto second = std::ranges::find(steps, "log Filename=*B=2, FileSize=0");
    EXPECT_THAT(Lines(first + 1, second + 1),
                ElementsAre("Write 9", "Read 1", "pump", "log Filename=*B=2, FileSize=0"));
}

TEST_F(AppDownload, LooksAtNoCancel) {
    engine.bCancelComms(true);
    EXPECT_THAT(Sent({"*A=1", "*B=2"}),
                ElementsAre(Variable("*A", "1"), Variable("*B", "2"), kSuccess));
}

TEST_F(AppDownload, HoldsOneFileAtATime) {
    File("a", "A");
    File("b", "B");
    List({"a", "b"});
    std::vector<int32_t> open;
    device.onHeard = [&](const std::string& strWhat) {
        if (strWhat[1] == 'W')
            open.push_back(host.files.nOpenStreams());
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(open, ElementsAre(1, 1));
}

TEST_F(AppDownload, LeavesThisLog) {
    log.InitialiseLogging("/log", "device.log", true, true, true);
    File("app.out", "0123456789");
    File("cfg.dat", "");
    File("n#1.txt", "abc");
    List({"SETDRIVE.I", "setgroup.15", "", "  app.out ", "*PORT=80", "cfg.dat", "n#1.txt"});
    device.On("[" + Block("4567", 4) + "]", {kNak});
    EXPECT_EQ(Run(4), 0);
    EXPECT_EQ(WholeLog(), Golden("download.log"));
}

// ---- Started by a device's request.

class AppDownloadOfARequest : public AppDownload {
  protected:
    int32_t HandshakeWith(const std::string& strRequest) {
        device.On("ENQ", {CrcFrame(strRequest)});
        const int32_t lStatus = Handshake();
        host.RunFor(10 * kMillisecond);
        return lStatus;
    }
};

TEST_F(AppDownloadOfARequest, TakesThePlaceOfTheServer) {
    File("a", "0123");
    List({"a"});
    EXPECT_EQ(HandshakeWith(Request("XDL", "F", "3")), 0);
    EXPECT_EQ(lState, PASSTHRU_ST_DOWNLOAAPPCOMPLETE);
    // The request has no ACK of its own: the first frame of the list answers it.
    EXPECT_EQ(device.Texts(),
              (Lines{"ENQ", "[" + Opened('D', "00000004", "a") + "]", "[" + Block("012") + "]",
                     "[" + Block("3", 3) + "]", "[C]", "[S]"}));
    EXPECT_EQ(strPTID, "DPT");
    EXPECT_EQ(VfiCopy(), Request("XDL", "F", "3") + "\r\n");
    EXPECT_EQ(config.strTmsAppFolder(), "C:\\tms\\\\");
    EXPECT_EQ(host.network.nConnections(), 0u);
    ExpectError(0, "");
}

TEST_F(AppDownloadOfARequest, IsOfAFullXdlRequestAlone) {
    File("a", "0123");
    List({"a"});
    for (const auto& [strRequest, state] :
         {std::pair{Request("XDL", "P"), PASSTHRU_ST_PARTIALDOWNLOAD},
          std::pair{Request("XCDL", "F"), PASSTHRU_ST_FULLTMSAPP},
          std::pair{Request("XCDLF", "F"), PASSTHRU_ST_LASTFULLTMSAPP},
          std::pair{Request("XUL", "F"), PASSTHRU_ST_PARTIALDOWNLOAD}}) {
        device.Forget();
        EXPECT_EQ(HandshakeWith(strRequest), 0);
        EXPECT_EQ(lState, state);
        EXPECT_EQ(device.Bytes(), kEnq);
    }
    config.strTmsAppFolder("");
    EXPECT_EQ(HandshakeWith(Request("XDL", "F")), 0);
    EXPECT_EQ(lState, PASSTHRU_ST_FULLDOWNLOAD) << "without a folder it goes to the server";
}

TEST_F(AppDownloadOfARequest, ShowsThroughTheEngineHowFarItIs) {
    File("a", "0123");
    List({"a"});
    EXPECT_FALSE(access.bTmsAppDownloadActive());
    bool bSeen = false;
    device.onHeard = [&](const std::string& strWhat) {
        if (strWhat != "[" + Block("23", 2) + "]")
            return;
        bSeen = true;
        EXPECT_TRUE(access.bTmsAppDownloadActive());
        EXPECT_EQ(engine.lCurrentState(), BrennikState::DownloadingTmsApplication);
        EXPECT_EQ(engine.strDownloadFileName(), "a");
        EXPECT_EQ(engine.lDownloadFileSize(), 4);
        EXPECT_EQ(engine.lFileBytesDownloaded(), 2);
    };
    EXPECT_EQ(HandshakeWith(Request("XDL", "F", "2")), 0);
    EXPECT_TRUE(bSeen);
    EXPECT_FALSE(access.bTmsAppDownloadActive());
    EXPECT_EQ(engine.strDownloadFileName(), "");
    EXPECT_EQ(engine.lDownloadFileSize(), 0);
    EXPECT_EQ(engine.lFileBytesDownloaded(), 0);
    EXPECT_EQ(engine.lCurrentState(), BrennikState::DownloadingTmsApplication) << "as it was set";
}

TEST_F(AppDownloadOfARequest, GivesItsTextToTheEngineAndLeavesTheState) {
    EXPECT_EQ(HandshakeWith(Request("XDL", "F")), 1);
    ExpectError(1000031, "Failed opening TMS application list file");
    EXPECT_EQ(lState, PASSTHRU_ST_START);
    EXPECT_FALSE(access.bTmsAppDownloadActive());
    EXPECT_EQ(device.Bytes(), kEnq);
    EXPECT_NE(Ini().find("ClientBaudRate=115200"), std::string::npos) << "the rate had worked";
    EXPECT_EQ(strPTID, "DPT");
}

TEST_F(AppDownloadOfARequest, TakesTheBlockSizeThatTheDeviceNames) {
    File("a", "0123");
    List({"a"});
    struct {
        const char* strBlockSize;
        int32_t lStatus;
        size_t nFrames;
    } const cases[] = {
        {"2", 0, 5}, {"4", 0, 4},  {" 4 ", 0, 4},         {"0", 0, 3},          {"", 0, 3},
        {"x", 0, 3}, {"-1", 1, 1}, {"-2147483648", 1, 1}, {"4294967296", 0, 3},
    };
    for (const auto& c : cases) {
        device.Forget();
        lState = PASSTHRU_ST_START;
        EXPECT_EQ(HandshakeWith(Request("XDL", "F", c.strBlockSize)), c.lStatus) << c.strBlockSize;
        EXPECT_EQ(device.Payloads().size(), c.nFrames) << c.strBlockSize;
        EXPECT_EQ(lState, c.lStatus == 0 ? PASSTHRU_ST_DOWNLOAAPPCOMPLETE : PASSTHRU_ST_START);
        link.bAckPackets(false);
    }
    ExpectError(1000000, "TTmsAppDownload.Download() Failed - Invalid procedure call");
}

TEST_F(AppDownloadOfARequest, RunsToItsEndWhateverIsCancelled) {
    File("a", "0123");
    List({"a"});
    device.onHeard = [&](const std::string&) { engine.bCancelComms(true); };
    EXPECT_EQ(HandshakeWith(Request("XDL", "F")), 0);
    EXPECT_EQ(device.Payloads().back(), kSuccess);
}

} // namespace
} // namespace brennik::passthru
