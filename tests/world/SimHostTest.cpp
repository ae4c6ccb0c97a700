#include "tests/world/SimHost.h"

#include "platform/PumpEvents.h"
#include "support/Failure.h"

#include <gtest/gtest-spi.h>

namespace brennik::world {
namespace {

class SimHostTest : public WorldTest {};

TEST_F(SimHostTest, IsTheCurrentHost) {
    EXPECT_EQ(&CurrentHost(), &host.TheHost());
    EXPECT_EQ(&CurrentHost().clock, &host.clock);
    EXPECT_EQ(&CurrentHost().sockets, &host.network);
    EXPECT_EQ(&CurrentHost().files, &host.files);
    EXPECT_EQ(&CurrentHost().profileStrings, &host.profileStrings);
    EXPECT_EQ(&CurrentHost().processes, &host.processes);
}

TEST_F(SimHostTest, PumpingIsACallAndRunsTheHooksInOrder) {
    std::string strOrder;
    host.OnPump([&] { strOrder += "a"; });
    host.OnPump([&] { strOrder += "b"; });
    PumpEvents();
    PumpEvents();
    EXPECT_EQ(strOrder, "abab");
    EXPECT_EQ(host.nPumps(), 2);
    EXPECT_EQ(host.nCalls(), 2);
    EXPECT_EQ(host.Now(), 2);
}

TEST_F(SimHostTest, AHookMayAddAHook) {
    int nRuns = 0;
    host.OnPump([&] {
        if (nRuns++ == 0) {
            host.OnPump([&] { nRuns += 100; });
        }
    });
    PumpEvents();
    EXPECT_EQ(nRuns, 101);
}

TEST_F(SimHostTest, ALoopThatPollsTheClockWithoutWaitingOverrunsTheBudget) {
    host.SetBudget(10000);
    const float dEnd = SecondsSinceMidnight() + 60.0F;
    EXPECT_THROW(
        while (SecondsSinceMidnight() < dEnd) { PumpEvents(); }, BudgetExhausted);
    EXPECT_LT(host.Now(), kSecond);
    host.ForgiveOverrun();
}

TEST_F(SimHostTest, ALoopThatWaitsEndsWithinTheSameBudget) {
    host.SetBudget(15000);
    const float dEnd = SecondsSinceMidnight() + 60.0F;
    while (SecondsSinceMidnight() < dEnd) {
        Sleep(10);
    }
    EXPECT_FALSE(host.BudgetExceeded());
}

TEST_F(SimHostTest, RunForMovesTimeWithoutACall) {
    bool bRan = false;
    host.At(500, [&] { bRan = true; });
    host.RunFor(kMillisecond);
    EXPECT_TRUE(bRan);
    EXPECT_EQ(host.nCalls(), 0);
}

TEST_F(SimHostTest, KeepsTheOrderOfCallsOverAllRooms) {
    host.files.Put("C:\\a.txt", "x");
    host.RecordCalls();
    static_cast<void>(host.network.Startup(257));
    Sleep(50);
    EXPECT_TRUE(host.files.OpenText("C:\\a.txt", OpenMode::Read) != nullptr);
    host.processes.ChangeDrive("C");
    EXPECT_EQ(host.ledger.trace, (std::vector<std::string>{"Startup 257", "Sleep 50",
                                                           "OpenText C:\\a.txt", "ChangeDrive C"}));
}

// The budget of the fixture itself: an overrun that the code under test swallows fails the test.
class OverrunningTest : public WorldTest {
  public:
    void TestBody() override {
        host.SetBudget(1);
        Quietly([&] {
            PumpEvents();
            PumpEvents();
        });
    }
};

TEST(WorldTestFixture, FailsATestThatOverranItsBudget) {
    EXPECT_NONFATAL_FAILURE(
        {
            OverrunningTest test;
            test.TestBody();
        },
        "more calls of the seam than its budget");
}

/// A small piece of work over all rooms, as a client would do it; its failures end it.
std::string Work(SimHost& host) {
    return Guarded(
        [&] {
            if (host.profileStrings.GetPrivateProfileString("A", "k", "", 100, "/w.ini") != "v") {
                return std::string("profile");
            }
            const int32_t lSocket = host.network.Socket();
            if (lSocket <= 0 || host.network.SetNonBlocking(lSocket) != 0) {
                return std::string("socket");
            }
            if (host.network.Connect(lSocket, host.network.InetAddr("10.0.0.1"),
                                     host.network.HostToNetworkPort(5000)) != -1 ||
                host.network.SelectWritable(lSocket, 5) != 1) {
                return std::string("connect");
            }
            if (host.network.Send(lSocket, "x") != 1 || host.network.CloseSocket(lSocket) != 0) {
                return std::string("talk");
            }
            host.files.CreateFolder("C:\\w");
            const auto stream = host.files.OpenText("C:\\w\\a", OpenMode::Write);
            stream->Write("data");
            stream->Close();
            return std::string("done");
        },
        [](const std::string& strDescription) { return strDescription; });
}

void LayOut(SimHost& host) {
    host.files.Put("/w.ini", "[A]\r\nk=v\r\n");
    host.network.AddPeer("10.0.0.1", 5000);
}

TEST(SimHostFailures, EachFailableCallFailsOnceInTurn) {
    int64_t nFailable = 0;
    {
        SimHost host;
        LayOut(host);
        ASSERT_EQ(Work(host), "done");
        nFailable = host.nFailable();
    }
    ASSERT_EQ(nFailable, 11);
    std::vector<std::string> outcomes;
    for (int64_t n = 1; n <= nFailable; ++n) {
        SimHost host;
        LayOut(host);
        host.FailNthCall(n);
        outcomes.push_back(Work(host));
        EXPECT_TRUE(host.ledger.FailedOp().has_value()) << n;
    }
    // A connect that fails at once also spoils the select behind it.
    EXPECT_EQ(outcomes,
              (std::vector<std::string>{"profile", "socket", "socket", "connect", "connect", "talk",
                                        "talk", "Device I/O error", "Device I/O error",
                                        "Device I/O error", "Device I/O error"}));
}

} // namespace
} // namespace brennik::world
