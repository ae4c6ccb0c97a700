// How a client session ends and what it leaves to be seen: states, texts, log lines, the order of
// the closing calls, and its limits of time.
#include "platform/RuntimeFailure.h"
#include "tests/session/SessionWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using namespace session;
using namespace std::string_literals;
using world::kMillisecond;
using world::Op;
using State = BrennikState;

class ClientSessionEnds : public SessionTest {
  protected:
    bool LoggedTheClose() const {
        const auto lines = Log();
        return std::any_of(lines.begin(), lines.end(), [](const std::string& strLine) {
            return strLine.starts_with("INFO   : Connection Closed, Socket ") &&
                   strLine.ends_with(" Destroyed");
        });
    }

    /// Index of the first recorded call that begins so; -1 without one.
    int64_t CallOf(const std::string& strCall) const {
        const auto& trace = host.ledger.trace;
        const auto found = std::find_if(trace.begin(), trace.end(), [&](const std::string& strOne) {
            return strOne.starts_with(strCall);
        });
        return found == trace.end() ? -1 : found - trace.begin();
    }
};

// ---- A close that fails.

TEST_F(ClientSessionEnds, FailsOnACloseThatFailsAndListsItsFileAllTheSame) {
    Say({Open("a.txt", 1), Write("x"), "C", "S"});
    host.FailNext(Op::StreamClose);
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000000, "TBrennikProtocol.CloseDownloadFile() Failed - Device I/O error");
    ASSERT_EQ(engine->lNumFilesDownloaded(), 1);
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "a.txt");
    EXPECT_EQ(engine->lCurrentState(), State::DownloadingFile) << "the success wasn't read";
    const auto lines = Log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "INFO   : Downloaded file=/srv/pos\\a.txt, filesize=1"),
              1);
}

TEST_F(ClientSessionEnds, StaysASuccessWhenTheCloseBehindItFails) {
    Say({Open("a.txt", 1), Write("x"), "S"});
    host.FailNext(Op::StreamClose);
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(engine->lCurrentState(), State::DisconnectingFromServer);
    EXPECT_TRUE(Errors().empty());
    EXPECT_EQ(File("/srv/pos/a.txt"), "x");
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_TRUE(LoggedTheClose());
}

TEST_F(ClientSessionEnds, ClosesTheFileBeforeTheConnection) {
    Say({Open("a.txt", 1), Write("x"), "S"});
    host.RecordCalls();
    ASSERT_EQ(Run(), 0);
    ASSERT_GE(CallOf("StreamClose"), 0);
    ASSERT_GE(CallOf("CloseSocket"), 0);
    EXPECT_LT(CallOf("StreamClose"), CallOf("Shutdown"));
    EXPECT_LT(CallOf("StreamClose"), CallOf("CloseSocket"));
}

// ---- What is to be seen.

TEST_F(ClientSessionEnds, MovesTheStateOnThoughTheHandlerFails) {
    Say({"MHi", Write("lost")});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lCurrentState(), State::DownloadingFile) << "data with nothing open";

    Say({"MHi", Open("no\\such", 0)});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lCurrentState(), State::DownloadingFile) << "a file that can't be opened";

    Say({"MHi", Open("no\\such", 0, 'A')});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lCurrentState(), State::DownloadingFile) << "one to append to";

    Say({"MHi", "LA\x1C"s + "1"});
    host.FailNext(Op::OpenText);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lCurrentState(), State::ProcessingConfigSysVariable);
}

TEST_F(ClientSessionEnds, ShowsTheLastMessage) {
    std::vector<std::string> seen;
    Say({"MFirst", "MSecond", "M", "MLast", "S"});
    onPayload = [&](size_t) { seen.push_back(engine->strStatusMessage()); };
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(seen, (std::vector<std::string>{"", "First", "Second", "", "Last"}));
    EXPECT_EQ(engine->strStatusMessage(), "Last");
}

TEST_F(ClientSessionEnds, LogsTheSizeThatTheFarEndStated) {
    Say({Open("a.txt", 9), Write("hello"), "C", "S"});
    ASSERT_EQ(Run(), 0);
    const auto lines = Log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "INFO   : Downloaded file=/srv/pos\\a.txt, filesize=9"),
              1);
    EXPECT_EQ(File("/srv/pos/a.txt"), "hello");
}

TEST_F(ClientSessionEnds, TellsTheLogThatTheConnectionWasClosedHoweverItEnds) {
    Say({"U"});
    EXPECT_EQ(Run(), 1);
    EXPECT_TRUE(LoggedTheClose()) << "unsuccessful";

    host.files.Remove("/log/session.log");
    Say({});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000011);
    EXPECT_TRUE(LoggedTheClose()) << "timed out";

    host.files.Remove("/log/session.log");
    peer.OnConnect = nullptr;
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000012);
    EXPECT_TRUE(LoggedTheClose()) << "no ENQ";
}

// ---- Events.

TEST_F(ClientSessionEnds, PumpsEventsOnceBehindEachPacketTheLastIncluded) {
    std::map<State, int64_t> pumps;
    host.OnPump([&] { ++pumps[engine->lCurrentState()]; });
    // Each pass of a read pumps twice, in the link and in the channel; the session adds one for
    // each packet behind which the state shows.
    Say({"MHi", "S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(pumps[State::DisconnectingFromServer], 1) << "behind the last, and nothing later";
    EXPECT_EQ(pumps[State::ProcessingMessage] % 2, 1) << "behind the message";
    EXPECT_GE(pumps[State::ProcessingMessage], 3);

    for (const char* last : {"U", "X", ""}) { // refused, not understood, and none in time
        pumps.clear();
        Say(*last != '\0' ? std::vector<std::string>{"MHi", last}
                          : std::vector<std::string>{"MHi"});
        EXPECT_EQ(Run(), 1);
        EXPECT_EQ(pumps[State::ProcessingMessage] % 2, 0) << "behind both: " << last;
        EXPECT_GE(pumps[State::ProcessingMessage], 4);
    }
}

// ---- Time.

TEST_F(ClientSessionEnds, WaitsForTheAnswerToItsRequestAsLongAsForACharacter) {
    config.lCharTimeout(2);
    config.lReadPacketTimeout(3);
    // A byte of no meaning in time: the wait goes on and takes the answer.
    peer.OnBytes = [&, bAsked = false](std::string_view) mutable {
        if (!bAsked) {
            peer.PushAt(1900 * kMillisecond, "x");
            peer.PushAt(2500 * kMillisecond, kAck + Frame("S"));
        }
        bAsked = true;
    };
    EXPECT_EQ(Run(), 0);
    // The same byte when the time is over: it ends the wait, which nothing but a byte could.
    peer.Take();
    peer.OnBytes = [&, bAsked = false](std::string_view) mutable {
        if (!bAsked) {
            peer.PushAt(2100 * kMillisecond, "x");
            peer.PushAt(2500 * kMillisecond, kAck + Frame("S"));
        }
        bAsked = true;
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000011, "Timed out reading ISO packet");
    EXPECT_EQ(peer.Received(), Frame("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1,RELEASE,CONFIG"))
        << "sent once";
}

} // namespace
} // namespace brennik
