#include "tests/world/WatchedHost.h"

#include "tests/world/SimHost.h"

#include <gmock/gmock.h>

namespace brennik::world {
namespace {

using ::testing::ElementsAre;

class Notes : public Watcher {
  public:
    void TimeRead(float dNow) override {
        lines.push_back("time " + std::to_string(static_cast<int32_t>(dNow)));
    }
    void ConnectionSilent() override { lines.push_back("connection silent"); }
    void ConnectionRead(std::string_view strBytes) override { Add("connection read ", strBytes); }
    void ConnectionWriting(std::string_view strBytes) override {
        Add("connection writing ", strBytes);
    }
    void PortSilent() override { lines.push_back("port silent"); }
    void PortRead(std::string_view strBytes) override { Add("port read ", strBytes); }
    void PortWriting(std::string_view strBytes) override { Add("port writing ", strBytes); }
    void PortWritten() override { lines.push_back("port written"); }
    void PortClosing() override { lines.push_back("port closing"); }

    std::vector<std::string> lines;

  private:
    void Add(std::string strLine, std::string_view strBytes) {
        lines.push_back(strLine.append(strBytes));
    }
};

class WatchedHostTest : public WorldTest {
  protected:
    Notes notes;
    WatchedHost watched{host.TheHost(), notes};
    Host& seen = watched.TheHost();
};

TEST_F(WatchedHostTest, TellsTheTimeThatWasRead) {
    host.clock.SetTimeOfDay(77 * kSecond);
    EXPECT_GE(seen.clock.SecondsSinceMidnight(), 77);
    EXPECT_THAT(notes.lines, ElementsAre("time 77"));
}

TEST_F(WatchedHostTest, TellsWhatAConnectionCarries) {
    host.network.AddPeer("10.0.0.1", 5000);
    ASSERT_EQ(seen.sockets.Startup(0x0101), 0);
    const int32_t lSocket = seen.sockets.Socket();
    ASSERT_EQ(seen.sockets.SetNonBlocking(lSocket), 0);
    seen.sockets.Connect(lSocket, seen.sockets.InetAddr("10.0.0.1"),
                         seen.sockets.HostToNetworkPort(5000));
    ASSERT_EQ(seen.sockets.SelectWritable(lSocket, 5), 1);
    int32_t lBytes = -1;
    EXPECT_EQ(seen.sockets.BytesWaiting(lSocket, lBytes), 0);
    EXPECT_EQ(seen.sockets.Send(lSocket, "ask"), 3);
    host.network.LastConnection().Feed("told");
    char buffer[8];
    EXPECT_EQ(seen.sockets.Receive(lSocket, buffer, 8), 4);
    EXPECT_THAT(notes.lines,
                ElementsAre("connection silent", "connection writing ask", "connection read told"));
}

TEST_F(WatchedHostTest, TellsWhatAPortCarries) {
    SimLine& line = host.comPorts.AddLine("COM2");
    const int32_t hPort = seen.comPorts.Open("COM2");
    char buffer[8];
    int32_t lCount = 0;
    EXPECT_TRUE(seen.comPorts.Read(hPort, buffer, 1, lCount));
    EXPECT_TRUE(seen.comPorts.Write(hPort, "ask", lCount));
    line.Feed("told");
    host.RunFor(kSecond);
    EXPECT_TRUE(seen.comPorts.Read(hPort, buffer, 4, lCount));
    EXPECT_TRUE(seen.comPorts.Close(hPort));
    EXPECT_THAT(notes.lines, ElementsAre("port silent", "port writing ask", "port written",
                                         "port read told", "port closing"));
}

TEST_F(WatchedHostTest, ChangesNothingThatFails) {
    host.FailNext(Op::ComRead);
    host.comPorts.AddLine("COM2");
    const int32_t hPort = seen.comPorts.Open("COM2");
    char buffer[8];
    int32_t lCount = 0;
    EXPECT_FALSE(seen.comPorts.Read(hPort, buffer, 1, lCount));
    EXPECT_THAT(notes.lines, ElementsAre());
}

} // namespace
} // namespace brennik::world
