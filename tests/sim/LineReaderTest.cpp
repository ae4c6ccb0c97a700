#include "sim/LineReader.h"

#include "sim/Codec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_view_literals;
using sim::LineReader;
using testing::ElementsAre;
using testing::IsEmpty;
using Result = LineReader::Result;

constexpr std::string_view kHelloFrame = "\x02Mhello\x03\x0C\x49"sv;
constexpr std::string_view kWriteFrame = "\x02W\x00\x03\x00\x00\x04\x00"
                                         "abc\x5F\x5C"sv;
constexpr std::string_view kQueryFrame = "\x02"
                                         "5.8,0,LS,Q,0,0,,,\x03\x5E"sv;

/// All that a reader makes out in some bytes, as texts.
std::vector<std::string> Heard(LineReader& reader, std::string_view strBytes) {
    std::vector<std::string> heard;
    while (!strBytes.empty()) {
        switch (reader.Next(strBytes)) {
        case Result::Nothing:
            EXPECT_TRUE(strBytes.empty());
            break;
        case Result::Control:
            heard.push_back("control " + std::to_string(int{reader.cControl()}));
            break;
        case Result::Frame:
            heard.push_back((reader.bManagement() ? "message " : "frame ") + reader.strPayload());
            break;
        case Result::WrongFrame:
            heard.push_back((reader.bManagement() ? "wrong message " : "wrong frame ") +
                            reader.strPayload());
            break;
        case Result::Other:
            heard.push_back("other " + std::to_string(reader.nOther()));
            break;
        }
    }
    return heard;
}

std::vector<std::string> Heard(std::string_view strBytes) {
    LineReader reader;
    return Heard(reader, strBytes);
}

TEST(LineReader, TellsControlCharactersFramesAndTheRestApart) {
    EXPECT_THAT(Heard("\x05\x06\x15"), ElementsAre("control 5", "control 6", "control 21"));
    EXPECT_THAT(Heard("ab\x03\x16\x05"), ElementsAre("other 4", "control 5"));
    EXPECT_THAT(Heard(kHelloFrame), ElementsAre("frame Mhello"));
    EXPECT_THAT(Heard(kWriteFrame), ElementsAre("frame " + std::string(kWriteFrame.substr(1, 10))));
    EXPECT_THAT(Heard(kQueryFrame), ElementsAre("message 5.8,0,LS,Q,0,0,,,"));
    EXPECT_THAT(Heard("\x02\x03\x00\x0A"sv), ElementsAre("frame "));
}

TEST(LineReader, TakesOneThingAtATimeAndLosesNothingBehindIt) {
    const std::string strAll = "\x06" + std::string(kHelloFrame) + std::string(kQueryFrame) +
                               "\x05" + std::string(kWriteFrame) + "x";
    EXPECT_THAT(Heard(strAll),
                ElementsAre("control 6", "frame Mhello", "message 5.8,0,LS,Q,0,0,,,", "control 5",
                            "frame " + std::string(kWriteFrame.substr(1, 10)), "other 1"));
}

TEST(LineReader, ReadsInAnyCutting) {
    for (const std::string_view strFrame : {kHelloFrame, kWriteFrame, kQueryFrame}) {
        const auto whole = Heard(strFrame);
        ASSERT_EQ(whole.size(), 1U);
        for (size_t nCut = 1; nCut < strFrame.size(); ++nCut) {
            LineReader reader;
            EXPECT_THAT(Heard(reader, strFrame.substr(0, nCut)), IsEmpty()) << nCut;
            EXPECT_TRUE(reader.bInFrame());
            EXPECT_EQ(Heard(reader, strFrame.substr(nCut)), whole) << nCut;
            EXPECT_FALSE(reader.bInFrame());
        }
        LineReader reader;
        for (size_t n = 0; n + 1 < strFrame.size(); ++n) {
            EXPECT_THAT(Heard(reader, strFrame.substr(n, 1)), IsEmpty());
        }
        EXPECT_EQ(Heard(reader, strFrame.substr(strFrame.size() - 1)), whole);
    }
}

TEST(LineReader, TellsWrongChecks) {
    EXPECT_THAT(Heard("\x02Mhello\x03\x0C\x48\x05"),
                ElementsAre("wrong frame Mhello", "control 5"));
    EXPECT_THAT(Heard("\x02Mhello\x03\x0D\x49"), ElementsAre("wrong frame Mhello"));
    EXPECT_THAT(Heard("\x02"
                      "5.8,0,LS,Q,0,0,,,\x03\x5F\x05"),
                ElementsAre("wrong message 5.8,0,LS,Q,0,0,,,", "control 5"));
}

TEST(LineReader, TakesOneByteOfCheckBehindAVersionAndTwoBehindAllElse) {
    const struct {
        std::string_view strPayload;
        bool bManagement;
    } cases[] = {{"5.8,", true},    {"3.9,1", true}, {"12.345,x", true}, {"5.8", false},
                 {"5,8,", false},   {".8,", false},  {"5.,", false},     {"x5.8,", false},
                 {"5.8.1,", false}, {"", false},     {"5", false},       {"5.", false}};
    for (const auto& row : cases) {
        const std::string strPayload(row.strPayload);
        EXPECT_THAT(Heard(row.bManagement ? sim::BuildManagementFrame(strPayload)
                                          : sim::BuildFrame(strPayload)),
                    ElementsAre((row.bManagement ? "message " : "frame ") + strPayload));
    }
}

TEST(LineReader, TakesEveryFrameForAnOrdinaryOneWhenTold) {
    LineReader reader;
    reader.OrdinaryOnly(true);
    EXPECT_THAT(Heard(reader, "\x02"
                              "5.8,\x03\x3A\x7D"),
                ElementsAre("frame 5.8,"));
    reader.OrdinaryOnly(false);
    EXPECT_THAT(Heard(reader, "\x02"
                              "5.8,\x03\x0C"),
                ElementsAre("message 5.8,"));
}

TEST(LineReader, LetsAnEnqBreakAFrameOffWhenTold) {
    LineReader reader;
    EXPECT_THAT(Heard(reader, "\x02Mhe\x05llo\x03\x00\x00"sv),
                ElementsAre("wrong frame Mhe\x05llo"));
    reader.EnqEndsFrame(true);
    EXPECT_THAT(Heard(reader, "\x02Mhe\x05" + std::string(kHelloFrame)),
                ElementsAre("other 4", "control 5", "frame Mhello"));
    EXPECT_THAT(Heard(reader, "\x02\x05"), ElementsAre("other 1", "control 5"));
    EXPECT_THAT(Heard(reader, "\x02Mhe"), IsEmpty());
    EXPECT_THAT(Heard(reader, "\x05"), ElementsAre("other 4", "control 5"));
    EXPECT_THAT(Heard(reader, kWriteFrame.substr(0, 8)), IsEmpty());
    EXPECT_THAT(Heard(reader, "\x05\x05\x05\x00\x00"sv),
                ElementsAre("wrong frame W\0\3\0\0\4\0\5\5\5"sv))
        << "data may hold any byte";
    // The check of the first one happens to be ENQ.
    EXPECT_THAT(Heard(reader, sim::BuildManagementFrame("1.1,\x04") + "\x05"),
                ElementsAre("message 1.1,\x04", "control 5"));
}

TEST(LineReader, BoundsWhatItKeeps) {
    LineReader reader;
    const std::string strLong = "\x02" + std::string(128 * 1024 - 1, 'x');
    EXPECT_THAT(Heard(reader, strLong), IsEmpty());
    EXPECT_THAT(Heard(reader, "x"), ElementsAre("other 131073"));
    EXPECT_FALSE(reader.bInFrame());
    EXPECT_THAT(Heard(reader, strLong + "xyz" + std::string(kHelloFrame)),
                ElementsAre("other 131074", "other 1", "frame Mhello"));
    EXPECT_THAT(Heard(reader, "\x02M" + std::string(128 * 1024 - 3, 'x') + "\x03\x01\x02"),
                ElementsAre(testing::StartsWith("wrong frame Mxxx")));
}

TEST(LineReader, ForgetsAFrameThatHasBegun) {
    LineReader reader;
    EXPECT_THAT(Heard(reader, kWriteFrame.substr(0, 9)), IsEmpty());
    reader.Drop();
    EXPECT_FALSE(reader.bInFrame());
    EXPECT_THAT(Heard(reader, kHelloFrame), ElementsAre("frame Mhello"));
}

} // namespace
} // namespace brennik
