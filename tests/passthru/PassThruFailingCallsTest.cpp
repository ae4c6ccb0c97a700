#include "tests/passthru/PassThruWorld.h"

#include <map>

namespace brennik::passthru {
namespace {

enum class Kind { DownloadWithKey, UploadOfAFile, EnquiryAndDownload };

// A whole run in which the nth call that can fail does so.
class PassThruFailingCalls : public PassThruTest {
  public:
    explicit PassThruFailingCalls(Kind kind) : kind_(kind) {}
    void TestBody() override {}

    int32_t RunWith(int64_t lFailing, int32_t lLastError) {
        host.SetBudget(20000000);
        Prepare();
        AnswerStatusQueries();
        host.FailNthCall(lFailing, lLastError);
        Feed();
        return Run();
    }
    bool bDelivered() const {
        const Lines payloads = (kind_ == Kind::UploadOfAFile ? server : device).Payloads();
        return std::count(payloads.begin(), payloads.end(), session::Write("data")) == 1 &&
               std::count(payloads.begin(), payloads.end(), "S") >= 1;
    }
    world::SimHost& TheHost() { return host; }

  private:
    void Prepare() {
        switch (kind_) {
        case Kind::DownloadWithKey:
            config.bInjectPublicKeyFile(true);
            config.strPublickeyLocation("/keys");
            host.files.Put("/keys/flkeyfile.txt", "[ENCRYPTION]\r\nRsaKey=K\r\nRsaKeyIndex=1\r\n"
                                                  "RsaKeyExpiryDate=20301231\r\n");
            return Download("XDL", "F");
        case Kind::UploadOfAFile:
            return Upload({session::Open("a.bin", 4), session::Write("data"), "C", "S"});
        case Kind::EnquiryAndDownload:
            Download("XDL", "P");
            Enquire(kAccepted);
            device.On("ENQ", {CrcFrame(kEnquiry), CrcFrame(DeviceRequest("XDL", "P"))});
            // The first ACK is that of the reply.
            server.On("ACK", {"", CrcFrame(session::Write("data")), CrcFrame("C"), CrcFrame("S")});
        }
    }

    // The server's answer is waited for without end, idle; a byte now and then ends each such wait.
    void Feed() {
        host.At(60 * kSecond, [this] {
            if (host.network.nConnections() > 0)
                host.network.LastConnection().Feed("x");
            Feed();
        });
    }

    Kind kind_;
};

void EachCallInTurn(Kind kind) {
    int64_t lCalls = 0;
    {
        PassThruFailingCalls clean(kind);
        ASSERT_EQ(clean.RunWith(0, 0), 0);
        ASSERT_TRUE(clean.bDelivered());
        lCalls = clean.TheHost().nFailable();
    }
    ASSERT_GT(lCalls, 100);
    int64_t lFailures = 0;
    int64_t lGoodAllTheSame = 0;
    for (int64_t lFailing = 1; lFailing <= lCalls; ++lFailing) {
        PassThruFailingCalls run(kind);
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

TEST(PassThruFailingCall, EachInTurnEndsADownloadWithAKeyAsLaidDown) {
    EachCallInTurn(Kind::DownloadWithKey);
}

TEST(PassThruFailingCall, EachInTurnEndsAnUploadAsLaidDown) {
    EachCallInTurn(Kind::UploadOfAFile);
}

TEST(PassThruFailingCall, EachInTurnEndsAnEnquiryAndItsDownloadAsLaidDown) {
    EachCallInTurn(Kind::EnquiryAndDownload);
}

} // namespace
} // namespace brennik::passthru
