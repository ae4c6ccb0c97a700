#include "session/TBrennikProtocol.h"
#include "sim/ServiceBehaviour.h"
#include "tests/session/SessionWorld.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

namespace brennik::session {
namespace {

using world::kSecond;

// A whole session with everything in it, in a host of its own, in which the nth call that can fail
// does so. 0 fails none.
class Session {
  public:
    explicit Session(int64_t lFailing, int32_t lLastError) {
        tree_->AddVariable("*A=1");
        tree_->AddFile("", "", "root.txt", "root");
        tree_->AddFile("F", "2", "f2.bin", std::string(300, 'f'));
        host.files.MakeFolder("/srv");
        host.files.Put("/srv/pos/old.txt", "old");
        host.files.MakeFolder("/log");
        host.network.Listen("10.0.0.1", 5000, [this] {
            sim::ServiceOptions options;
            options.lBlockSize = 128;
            return std::make_unique<sim::ServiceBehaviour>(tree_, options);
        });
        host.FailNthCall(lFailing, lLastError);
        Feed();
    }

    int32_t Run() {
        ScopedHost scoped(host.TheHost());
        TBrennikClientConfig config;
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

    std::shared_ptr<sim::ServedTree> tree_ = std::make_shared<sim::ServedTree>();
};

const std::map<std::string, std::string> kServed = {
    {"config.sys", "*A=1\r\n"}, {"root.txt", "root"}, {"F/2/f2.bin", std::string(300, 'f')}};

class FailingCalls : public ::testing::TestWithParam<int32_t> {};

TEST_P(FailingCalls, EachInTurnEndsTheSessionAsLaidDown) {
    Session clean(0, 0);
    ASSERT_EQ(clean.Run(), 0);
    ASSERT_EQ(clean.Received(), kServed);
    const int64_t lCalls = clean.host.nFailable();
    ASSERT_GT(lCalls, 100);

    int64_t lFailures = 0;
    for (int64_t lFailing = 1; lFailing <= lCalls; ++lFailing) {
        Session session(lFailing, GetParam());
        const int32_t lResult = session.Run();
        const auto failed = session.host.ledger.FailedOp();
        SCOPED_TRACE("call " + std::to_string(lFailing) + ": " +
                     (failed ? world::NameOf(*failed) : "none"));
        ASSERT_TRUE(failed.has_value());
        EXPECT_FALSE(session.host.BudgetExceeded());
        EXPECT_EQ(session.host.files.nOpenStreams(), 0);
        if (lResult == 0) {
            EXPECT_EQ(session.Received(), kServed) << "a success has everything";
        } else {
            ++lFailures;
            EXPECT_NE(session.strErrorMessage, "");
            EXPECT_NE(session.lErrorCode, 0);
        }
        // Only the close of the socket itself may leave it open.
        EXPECT_LE(session.host.network.nOpenSockets(), *failed == world::Op::CloseSocket ? 1 : 0);
    }
    EXPECT_GT(lFailures, 10);
}

// The numbers of a lost connection, which the reads look for, and one of no meaning.
INSTANTIATE_TEST_SUITE_P(LastErrors, FailingCalls, ::testing::Values(10054, 10053, 10050, 5));

} // namespace
} // namespace brennik::session
