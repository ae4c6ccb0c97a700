// Every call of the seam that can fail does so once, in turn, over whole conversations with a
// device: nothing crashes, spins or stays open, and a success has all that belongs to it.

#include "tests/passthru/DeviceWorld.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace brennik::passthru {
namespace {

/// A conversation in a host of its own. 0 fails no call.
class Conversation : public DeviceTest {
  public:
    void TestBody() override {}

    /// Lays out the far end and the profile.
    virtual void Prepare() = 0;
    virtual int32_t Talk() = 0;
    /// What a success must have brought.
    virtual void ExpectAll(Op failing) = 0;

    int32_t Run(int64_t lFailing) {
        Prepare();
        Connect();
        const int64_t nBefore = host.nFailable();
        host.FailNthCall(lFailing, 5);
        FeedAnEndlessRead();
        const int32_t lStatus = Talk();
        host.RunFor(kSecond);
        nFailable = host.nFailable() - nBefore;
        failed = host.ledger.FailedOp();
        EXPECT_FALSE(host.BudgetExceeded());
        EXPECT_EQ(host.files.nOpenStreams(), 0);
        channel.reset();
        // Only the close of the port itself may leave it open.
        EXPECT_LE(host.comPorts.nOpenPorts(), failed == Op::ComClose ? 1 : 0);
        return lStatus;
    }
    const TBrennikProtocol& Engine() const { return engine; }

    int64_t nFailable = 0;
    std::optional<Op> failed;

  private:
    // A line that was opened anew and could not be given its time limits has none: a read of it
    // waits for a byte, idle. One now and then ends each such wait.
    void FeedAnEndlessRead() {
        host.At(60 * kSecond, [this] {
            if (Line().IsOpen() && Line().Timeouts() == CommTimeouts{})
                Line().Feed("x");
            FeedAnEndlessRead();
        });
    }
};

/// A hunt with everything in it, and a request that is edited throughout.
class Hunt : public Conversation {
  public:
    void Prepare() override {
        config.lClientBaudRate(9600);
        config.lConnectAttempts(2);
        config.strTerminalId("T9");
        config.strApplicationID("A9");
        config.strConfigTitle("C9");
        device.On("noise", {"", "", kNak});
        device.On("ENQ", {"", kSyn});
        device.Always("ENQ", CrcFrame("VFI,D,XCDLF,F,A,T,E,1,2,P1,,"));
    }
    int32_t Talk() override { return Handshake(); }
    void ExpectAll(Op) override {
        EXPECT_EQ(strPacket, "VFI,D,XCDL,F,A9,T9,E,1,2,P1,,C9");
        EXPECT_EQ(strPTID, "P1");
        EXPECT_EQ(lState, PASSTHRU_ST_LASTFULLTMSAPP);
    }
};

class Upload : public Conversation {
  public:
    void Prepare() override {
        config.lPassThruType(1);
        config.strTerminalId("T9");
        device.ExpectLrc(true);
        device.Always("[]", kAck + LrcFrame("3.9,1,U,Q,0,0,,,A"));
        device.On("ACK", {CrcFrame("VFI,D,XDL,F,A,T,E,1,2,P1")});
    }
    int32_t Talk() override { return Handshake(); }
    void ExpectAll(Op) override {
        EXPECT_EQ(strPacket, "VFI,D,XDL,F,A,T9,E,1,2,P1");
        EXPECT_EQ(lState, PASSTHRU_ST_UPLOADFILES);
    }
};

/// A device that is told to call, asks for a download and is sent a local list.
class AppDownload : public Conversation {
  public:
    void Prepare() override {
        config.bPedDownload(true);
        config.strTmsAppFolder("/tms");
        host.files.Put("/tms/download.txt", "SETGROUP.2\r\n*A=1\r\na.out\r\nb.dat\r\n");
        host.files.Put("/tms/a.out", std::string(300, 'a'));
        host.files.Put("/tms/b.dat", "");
        device.ExpectLrc(true);
        device.On("[3.9,2,U,Q,0,0,,,T,]", {kAck + LrcFrame("3.9,1,T,Q,0,0,,,A")});
        device.On("ACK", {CrcFrame(Request("XDL", "F", "128"))});
        device.Always("ENQ", CrcFrame(Request("XDL", "F", "128"))); // where the command failed
        device.Always("[]", kAck);
        device.onHeard = [this](const std::string& strWhat) {
            if (strWhat == "ACK" || strWhat == "ENQ")
                device.ExpectLrc(false);
        };
    }
    int32_t Talk() override { return Handshake(); }
    Lines Sent() const {
        Lines sent = device.Payloads();
        if (!sent.empty() && sent.front().starts_with("3.9,"))
            sent.erase(sent.begin());
        for (std::string& strPayload : sent)
            strPayload = strPayload.substr(0, strPayload.front() == 'O' ? 10 : 7);
        return sent;
    }
    static Lines Expected() {
        using namespace std::string_literals;
        return {"OD00000000",
                "C",
                "L*A\x1C"
                "1",
                "OC0000012C",
                "W\0\x80\0\0\0\0"s,
                "W\0\x80\0\0\0\x80"s,
                "W\0\x2C\0\0\x01\0"s,
                "C",
                "OD00000000",
                "C",
                "S"};
    }
    void ExpectAll(Op failing) override {
        EXPECT_EQ(lState, PASSTHRU_ST_DOWNLOAAPPCOMPLETE);
        // A list that can't be read to its end is sent as far as it was; a block that can't be
        // read goes empty.
        if (failing != Op::StreamRead) {
            EXPECT_EQ(Sent(), Expected());
        }
        EXPECT_EQ(Sent().back(), "S");
    }
};

class Reboot : public Conversation {
  public:
    void Prepare() override {
        const std::string strQuery = "[3.9,0,LS,Q,0,0,,,]";
        device.ExpectLrc(true);
        device.On(strQuery, {"", kAck + LrcFrame("3.9,1,LS,Q,0,0,,,B")});
        device.Always(strQuery, kAck + LrcFrame("3.9,1,LS,Q,0,0,,,R"));
    }
    int32_t Talk() override {
        const Microseconds begin = host.Now();
        access.WaitForDeviceReboot(link, 240, log, config);
        EXPECT_GE(host.Now() - begin, 20 * kSecond);
        EXPECT_LT(host.Now() - begin, 50 * kSecond) << "one turn more at most";
        ExpectLink(2, false);
        ExpectError(0, "");
        return 0;
    }
    void ExpectAll(Op) override {
        EXPECT_EQ(link.lPacketReadAttempts(), 1);
        EXPECT_EQ(link.lPacketTimeout(), 3);
    }
};

template <class Kind>
void FailEachInTurn(int64_t lLeastCalls, int64_t lLeastFailures) {
    int64_t lCalls = 0;
    {
        Kind clean;
        ASSERT_EQ(clean.Run(0), 0) << clean.Engine().strErrorMessage();
        clean.ExpectAll(Op::Count_);
        lCalls = clean.nFailable;
    }
    ASSERT_GE(lCalls, lLeastCalls);
    int64_t lFailures = 0;
    for (int64_t lFailing = 1; lFailing <= lCalls; ++lFailing) {
        Kind run;
        const int32_t lStatus = run.Run(lFailing);
        ASSERT_TRUE(run.failed.has_value());
        SCOPED_TRACE("call " + std::to_string(lFailing) + ": " + world::NameOf(*run.failed));
        if (lStatus == 0) {
            run.ExpectAll(*run.failed);
        } else {
            ++lFailures;
            EXPECT_NE(run.Engine().strErrorMessage(), "");
            EXPECT_NE(run.Engine().lErrorCode(), 0);
        }
    }
    EXPECT_GE(lFailures, lLeastFailures);
}

TEST(DeviceFailingCalls, EachInTurnEndsAHuntAsLaidDown) {
    FailEachInTurn<Hunt>(50, 1);
}

TEST(DeviceFailingCalls, EachInTurnEndsAnUploadAsLaidDown) {
    FailEachInTurn<Upload>(20, 2);
}

TEST(DeviceFailingCalls, EachInTurnEndsAnApplicationDownloadAsLaidDown) {
    FailEachInTurn<AppDownload>(80, 10);
}

TEST(DeviceFailingCalls, EachInTurnLengthensTheWaitForARebootAtMost) {
    FailEachInTurn<Reboot>(20, 0);
}

} // namespace
} // namespace brennik::passthru
