// Plays every worked example of docs/wire-format.md against the code, so that the two can't part
// ways: numbers and block checks by their functions, frames and answers by TIsoProtocol over a
// channel that holds a conversation, packets by TBrennikPacket, and the session by the engine.
#include "config/TBrennikClientConfig.h"
#include "link/TChecksum.h"
#include "link/TCommsChannel.h"
#include "link/TIsoProtocol.h"
#include "platform/Host.h"
#include "session/TBrennikPacket.h"
#include "session/TBrennikProtocol.h"
#include "support/OstrandString.h"
#include "support/TFLClientLog.h"
#include "support/WireNumbers.h"
#include "tests/lint/SourceTree.h"
#include "tests/lint/WireExamples.h"
#include "tests/world/SimHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using lint::ToNumber;
using Example = lint::WireExample;
using Turn = lint::WireTurn;

/// A channel whose far end says its turns and expects those of the client between them.
class ConversationChannel : public TCommsChannel {
  public:
    explicit ConversationChannel(std::vector<Turn> turns) : turns_(std::move(turns)) {}

    bool IsOver() const { return nTurn_ == turns_.size(); }

    int32_t Connect(TConnectionInfo&, TFLClientLog&) override { return 0; }
    int32_t Disconnect() override { return 0; }

    int32_t WriteData(std::string_view strData) override {
        const bool bExpected = !IsOver() && turns_[nTurn_].bClient;
        EXPECT_TRUE(bExpected) << "sent out of turn";
        if (bExpected) {
            EXPECT_EQ(strData, turns_[nTurn_++].strBytes);
        }
        return 0;
    }

    int32_t ReadData(std::string& strData) override { return Deliver(strData, std::string::npos); }
    int32_t ReadCharacter(std::string& strData) override { return Deliver(strData, 1); }

    int32_t lErrorCode() const override { return 0; }
    const std::string& strErrorMessage() const override { return strNone_; }
    const std::string& strConnectionData() const override { return strNone_; }

  private:
    int32_t Deliver(std::string& strData, size_t nMost) {
        strData.clear();
        if (IsOver() || turns_[nTurn_].bClient) {
            CurrentHost().clock.Sleep(10);
            return 0;
        }
        std::string& strBytes = turns_[nTurn_].strBytes;
        strData = strBytes.substr(0, nMost);
        strBytes.erase(0, nMost);
        if (strBytes.empty()) {
            ++nTurn_;
        }
        return 0;
    }

    std::vector<Turn> turns_;
    size_t nTurn_ = 0;
    std::string strNone_;
};

/// A link over a channel that holds a conversation.
struct LinkUnderTest {
    explicit LinkUnderTest(std::vector<Turn> turns, int32_t lChecksumType = 2)
        : channel(std::move(turns)) {
        log.InitialiseLogging("", "", false, false, false);
        EXPECT_EQ(link.InitialiseObject(channel, log, lChecksumType, 5, 5, 5, 2, 1, 3, false, true),
                  0);
    }

    ConversationChannel channel;
    TFLClientLog log;
    TIsoProtocol link;
};

/// The payload goes out as the frame, and the frame comes in as the payload.
void CheckFrame(const std::string& strPayload, const std::string& strFrame,
                int32_t lChecksumType = 2) {
    LinkUnderTest sender({{true, strFrame}, {false, "\x06"}}, lChecksumType);
    EXPECT_EQ(sender.link.SendPacket(strPayload), 0);
    EXPECT_TRUE(sender.channel.IsOver());

    LinkUnderTest reader({{false, strFrame}, {true, "\x06"}}, lChecksumType);
    std::string strRead;
    EXPECT_EQ(reader.link.ReadPacket(strRead, ""), 0);
    EXPECT_EQ(strRead, strPayload);
    EXPECT_TRUE(reader.channel.IsOver());
}

void CheckFrameExample(const Example& example, int32_t lChecksumType) {
    CheckFrame(example.Bytes("payload"), example.Bytes("frame"), lChecksumType);
}

void CheckWriteDataFrame(const Example& example) {
    CheckFrameExample(example, 2);
    // It is built alike in every setting, and refused in the others.
    for (const int32_t lChecksumType : {0, 1}) {
        LinkUnderTest sender({{true, example.Bytes("frame")}, {false, "\x06"}}, lChecksumType);
        EXPECT_EQ(sender.link.SendPacket(example.Bytes("payload")), 0);
        LinkUnderTest reader({{false, example.Bytes("frame")}, {true, "\x15"}}, lChecksumType);
        std::string strRead;
        EXPECT_EQ(reader.link.ReadPacket(strRead, ""), 1);
        EXPECT_TRUE(reader.channel.IsOver());
    }
}

void CheckConversation(const Example& example) {
    LinkUnderTest under(lint::WireTurnsOf(example));
    std::string strPayload;
    int32_t lResult = -1;
    ASSERT_EQ(example.All("call").size(), 1u);
    const std::string strCall = example.All("call").front();
    const std::string strName = strCall.substr(0, strCall.find(' '));
    if (strName == "WaitForEnq") {
        lResult = under.link.WaitForEnq();
    } else if (strName == "SendPacket") {
        lResult = under.link.SendPacket(example.NamedValue("call", strName));
    } else if (strName == "ReadPacket") {
        lResult = under.link.ReadPacket(strPayload, "");
    }
    EXPECT_THAT(example.All("result"), ElementsAre(std::to_string(lResult)));
    EXPECT_TRUE(under.channel.IsOver());
    for (const auto& [strGiven, strValue] : example.Values("gives")) {
        EXPECT_EQ(strValue, strGiven == "payload"      ? strPayload
                            : strGiven == "lErrorCode" ? std::to_string(under.link.lErrorCode())
                            : strGiven == "strErrorMessage" ? under.link.strErrorMessage()
                                                            : "not known: " + strGiven);
    }
}

/// A first turn that is refused, and a third one that differs from it in its last byte alone.
void CheckWrongCheck(const Example& example) {
    CheckConversation(example);
    std::vector<Turn> turns = lint::WireTurnsOf(example);
    ASSERT_EQ(turns.size(), 4u);
    EXPECT_NE(turns[0].strBytes, turns[2].strBytes);
    turns[0].strBytes.back() = turns[2].strBytes.back();
    EXPECT_EQ(turns[0].strBytes, turns[2].strBytes);
}

/// A frame that fails for its one byte too many: without that byte it is good.
void CheckByteBehind(const Example& example) {
    CheckConversation(example);
    std::vector<Turn> turns = lint::WireTurnsOf(example);
    ASSERT_EQ(turns.size(), 1u);
    turns[0].strBytes.pop_back();
    turns.push_back({true, "\x06"});
    LinkUnderTest under(turns);
    std::string strPayload;
    EXPECT_EQ(under.link.ReadPacket(strPayload, ""), 0);
    EXPECT_TRUE(under.channel.IsOver());
}

/// What was broken out of a packet, by the name of its property.
std::map<std::string, std::string> PropertiesOf(const TBrennikPacket& packet) {
    return {{"lFileType", std::to_string(packet.lFileType())},
            {"lFileSize", std::to_string(packet.lFileSize())},
            {"lFileChecksum", std::to_string(packet.lFileChecksum())},
            {"iYear", std::to_string(packet.iYear())},
            {"iMonth", std::to_string(packet.iMonth())},
            {"iDay", std::to_string(packet.iDay())},
            {"iHour", std::to_string(packet.iHour())},
            {"iMinute", std::to_string(packet.iMinute())},
            {"iSecond", std::to_string(packet.iSecond())},
            {"strFilename", packet.strFilename()},
            {"lDataSize", std::to_string(packet.lDataSize())},
            {"lDataOffset", std::to_string(packet.lDataOffset())},
            {"strData", packet.strData()}};
}

using Builder = std::function<int32_t(const Example&, TBrennikPacket&, std::string&)>;

/// A packet of the far end: its kind, its fields, its frame, and its building where the code
/// builds it too.
void CheckPacket(const Example& example, BrennikPacketType type, const Builder& build = {}) {
    const std::string strPacket = example.Bytes("packet");
    TBrennikPacket packet;
    EXPECT_EQ(packet.GetPacketType(strPacket), type);
    EXPECT_EQ(packet.BreakOutPacket(strPacket), 0) << packet.strErrorMessage();
    const auto properties = PropertiesOf(packet);
    for (const auto& [strName, strValue] : example.Values("gives")) {
        const auto found = properties.find(strName);
        ASSERT_NE(found, properties.end()) << "not known: " << strName;
        EXPECT_EQ(found->second, strValue) << strName;
    }
    CheckFrame(strPacket, example.Bytes("frame"));
    if (build) {
        std::string strBuilt;
        EXPECT_EQ(build(example, packet, strBuilt), 0) << packet.strErrorMessage();
        EXPECT_EQ(strBuilt, strPacket);
    }
}

int32_t BuildOpenFile(const Example& example, TBrennikPacket& packet, std::string& strPacket) {
    return packet.BuildOpenFilePacket(strPacket, example.NamedValue("gives", "strFilename"),
                                      example.NamedValue("gives", "lFileType") == "0",
                                      ToNumber(example.NamedValue("gives", "lFileSize")), true);
}

int32_t BuildAppendFile(const Example& example, TBrennikPacket& packet, std::string& strPacket) {
    const int32_t lResult = BuildOpenFile(example, packet, strPacket);
    strPacket.replace(0, 1, "A"); // the one difference
    return lResult;
}

int32_t BuildWriteData(const Example& example, TBrennikPacket& packet, std::string& strPacket) {
    return packet.BuildWriteDataToFilePacket(strPacket, example.NamedValue("gives", "strData"),
                                             ToNumber(example.NamedValue("gives", "lDataOffset")));
}

int32_t BuildWriteDataB(const Example& example, TBrennikPacket& packet, std::string& strPacket) {
    const int32_t lResult = BuildWriteData(example, packet, strPacket);
    strPacket.replace(0, 1, "B"); // the one difference
    return lResult;
}

int32_t BuildConfigVariable(const Example& example, TBrennikPacket& packet,
                            std::string& strPacket) {
    return packet.BuildConfigSysPacket(strPacket, example.NamedValue("gives", "strData"));
}

int32_t BuildSetDirectory(const Example& example, TBrennikPacket& packet, std::string& strPacket) {
    return packet.BuildSetDirectoryPacket(strPacket, example.NamedValue("with", "strFolder"));
}

int32_t BuildCloseFile(const Example&, TBrennikPacket& packet, std::string& strPacket) {
    return packet.BuildCloseFilePacket(strPacket);
}

int32_t BuildSuccess(const Example&, TBrennikPacket& packet, std::string& strPacket) {
    return packet.BuildSessionSuccessfulPacket(strPacket);
}

void CheckDownloadRequest(const Example& example) {
    const auto with = [&](const char* strName) { return example.NamedValue("with", strName); };
    TBrennikPacket packet;
    std::string strPacket;
    ASSERT_EQ(packet.BuildDownloadRequestPacket(
                  with("strPlatformName"), with("bFullDownload") == "1", with("strApplicationID"),
                  with("strTerminalId"), with("strEpromID"), ToNumber(with("lBlockSize")),
                  with("strPTid"), ToNumber(with("lMemorySize")), with("strConfigTitle"),
                  with("strReleaseTitle"), with("bOstrandBrennikService") == "1", strPacket),
              0);
    EXPECT_EQ(strPacket, example.Bytes("packet"));
    CheckFrame(strPacket, example.Bytes("frame"));
}

void CheckNumber(const Example& example, int32_t lRead) {
    EXPECT_EQ(example.NamedValue("gives", "value"), std::to_string(lRead));
}

void CheckBlockCheck(const Example& example, const std::string& strCheck) {
    EXPECT_EQ(strCheck, example.Bytes("check"));
}

void CheckSession(const Example& example);

using Check = std::function<void(const Example&)>;

Check PacketCheck(BrennikPacketType type, const Builder& build = {}) {
    return [type, build](const Example& example) { CheckPacket(example, type, build); };
}

Check FrameCheck(int32_t lChecksumType) {
    return [lChecksumType](const Example& example) { CheckFrameExample(example, lChecksumType); };
}

/// Every kind of example with what shows that it is right.
const std::map<std::string, Check>& Kinds() {
    using Type = BrennikPacketType;
    static const std::map<std::string, Check> kinds = {
        {"decimal-number",
         [](const Example& e) { CheckNumber(e, OstrandString::StrToLong(e.Bytes("bytes"))); }},
        {"hexadecimal-number",
         [](const Example& e) { CheckNumber(e, HexStringToLong(e.Bytes("bytes"))); }},
        {"binary-number",
         [](const Example& e) { CheckNumber(e, BinaryStringToLong(e.Bytes("bytes"))); }},
        {"crc16",
         [](const Example& e) {
             CheckBlockCheck(e, TChecksum().GenerateCRC16(e.Bytes("data"), 0));
         }},
        {"crc16-low-byte-first",
         [](const Example& e) {
             CheckBlockCheck(e, TChecksum().GenerateCRC16(e.Bytes("data"), 1));
         }},
        {"lrc",
         [](const Example& e) { CheckBlockCheck(e, TChecksum().GenerateLRC(e.Bytes("data"))); }},
        {"plain-frame", FrameCheck(2)},
        {"plain-frame-crc-low-byte-first", FrameCheck(1)},
        {"plain-frame-lrc", FrameCheck(0)},
        {"write-data-frame", CheckWriteDataFrame},
        {"enquiry", CheckConversation},
        {"send-accepted", CheckConversation},
        {"send-refused-once", CheckConversation},
        {"read-accepted", CheckConversation},
        {"read-wrong-check", CheckWrongCheck},
        {"read-noise-ahead", CheckConversation},
        {"read-byte-behind", CheckByteBehind},
        {"download-request", CheckDownloadRequest},
        {"download-request-serial", CheckDownloadRequest},
        {"open-file", PacketCheck(Type::OpenFile, BuildOpenFile)},
        {"append-file", PacketCheck(Type::AppendFile, BuildAppendFile)},
        {"setdrive", PacketCheck(Type::OpenFile, BuildOpenFile)},
        {"setgroup", PacketCheck(Type::OpenFile, BuildOpenFile)},
        {"write-data", PacketCheck(Type::WriteData, BuildWriteData)},
        {"write-data-b", PacketCheck(Type::WriteData, BuildWriteDataB)},
        {"close-file", PacketCheck(Type::CloseFile, BuildCloseFile)},
        {"config-variable", PacketCheck(Type::ConfigVariable, BuildConfigVariable)},
        {"message", PacketCheck(Type::Message)},
        {"set-password", PacketCheck(Type::SetPassword)},
        {"set-time", PacketCheck(Type::SetTime)},
        {"session-successful", PacketCheck(Type::SessionSuccessful, BuildSuccess)},
        {"session-unsuccessful", PacketCheck(Type::SessionUnsuccessful)},
        {"set-directory", PacketCheck(Type::SetDirectory, BuildSetDirectory)},
        {"resume-reply",
         [](const Example& e) {
             EXPECT_EQ(e.NamedValue("gives", "position"),
                       std::to_string(TBrennikPacket().ExtractResumePosition(e.Bytes("bytes"))));
         }},
        {"session", CheckSession},
    };
    return kinds;
}

const std::vector<Example>& Document() {
    static const std::vector<Example> examples =
        lint::WireExamplesOf(lint::ReadTextFile(BRENNIK_SOURCE_DIR, "docs/wire-format.md"));
    return examples;
}

/// Plays the service of a session: says its next turn when the client has said its own.
class SessionPeer {
  public:
    SessionPeer(world::ScriptedPeer& peer, std::vector<Turn> turns)
        : peer_(peer), turns_(std::move(turns)) {
        peer_.OnConnect = [this] { SayTurns(); };
        peer_.OnBytes = [this](std::string_view strBytes) {
            strHeard_ += strBytes;
            if (nTurn_ < turns_.size() && strHeard_ == turns_[nTurn_].strBytes) {
                strHeard_.clear();
                ++nTurn_;
                SayTurns();
            }
        };
    }

    bool IsOver() const { return nTurn_ == turns_.size() && strHeard_.empty(); }

  private:
    void SayTurns() {
        while (nTurn_ < turns_.size() && !turns_[nTurn_].bClient) {
            peer_.Push(turns_[nTurn_++].strBytes);
        }
    }

    world::ScriptedPeer& peer_;
    std::vector<Turn> turns_;
    size_t nTurn_ = 0;
    std::string strHeard_;
};

void CheckSession(const Example& example) {
    world::SimHost host;
    const ScopedHost scoped(host.TheHost());
    std::string strIni = "[PROFILE_1]\r\n";
    for (const std::string& strLine : example.All("profile")) {
        strIni += strLine + "\r\n";
    }
    host.files.Put("/conf/BrennikClient.ini", strIni);
    TBrennikClientConfig config;
    ASSERT_EQ(config.GetConfiguration("/conf", 1), 0);
    const std::string strFolder = config.strWorkingFolder();
    host.files.MakeFolder(strFolder);
    host.files.MakeFolder(config.strLogFilePath());

    SessionPeer peer(host.network.AddPeer(config.strServerIPAddress1(),
                                          static_cast<uint16_t>(config.lServerPort1())),
                     lint::WireTurnsOf(example));
    TBrennikProtocol engine;
    const int32_t lResult = engine.DoBrennikProtocol(config, "/conf", 1);
    EXPECT_THAT(example.All("result"), ElementsAre(std::to_string(lResult)))
        << engine.strErrorMessage();
    host.RunFor(1000000); // the last bytes are still under way
    EXPECT_TRUE(peer.IsOver());

    for (const auto& [strName, strContent] : example.Values("file")) {
        EXPECT_EQ(host.files.Get(strFolder + "\\" + strName), strContent) << strName;
    }
    const std::vector<std::string> strTree = host.files.Tree(strFolder);
    const auto nFiles = std::ranges::count_if(
        strTree, [](const std::string& strPath) { return !strPath.ends_with('/'); });
    EXPECT_EQ(static_cast<size_t>(nFiles), example.Values("file").size());
}

class WireFormatDocument : public world::WorldTest {};

TEST_F(WireFormatDocument, HasOneExampleOfEveryKindAndNoOther) {
    std::vector<std::string> strNames;
    for (const Example& example : Document()) {
        strNames.push_back(example.strName);
    }
    std::ranges::sort(strNames);
    std::vector<std::string> strExpected;
    for (const auto& [strName, check] : Kinds()) {
        strExpected.push_back(strName);
    }
    EXPECT_EQ(strNames, strExpected);
}

TEST_F(WireFormatDocument, HasAnExampleOfEveryPacketThatIsAccepted) {
    std::set<BrennikPacketType> types;
    for (const Example& example : Document()) {
        if (!example.All("packet").empty()) {
            types.insert(TBrennikPacket().GetPacketType(example.Bytes("packet")));
        }
    }
    for (int nByte = 0; nByte < 256; ++nByte) {
        const std::string strPacket(64, static_cast<char>(nByte));
        TBrennikPacket packet;
        if (packet.BreakOutPacket(strPacket) == 0) {
            EXPECT_TRUE(types.contains(packet.GetPacketType(strPacket))) << nByte;
        }
    }
}

TEST_F(WireFormatDocument, SaysWhatTheCodeDoes) {
    ASSERT_FALSE(Document().empty());
    for (const Example& example : Document()) {
        SCOPED_TRACE(example.strName);
        const auto kind = Kinds().find(example.strName);
        if (kind != Kinds().end()) {
            kind->second(example);
        }
    }
}

TEST_F(WireFormatDocument, UsesOnlyKeysThatMeanSomething) {
    const std::set<std::string> keys = {"packet", "frame",  "payload", "data",   "check",
                                        "bytes",  "call",   "with",    "gives",  "service",
                                        "file",   "client", "result",  "profile"};
    for (const Example& example : Document()) {
        for (const lint::WireLine& line : example.lines) {
            EXPECT_TRUE(keys.contains(line.strKey)) << example.strName << ": " << line.strKey;
        }
    }
}

// The reader of the examples itself: a wrong byte in one of them is noticed.
TEST_F(WireFormatDocument, IsReadBlockByBlock) {
    const auto examples =
        lint::WireExamplesOf("text\n```wire a\nframe   02 4F | x\nframe   FF\n```\n"
                             "```text\nframe 01\n```\n```wire b\ngives x \"\\\"\\r\"\n```");
    ASSERT_EQ(examples.size(), 2u);
    EXPECT_EQ(examples[0].Bytes("frame"), "\x02O\xFF");
    EXPECT_EQ(examples[1].NamedValue("gives", "x"), "\"\r");
    EXPECT_THAT(examples[1].All("frame"), IsEmpty());
}

TEST_F(WireFormatDocument, ShowsADifferentByteAsAFailure) {
    Example wrong{"plain-frame", {{"payload", "53"}, {"frame", "02 53 03 6A 0E"}}};
    ::testing::TestPartResultArray failures;
    {
        ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &failures);
        CheckFrameExample(wrong, 2);
    }
    EXPECT_GT(failures.size(), 0);
}

} // namespace
} // namespace brennik
