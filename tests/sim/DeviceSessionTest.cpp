// What a device makes of the frames of a session.
#include "sim/DeviceSession.h"

#include "tests/sim/DevicePlay.h"
#include "tests/sim/GoldenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using golden::kSuccess;
using sim::BuildFrame;
using sim::DeviceOutcome;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr sim::Microseconds kMillisecond = 1000;

/// A session that has begun.
class DeviceSessionTest : public testing::Test {
  protected:
    void Begin(std::string_view strScript = "") {
        play_ = std::make_unique<DevicePlay>(strScript);
        play_->Begin();
    }
    DevicePlay& Play() { return *play_; }

    /// A file in one block.
    void File(std::string_view strName, std::string_view strData) {
        EXPECT_EQ(Play().Open(strName), "\x06");
        EXPECT_EQ(Play().Write(0, strData), "\x06");
        EXPECT_EQ(Play().Frame("C"), "\x06");
    }
    /// A file without content.
    void Mark(std::string_view strName) {
        EXPECT_EQ(Play().Open(strName), "\x06");
        EXPECT_EQ(Play().Frame("C"), "\x06");
    }

  private:
    std::unique_ptr<DevicePlay> play_;
};

TEST_F(DeviceSessionTest, PutsFilesIntoDrivesAndGroups) {
    Begin();
    File("a", "1");
    Mark("SETGROUP.15");
    File("a", "2");
    Mark("setdrive.F");
    File("a", "3");
    Mark("SetGroup.x/y");
    File("sub/a", "4");
    Mark("SETGROUP");
    File("a", "5");
    EXPECT_THAT(Play().Files(),
                ElementsAre(Pair("F/15/a", "3"), Pair("F/a", "5"), Pair("F/x/y/sub/a", "4"),
                            Pair("I/1/a", "1"), Pair("I/15/a", "2")));
    EXPECT_EQ(Play().Report().received.lFiles, 5);
    EXPECT_EQ(Play().Report().received.lDataBytes, 5);
}

TEST_F(DeviceSessionTest, PutsFilesIntoASetDirectory) {
    Begin();
    EXPECT_EQ(Play().Frame(sim::DirectoryPacket("/home/usr1/flash")), "\x06");
    File("a", "1");
    EXPECT_EQ(Play().Frame("D\x02zzz"), "\x06") << "the length counts";
    File("a", "2");
    Mark("SETGROUP.7");
    File("a", "3");
    EXPECT_EQ(Play().Frame("Dx"), "\x06");
    EXPECT_EQ(Play().Frame("D"), "\x06");
    File("a", "4");
    EXPECT_THAT(Play().Files(),
                ElementsAre(Pair("I/7/a", "4"), Pair("home/usr1/flash/a", "1"), Pair("zz/a", "2")));
}

TEST_F(DeviceSessionTest, BeginsEachSessionInTheFirstGroup) {
    Begin("reboot 0\ncall\ncall\n");
    Mark("SETGROUP.15");
    EXPECT_EQ(Play().Say(kSuccess), "\x06");
    Play().Begin();
    File("a", "1");
    EXPECT_THAT(Play().Files(), ElementsAre(Pair("I/1/a", "1")));
}

TEST_F(DeviceSessionTest, LetsNoNameOutOfItsStore) {
    Begin();
    File("../../etc/passwd", "1");
    Mark("SETGROUP...");
    File("..\\x", "2");
    EXPECT_EQ(Play().Frame(sim::DirectoryPacket("../..")), "\x06");
    File("/a", "3");
    EXPECT_THAT(Play().Files(),
                ElementsAre(Pair("I/1/etc/passwd", "1"), Pair("I/x", "2"), Pair("a", "3")));
}

TEST_F(DeviceSessionTest, EmptiesANewFileAndAppendsToAnOldOne) {
    Begin();
    Play().Files() = {{"I/1/new", "old"}, {"I/1/more", "old"}};
    File("new", "1");
    EXPECT_EQ(Play().Frame(sim::OpenPacket('A', "more", 1, {2015, 5, 22, 11, 0, 0})), "\x06");
    EXPECT_EQ(Play().Write(0, "1"), "\x06");
    EXPECT_EQ(Play().Frame("c"), "\x06");
    EXPECT_EQ(Play().Frame(sim::OpenPacket('a', "more", 1, {2015, 5, 22, 11, 0, 0})), "\x06");
    EXPECT_EQ(Play().Write(0, "2"), "\x06");
    EXPECT_THAT(Play().Files(), ElementsAre(Pair("I/1/more", "old12"), Pair("I/1/new", "1")));
    EXPECT_EQ(Play().Report().received.lFiles, 2) << "the last one isn't closed";
}

TEST_F(DeviceSessionTest, TakesDataAsItComesAndCountsOddOffsets) {
    Begin();
    Play().Open("a");
    EXPECT_EQ(Play().Write(0, "abc"), "\x06");
    EXPECT_EQ(Play().Write(3, "de"), "\x06");
    EXPECT_EQ(Play().Report().received.lOddOffsets, 0);
    EXPECT_EQ(Play().Write(0, "f"), "\x06");
    EXPECT_EQ(Play().Frame("B" + sim::WritePacket(6, "g").substr(1)), "\x06");
    EXPECT_EQ(Play().Files()["I/1/a"], "abcdefg");
    EXPECT_EQ(Play().Report().received.lOddOffsets, 1);
    EXPECT_EQ(Play().Report().received.lDataBytes, 7);
}

TEST_F(DeviceSessionTest, PutsVariablesIntoAFileOfTheFolder) {
    Begin();
    EXPECT_EQ(Play().Frame(sim::VariablePacket("*A=B=C")), "\x06");
    Play().Open("a");
    EXPECT_EQ(Play().Write(0, "1"), "\x06");
    EXPECT_EQ(Play().Frame("L#D\x1C"
                           "E"),
              "\x06");
    EXPECT_EQ(Play().Write(1, "2"), "\x06");
    Mark("SETGROUP.2");
    EXPECT_EQ(Play().Frame("l"), "\x06");
    EXPECT_THAT(Play().Files(),
                ElementsAre(Pair("I/1/a", "12"), Pair("I/1/config.sys", "*A=B=C\r\n#D=E\r\n"),
                            Pair("I/2/config.sys", "\r\n")));
    EXPECT_EQ(Play().Report().received.lVariables, 3);
}

TEST_F(DeviceSessionTest, AcknowledgesAllThatIsWholeAndNotesIt) {
    Begin();
    const std::string_view strPackets[] = {"Mhello", "P1234", "T20240102030405", "X?",
                                           "",       "m",     "Ashort",          "B"};
    for (const std::string_view strPacket : strPackets) {
        EXPECT_EQ(Play().Frame(strPacket), "\x06") << strPacket;
    }
    EXPECT_EQ(Play().Write(0, "no file is open"), "\x06");
    EXPECT_THAT(Play().Device().Packets(), testing::ElementsAreArray(strPackets));
    EXPECT_EQ(Play().Report().received.lUnknown, 5);
    EXPECT_EQ(Play().Report().lFrames, 9);
    EXPECT_THAT(Play().Files(), IsEmpty());
}

TEST_F(DeviceSessionTest, EndsInSmallLettersToo) {
    for (const auto& [strEnd, outcome] : {std::pair{"s", DeviceOutcome::Successful},
                                          std::pair{"Uxyz", DeviceOutcome::Unsuccessful}}) {
        Begin();
        EXPECT_EQ(Play().Frame(strEnd), "\x06");
        EXPECT_EQ(Play().Report().outcome, outcome);
    }
}

TEST_F(DeviceSessionTest, RefusesAWrongCheckWithNakUntilItIsRight) {
    Begin();
    EXPECT_EQ(Play().Say("\x02Mhi\x03\x11\x22"), "\x15");
    EXPECT_EQ(Play().Say("\x02W\x00\x01\x00\x00\x00\x00x\x11\x22"sv), "\x15");
    EXPECT_EQ(Play().Frame("Mhi"), "\x06");
    EXPECT_EQ(Play().Report().lRefused, 2);
    EXPECT_EQ(Play().Report().lFrames, 1);
    EXPECT_THAT(Play().Device().Packets(), ElementsAre("Mhi"));
}

// By script.

TEST_F(DeviceSessionTest, RefusesFramesByTheirNumbers) {
    Begin("at frame 2 nak\nat frame 3 nak 2\n");
    EXPECT_EQ(Play().Frame("M1"), "\x06");
    EXPECT_EQ(Play().Frame("M2"), "\x15");
    EXPECT_EQ(Play().Frame("M2"), "\x06");
    EXPECT_EQ(Play().Frame("M3"), "\x15");
    EXPECT_EQ(Play().Say("\x02M3\x03\x11\x22"), "\x15") << "a wrong one doesn't count";
    EXPECT_EQ(Play().Frame("M3"), "\x15");
    EXPECT_EQ(Play().Frame("M3"), "\x06");
    EXPECT_EQ(Play().Frame("M4"), "\x06");
    EXPECT_THAT(Play().Device().Packets(), ElementsAre("M1", "M2", "M3", "M4"));
    EXPECT_EQ(Play().Report().lRefused, 4);
}

TEST_F(DeviceSessionTest, IsSilentAtFramesByTheirNumbers) {
    Begin("at frame 2 silence\nat frame 2 nak\nat frames 4-5 silence 2\n");
    EXPECT_EQ(Play().Frame("M1"), "\x06");
    EXPECT_EQ(Play().Frame("M2"), "");
    EXPECT_EQ(Play().Frame("M2"), "\x15");
    EXPECT_EQ(Play().Frame("M2"), "\x06");
    EXPECT_EQ(Play().Frame("M3"), "\x06");
    for (const char* strPacket : {"M4", "M5"}) {
        EXPECT_EQ(Play().Frame(strPacket), "");
        EXPECT_EQ(Play().Frame(strPacket), "");
        EXPECT_EQ(Play().Frame(strPacket), "\x06");
    }
    EXPECT_EQ(Play().Report().lUnheard, 5);
    EXPECT_THAT(Play().Device().Packets(), ElementsAre("M1", "M2", "M3", "M4", "M5"));
}

TEST_F(DeviceSessionTest, RefusesTheFramesOfEachSessionAnew) {
    Begin("timeout frame 100\nat frame 1 nak\n");
    EXPECT_EQ(Play().Frame("M1"), "\x15");
    EXPECT_EQ(Play().Frame("M1"), "\x06");
    Play().Pass(100 * kMillisecond);
    Play().Begin();
    EXPECT_EQ(Play().Frame("M1"), "\x15");
    EXPECT_EQ(Play().Frame("M1"), "\x06");
}

TEST_F(DeviceSessionTest, AnswersFramesLateByScript) {
    Begin("at every frame pause 200\n");
    EXPECT_EQ(Play().Frame("M1"), "");
    EXPECT_EQ(Play().Pass(200 * kMillisecond - 1), "");
    EXPECT_EQ(Play().Pass(1), "\x06");
    EXPECT_EQ(Play().Say(kSuccess), "");
    EXPECT_EQ(Play().Pass(200 * kMillisecond), "\x06");
    EXPECT_TRUE(Play().Device().bRebooting());
    EXPECT_EQ(Play().Pass(25'000 * kMillisecond - 1), "");
    EXPECT_TRUE(Play().Device().bRebooting()) << "from the answer on";
    Play().Pass(1);
    EXPECT_FALSE(Play().Device().bRebooting());
}

TEST_F(DeviceSessionTest, AnswersFramesByBytesOfTheScript) {
    Begin("at frame 1 bytes \"?\" FS\nat frame 2 answer \"ok\" ACK\n");
    EXPECT_EQ(Play().Frame("M1"), "?\x1C\x06");
    EXPECT_EQ(Play().Frame("M2"), "ok\x06");
    EXPECT_THAT(Play().Device().Packets(), ElementsAre("M1", "M2"));
}

TEST_F(DeviceSessionTest, ResumesAFileByScript) {
    Begin("resume key.csv 16\nresume \"a b\" 3\n");
    Play().Files() = {{"I/1/key.csv", "0123456789abcdefXYZ"}, {"I/1/a b", "01234"}};
    EXPECT_EQ(Play().Open("key.csv"), "\x02R10\x03");
    EXPECT_EQ(Play().Write(0, "gh"), "\x06");
    EXPECT_EQ(Play().Write(2, "i"), "\x06");
    EXPECT_EQ(Play().Frame("C"), "\x06");
    EXPECT_EQ(Play().Open("a b"), "\x02R3\x03");
    EXPECT_EQ(Play().Write(3, "x"), "\x06");
    EXPECT_EQ(Play().Write(4, "y"), "\x06");
    EXPECT_EQ(Play().Report().received.lOddOffsets, 0) << "from either beginning";
    EXPECT_EQ(Play().Write(9, "z"), "\x06");
    EXPECT_EQ(Play().Report().received.lOddOffsets, 1);
    EXPECT_EQ(Play().Open("KEY.csv"), "\x06") << "another file";
    EXPECT_THAT(Play().Files(), ElementsAre(Pair("I/1/KEY.csv", ""), Pair("I/1/a b", "012xyz"),
                                            Pair("I/1/key.csv", "0123456789abcdefghi")));
}

/// A store that takes nothing from the third operation on.
class FullStore : public sim::MemoryStore {
  public:
    bool Open(const std::string& strPath, std::optional<size_t> nKeep) override {
        return Room() && MemoryStore::Open(strPath, nKeep);
    }
    bool Write(std::string_view strBytes) override {
        return Room() && MemoryStore::Write(strBytes);
    }
    bool Append(const std::string& strPath, std::string_view strBytes) override {
        return Room() && MemoryStore::Append(strPath, strBytes);
    }

  private:
    bool Room() { return ++nOperations_ < 3; }
    int nOperations_ = 0;
};

TEST(DeviceSession, RefusesWhatItCanNotStore) {
    sim::DeviceOptions options;
    const auto store = std::make_shared<FullStore>();
    options.store = store;
    sim::DeviceBehaviour device(std::move(options));
    NotingWire wire;
    device.Connected(wire, 0);
    const auto answer = [&](const std::string& strPayload) {
        device.Received(wire, 0, BuildFrame(strPayload));
        return wire.TakeSends();
    };
    device.Received(wire, 0, "\x05");
    device.Received(wire, 0, "\x06");
    wire.TakeSends();
    const std::string strOpen = sim::OpenPacket('O', "a", 5, {2015, 5, 22, 11, 0, 0});
    EXPECT_THAT(answer(strOpen), ElementsAre("\x06"));
    EXPECT_THAT(answer(sim::WritePacket(0, "1")), ElementsAre("\x06"));
    EXPECT_THAT(answer(sim::WritePacket(1, "2")), ElementsAre("\x15"));
    EXPECT_THAT(answer("LA\x1C"
                       "B"),
                ElementsAre("\x15"));
    EXPECT_THAT(answer(strOpen), ElementsAre("\x15"));
    EXPECT_THAT(answer("C"), ElementsAre("\x06"));
    EXPECT_THAT(store->Files(), ElementsAre(Pair("I/1/a", "1")));
    EXPECT_EQ(device.Reports()[0].lRefused, 3);
    EXPECT_EQ(device.Reports()[0].received.lDataBytes, 1);
    EXPECT_EQ(device.Reports()[0].received.lVariables, 0);
}

} // namespace
} // namespace brennik
