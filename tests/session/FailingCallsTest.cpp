#include "session/TBrennikProtocol.h"
#include "sim/ServiceBehaviour.h"
#include "tests/session/SessionWorld.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace brennik::session {
namespace {

using world::kSecond;
using world::Op;

// A whole session with everything in it, in a host of its own, in which the nth call that can fail
// does so. 0 fails none.
class Session {
  public:
    Session(Over over, int64_t lFailing, int32_t lLastError) : over_(over) {
        tree_->AddVariable("*A=1");
        tree_->AddFile("", "", "root.txt", "root");
        tree_->AddFile("F", "2", "f2.bin", std::string(300, 'f'));
        host.files.MakeFolder("/srv");
        host.files.Put("/srv/pos/old.txt", "old");
        host.files.MakeFolder("/log");
        const auto makeService = [this] {
            sim::ServiceOptions options;
            options.lBlockSize = 128;
            options.script = LineSettled();
            return std::make_unique<sim::ServiceBehaviour>(tree_, options);
        };
        host.network.Listen("10.0.0.1", 5000, makeService);
        world::SimLine& line = host.comPorts.AddLine(kComPort);
        line.SetFarRate(kBaudRate);
        line.ServeEachOpening(makeService);
        host.FailNthCall(lFailing, lLastError);
        Feed();
    }

    int32_t Run() {
        ScopedHost scoped(host.TheHost());
        TBrennikClientConfig config;
        config.lOperatingMode(over_ == Over::Tcp ? 0 : 1);
        config.iServerComPort(3);
        config.lServerBaudRate(kBaudRate);
        config.strServerParity("NONE");
        config.iServerDatabits(8);
        config.dServerStopBit(1);
        config.strWorkingFolder("/srv/pos");
        config.strLogFilePath("/log");
        config.strLogFileName("session.log");
        config.bLoggingEnabled(true);
        config.bLogProcessingPackets(true);
        config.strServerIPAddress1("10.0.0.1");
        config.lServerPort1(5000);
        config.lServerConnectTimeout(5);
        config.lConnectAttempts(2);
        config.lCharTimeout(2);
        config.lReadPacketTimeout(2);
        config.lReadPacketAttempts(1);
        config.lSendPacketAttempts(2);
        TBrennikProtocol engine;
        const int32_t lResult = engine.DoBrennikProtocol(config, "", 1);
        strErrorMessage = engine.strErrorMessage();
        lErrorCode = engine.lErrorCode();
        return lResult;
    }

    std::map<std::string, std::string> Received() const {
        std::map<std::string, std::string> files;
        for (const std::string& strPath : host.files.Tree("/srv/pos")) {
            if (strPath.back() != '/')
                files[strPath] = host.files.Get("/srv/pos/" + strPath).value();
        }
        return files;
    }

    world::SimHost host;
    std::string strErrorMessage;
    int32_t lErrorCode = 0;

  private:
    // A lost connection is read without end, idle; a byte now and then ends each such wait.
    void Feed() {
        host.At(60 * kSecond, [this] {
            if (host.network.nConnections() > 0)
                host.network.LastConnection().Feed("x");
            Feed();
        });
    }

    Over over_;
    std::shared_ptr<sim::ServedTree> tree_ = std::make_shared<sim::ServedTree>();
};

// What stands below the working folder in the end. Over a line files go to drive I, group 1, until
// the far end names another.
std::map<std::string, std::string> Served(Over over) {
    const std::string strFirst = over == Over::Tcp ? "" : "I/1/";
    return {{strFirst + "config.sys", "*A=1\r\n"},
            {strFirst + "root.txt", "root"},
            {"F/2/f2.bin", std::string(300, 'f')}};
}

// Each call that a session makes fails in turn, with that number as the last error.
void FailEachInTurn(Over over, int32_t lLastError) {
    Session clean(over, 0, 0);
    ASSERT_EQ(clean.Run(), 0);
    ASSERT_EQ(clean.Received(), Served(over));
    const int64_t lCalls = clean.host.nFailable();
    ASSERT_GT(lCalls, 100);

    int64_t lFailures = 0;
    for (int64_t lFailing = 1; lFailing <= lCalls; ++lFailing) {
        Session session(over, lFailing, lLastError);
        const int32_t lResult = session.Run();
        const auto failed = session.host.ledger.FailedOp();
        SCOPED_TRACE("call " + std::to_string(lFailing) + ": " +
                     (failed ? world::NameOf(*failed) : "none"));
        ASSERT_TRUE(failed.has_value());
        EXPECT_FALSE(session.host.BudgetExceeded());
        EXPECT_EQ(session.host.files.nOpenStreams(), 0);
        if (lResult == 0) {
            EXPECT_EQ(session.Received(), Served(over)) << "a success has everything";
        } else {
            ++lFailures;
            EXPECT_NE(session.strErrorMessage, "");
            EXPECT_NE(session.lErrorCode, 0);
        }
        // Only the close of the socket itself may leave it open. A port is closed once more.
        EXPECT_LE(session.host.network.nOpenSockets(), *failed == world::Op::CloseSocket ? 1 : 0);
        EXPECT_EQ(session.host.comPorts.nOpenPorts(), 0);
    }
    EXPECT_GT(lFailures, 10);
}

class FailingCalls : public ::testing::TestWithParam<int32_t> {};

TEST_P(FailingCalls, EachInTurnEndsTheSessionAsLaidDown) {
    FailEachInTurn(Over::Tcp, GetParam());
}

TEST(FailingCallsOfALine, EachInTurnEndsTheSessionAsLaidDown) {
    FailEachInTurn(Over::SerialLine, 5);
}

// The numbers of a lost connection, which the reads look for, and one of no meaning.
INSTANTIATE_TEST_SUITE_P(LastErrors, FailingCalls, ::testing::Values(10054, 10053, 10050, 5));

// What becomes of the session when one kind of call fails, by where it fails and how often.
struct Ending {
    Op op;
    int32_t nSkip;  ///< calls of that kind that pass first
    int32_t nTimes; ///< calls that then fail
    int32_t lLastError;
    int32_t lResult;
    int32_t lErrorCode;
    std::string strText; ///< how the text begins; of failures only
};

constexpr const char* kNotMade = "Timed out waiting for connection to remote machine";

const std::vector<Ending> kEndings = {
    // A failed start goes on to the socket, which replaces its text or succeeds.
    {Op::Startup, 0, 1, 10054, 0, 0, ""},
    // A second attempt is allowed; only both failing fail the session.
    {Op::Socket, 0, 1, 10054, 0, 0, ""},
    {Op::Socket, 0, 2, 10054, 1, 1000002, "Failed to create socket"},
    {Op::SetNonBlocking, 0, 1, 10054, 0, 0, ""},
    {Op::SetNonBlocking, 0, 2, 10054, 1, 1000004, kNotMade},
    {Op::Connect, 0, 1, 10061, 0, 0, ""},
    {Op::Connect, 0, 2, 10061, 1, 1000004, kNotMade + std::string(" - WSA Error Code=10061 WSA ")},
    {Op::SelectWritable, 0, 1, 10061, 0, 0, ""},
    {Op::SelectWritable, 0, 2, 10061, 1, 1000004,
     kNotMade + std::string(" - WSA Error Code=10061 WSA Error Message=")},
    // The request can't go out; a lost ACK shows as a far end that falls silent.
    {Op::Send, 0, 1, 10054, 1, -1, "Failed sending data to socket Data=\x02VFI,"},
    {Op::Send, 1, 1, 5, 1, 1000011, "Timed out reading ISO packet"},
    // A query that fails is asked again.
    {Op::BytesWaiting, 0, 1, 5, 0, 0, ""},
    {Op::BytesWaiting, 0, 3, 10054, 0, 0, ""},
    // What a failed read leaves is zero bytes in the place of the first look, which are no ENQ.
    {Op::Receive, 0, 1, 5, 0, 0, ""},
    // The session is over when the socket closes.
    {Op::CloseSocket, 0, 1, 10054, 0, 0, ""},
    // The log is a witness, no part of the work.
    {Op::AppendLine, 0, 1, 0, 0, 0, ""},
    {Op::AppendLine, 0, 1000, 0, 0, 0, ""},
    // A folder that seems absent isn't deleted, and then can't be made.
    {Op::FolderExists, 0, 1, 0, 1, 1000026, "Failed creating folder : /srv/pos\\"},
    {Op::DeleteFolder, 0, 1, 0, 1, 1000029, "Failed deleting folder. : /srv/pos\\"},
    {Op::CreateFolder, 0, 1, 0, 1, 1000026, "Failed creating folder : /srv/pos\\"},
    {Op::CreateFolder, 1, 1, 0, 1, 1000026, "Failed creating folder : /srv/pos\\F\\"},
    {Op::CreateFolder, 2, 1, 0, 1, 1000026, "Failed creating folder : /srv/pos\\F\\2\\"},
    // "config.sys" comes first, then root.txt.
    {Op::StaysInside, 0, 1, 0, 1, 1000024, "Failed opening config system file : /srv/pos\\config."},
    {Op::StaysInside, 1, 1, 0, 1, 1000027, "Failed opening file : /srv/pos\\"},
    {Op::OpenText, 0, 1, 0, 1, 1000024, "Failed opening config system file : /srv/pos\\config.sys"},
    {Op::OpenText, 1, 1, 0, 1, 1000027, "Failed opening file : /srv/pos\\"},
    {Op::StreamWrite, 0, 1, 0, 1, 1000025, "Failed writing to config system file : data=*A=1"},
    {Op::StreamWrite, 1, 1, 0, 1, 1000028, "Failed writing to file. : data=root"},
    {Op::StreamClose, 0, 1, 0, 1, 1000000,
     "TBrennikProtocol.WriteToConfigSysFile() Failed - Device I/O error"},
    {Op::StreamClose, 1, 1, 0, 1, 1000000,
     "TBrennikProtocol.CloseDownloadFile() Failed - Device I/O error"},
};

// The same of a session over a line; what isn't of the channel ends as above.
const std::vector<Ending> kEndingsOfALine = {
    // A second attempt is allowed; only both failing fail the session.
    {Op::ComOpen, 0, 1, 2, 0, 0, ""},
    {Op::ComOpen, 0, 2, 2, 1, 1000018, "Failed opening COM Port COM3"},
    // The line can't be set: the port's text, and no second attempt.
    {Op::ComGetState, 0, 1, 5, 1, 1000018, "Failed retrieving DCB settings for opened port"},
    {Op::ComSetState, 0, 1, 22, 1, 1000018, "Failed setting opened port with DCB settings"},
    {Op::ComSetTimeouts, 0, 1, 5, 1, 1000018, "Failed setting serial timeout values"},
    // A read that fails with nothing before it ends the wait for ENQ.
    {Op::ComRead, 0, 1, 5, 1, 5, "Failed reading data from the opened port"},
    // The request can't go out: the port's own text and number.
    {Op::ComWrite, 0, 1, 5, 1, 5, "Failed writing data to the opened port"},
    // A lost ACK shows as a far end that falls silent.
    {Op::ComWrite, 1, 1, 5, 1, 1000011, "Timed out reading ISO packet"},
    // The session is over when the port closes.
    {Op::ComClose, 0, 1, 5, 0, 0, ""},
};

void EndByKind(Over over, const std::vector<Ending>& endings) {
    for (const Ending& ending : endings) {
        SCOPED_TRACE(world::NameOf(ending.op) + (" after " + std::to_string(ending.nSkip)) + ", " +
                     std::to_string(ending.nTimes) + " times");
        Session session(over, 0, 0);
        session.host.FailNext(ending.op, {.lLastError = ending.lLastError}, ending.nTimes,
                              ending.nSkip);
        EXPECT_EQ(session.Run(), ending.lResult);
        EXPECT_FALSE(session.host.BudgetExceeded());
        if (ending.lResult == 0) {
            EXPECT_EQ(session.Received(), Served(over));
        } else {
            EXPECT_EQ(session.lErrorCode, ending.lErrorCode);
            EXPECT_EQ(session.strErrorMessage.substr(0, ending.strText.size()), ending.strText);
        }
    }
}

TEST(FailingCall, EndsTheSessionByItsKind) {
    EndByKind(Over::Tcp, kEndings);
}

TEST(FailingCall, EndsTheSessionOverALineByItsKind) {
    EndByKind(Over::SerialLine, kEndingsOfALine);
}

} // namespace
} // namespace brennik::session
