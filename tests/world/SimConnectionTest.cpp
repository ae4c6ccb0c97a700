#include "tests/world/NotingFarEnd.h"
#include "tests/world/SimHost.h"

#include <functional>

namespace brennik::world {
namespace {

class SimConnectionTest : public WorldTest {
  protected:
    SimConnectionTest() {
        host.network.Listen("10.0.0.1", 5000, [this] {
            auto made = std::make_unique<NotingFarEnd>(notes);
            farEnd = made.get();
            if (prepare) {
                prepare(*made);
            }
            return made;
        });
    }
    int32_t Connected() {
        const int32_t lSocket = host.network.Socket();
        EXPECT_EQ(host.network.Connect(lSocket, host.network.InetAddr("10.0.0.1"),
                                       host.network.HostToNetworkPort(5000)),
                  0);
        return lSocket;
    }
    std::string WaitingBytes() {
        std::string strBytes(1000, '\0');
        int32_t lError = 0;
        strBytes.resize(host.network.LastConnection().ClientReceive(strBytes.data(), 1000, lError));
        return strBytes;
    }

    std::vector<std::string> notes;
    NotingFarEnd* farEnd = nullptr;
    std::function<void(NotingFarEnd&)> prepare;
};

TEST_F(SimConnectionTest, EachConnectionMeetsANewFarEnd) {
    static_cast<void>(Connected());
    const NotingFarEnd* first = farEnd;
    static_cast<void>(Connected());
    EXPECT_NE(farEnd, first);
    EXPECT_EQ(host.network.nConnections(), 2U);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "connected"}));
}

TEST_F(SimConnectionTest, TheFarEndSpeaksFirstAndAnswers) {
    prepare = [](NotingFarEnd& made) {
        made.onConnected = [](sim::Wire& wire) { wire.Send("\x05"); };
        made.onReceived = [](sim::Wire& wire, sim::Microseconds) { wire.Send("\x06"); };
    };
    const int32_t lSocket = Connected();
    host.network.WaitReadable(lSocket, 10);
    EXPECT_EQ(WaitingBytes(), "\x05");
    EXPECT_EQ(host.network.Send(lSocket, "request"), 7);
    host.network.WaitReadable(lSocket, 10);
    EXPECT_EQ(WaitingBytes(), "\x06");
    EXPECT_EQ(host.network.LastConnection().nSentByClient(), 7);
    EXPECT_EQ(host.network.LastConnection().nSentByFarEnd(), 2);
}

TEST_F(SimConnectionTest, DeadlinesElapseAtTheirMoment) {
    prepare = [](NotingFarEnd& made) {
        made.deadline = 5000;
        made.onElapsed = [&made] {
            made.deadline =
                *made.deadline < 7000 ? std::optional<Microseconds>(7000) : std::nullopt;
        };
    };
    static_cast<void>(Connected());
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "elapsed 5000", "elapsed 7000"}));
}

TEST_F(SimConnectionTest, ADeadlineThatMovesReplacesTheOldOne) {
    prepare = [](NotingFarEnd& made) {
        made.deadline = 5000;
        made.onReceived = [&made](sim::Wire&, sim::Microseconds) { made.deadline = 9000; };
        made.onElapsed = [&made] { made.deadline.reset(); };
    };
    const int32_t lSocket = Connected();
    EXPECT_EQ(host.network.Send(lSocket, "x"), 1);
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "x", "elapsed 9000"}));
}

TEST_F(SimConnectionTest, ADeadlineTakenBackDoesntElapse) {
    prepare = [](NotingFarEnd& made) {
        made.deadline = 5000;
        made.onReceived = [&made](sim::Wire&, sim::Microseconds) { made.deadline.reset(); };
    };
    const int32_t lSocket = Connected();
    EXPECT_EQ(host.network.Send(lSocket, "x"), 1);
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "x"}));
}

TEST_F(SimConnectionTest, ADeadlineLeftInThePastDoesntHoldTimeStill) {
    prepare = [](NotingFarEnd& made) { made.deadline = 0; };
    static_cast<void>(Connected());
    host.RunFor(5);
    EXPECT_GE(notes.size(), 5U);
    EXPECT_LE(notes.size(), 8U);
}

TEST_F(SimConnectionTest, NothingIsCalledAfterTheClientHasGone) {
    prepare = [](NotingFarEnd& made) { made.deadline = 5000; };
    const int32_t lSocket = Connected();
    EXPECT_EQ(host.network.CloseSocket(lSocket), 0);
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "disconnected"}));
}

TEST_F(SimConnectionTest, NothingIsCalledAfterTheFarEndHasClosed) {
    prepare = [](NotingFarEnd& made) {
        made.deadline = 5000;
        made.onConnected = [](sim::Wire& wire) {
            wire.Close();
            wire.Send("late");
            wire.Reset();
        };
    };
    const int32_t lSocket = Connected();
    EXPECT_EQ(host.network.Send(lSocket, "x"), 1);
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected"}));
    EXPECT_EQ(WaitingBytes(), "");
}

TEST_F(SimConnectionTest, PiecesOfOneMomentArriveAsOne) {
    const int32_t lSocket = Connected();
    host.network.SetLatency(1000, 1000);
    EXPECT_EQ(host.network.Send(lSocket, "ab"), 2); // due at 1000 from here
    host.network.SetLatency(0, 0);
    EXPECT_EQ(host.network.Send(lSocket, "cd"), 2); // faster, yet never ahead
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "abcd"}));
}

TEST_F(SimConnectionTest, AManglerSplitsDelaysDoublesAndDrops) {
    host.network.SetMangler(std::make_unique<FunctionMangler>(
        [](Direction direction, std::string_view strBytes, Outlet& outlet) {
            if (direction == Direction::ToClient) {
                outlet.Put(strBytes);
            } else if (strBytes != "drop") {
                outlet.Put(strBytes.substr(0, 1));
                outlet.Put(strBytes.substr(1), 1000);
                outlet.Put(strBytes, 500); // an earlier moment, yet behind
            }
        }));
    const int32_t lSocket = Connected();
    EXPECT_EQ(host.network.Send(lSocket, "drop"), 4);
    EXPECT_EQ(host.network.Send(lSocket, "abc"), 3);
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "a", "bcabc"}));
}

TEST_F(SimConnectionTest, AManglerMayKeepBytesForALaterWrite) {
    std::string strKept;
    host.network.SetMangler(std::make_unique<FunctionMangler>(
        [&](Direction, std::string_view strBytes, Outlet& outlet) {
            strKept += strBytes;
            if (strKept.size() >= 4) {
                outlet.Put(strKept);
                strKept.clear();
            }
        }));
    const int32_t lSocket = Connected();
    EXPECT_EQ(host.network.Send(lSocket, "ab"), 2);
    Sleep(20);
    EXPECT_EQ(host.network.Send(lSocket, "cd"), 2);
    Sleep(20);
    EXPECT_EQ(notes, (std::vector<std::string>{"connected", "abcd"}));
}

} // namespace
} // namespace brennik::world
