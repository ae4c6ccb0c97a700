#include "tests/passthru/PassThruWorld.h"

#include <map>

namespace brennik::passthru {
namespace {

// A whole run with a key put in, in which the nth call that can fail does so.
class PassThruFailingCalls : public PassThruTest {
  public:
    void TestBody() override {}

    int32_t RunWith(int64_t lFailing, int32_t lLastError) {
        host.SetBudget(20000000);
        config.bInjectPublicKeyFile(true);
        config.strPublickeyLocation("/keys");
        host.files.Put("/keys/flkeyfile.txt", "[ENCRYPTION]\r\nRsaKey=K\r\nRsaKeyIndex=1\r\n"
                                              "RsaKeyExpiryDate=20301231\r\n");
        Download("XDL", "F");
        AnswerStatusQueries();
        host.FailNthCall(lFailing, lLastError);
        Feed();
        return Run();
    }
    bool bDelivered() const {
        const Lines payloads = device.Payloads();
        return std::count(payloads.begin(), payloads.end(), session::Write("data")) == 1 &&
               std::count(payloads.begin(), payloads.end(), "S") >= 1;
    }
    world::SimHost& TheHost() { return host; }

  private:
    // The server's answer is waited for without end, idle; a byte now and then ends each such wait.
    void Feed() {
        host.At(60 * kSecond, [this] {
            if (host.network.nConnections() > 0)
                host.network.LastConnection().Feed("x");
            Feed();
        });
    }
};

TEST(PassThruFailingCall, EachInTurnEndsTheRunAsLaidDown) {
    int64_t lCalls = 0;
    {
        PassThruFailingCalls clean;
        ASSERT_EQ(clean.RunWith(0, 0), 0);
        ASSERT_TRUE(clean.bDelivered());
        lCalls = clean.TheHost().nFailable();
    }
    ASSERT_GT(lCalls, 100);
    int64_t lFailures = 0;
    int64_t lGoodAllTheSame = 0;
    for (int64_t lFailing = 1; lFailing <= lCalls; ++lFailing) {
        PassThruFailingCalls run;
        const int32_t lResult = run.RunWith(lFailing, 10054);
        const auto failed = run.TheHost().ledger.FailedOp();
        SCOPED_TRACE("call " + std::to_string(lFailing) + ": " +
                     (failed ? world::NameOf(*failed) : "none"));
        ASSERT_TRUE(failed.has_value());
        EXPECT_FALSE(run.TheHost().BudgetExceeded());
        EXPECT_EQ(run.TheHost().files.nOpenStreams(), 0);
        EXPECT_EQ(run.TheHost().comPorts.nOpenPorts(), 0);
        EXPECT_LE(run.TheHost().network.nOpenSockets(), *failed == Op::CloseSocket ? 1 : 0);
        if (lResult == 0) {
            ++lGoodAllTheSame;
            EXPECT_TRUE(run.bDelivered()) << "a success has everything";
        } else {
            ++lFailures;
        }
    }
    EXPECT_GT(lFailures, 10);
    EXPECT_GT(lGoodAllTheSame, 10);
}

} // namespace
} // namespace brennik::passthru
