#include "sim/Codec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_view_literals;
using sim::BuildFrame;
using sim::FrameReader;
using testing::ElementsAre;
using Result = FrameReader::Result;

constexpr std::string_view kHelloFrame = "\x02Mhello\x03\x0C\x49"sv;
constexpr std::string_view kWriteFrame = "\x02W\x00\x03\x00\x00\x04\x00"
                                         "abc\x5F\x5C"sv;

TEST(Codec, FramesAPlainPayloadWithEtxAndCheck) {
    EXPECT_EQ(BuildFrame("Mhello"), kHelloFrame);
    EXPECT_EQ(BuildFrame("S"), "\x02S\x03\x6A\x0F"sv);
    EXPECT_EQ(BuildFrame("LA\x1C"
                         "B"),
              "\x02LA\x1C"
              "B\x03\x05\x81"sv);
}

TEST(Codec, FramesAnEmptyPayload) {
    EXPECT_EQ(BuildFrame(""), "\x02\x03\x00\x0A"sv);
}

TEST(Codec, FramesWriteDataWithoutEtx) {
    EXPECT_EQ(BuildFrame(sim::WritePacket(1024, "abc")), kWriteFrame);
    EXPECT_EQ(BuildFrame(sim::WritePacket(0, "")), "\x02W\x00\x00\x00\x00\x00\x00\xD2\x73"sv);
}

TEST(Codec, TheSmallLetterOfWriteDataGetsAPlainFrame) {
    EXPECT_EQ(BuildFrame("wx").substr(0, 4), "\x02wx\x03");
}

TEST(Codec, BuildsWriteFramesInPlace) {
    std::string strFrame(100, '#');
    char* data = sim::StartWriteFrame(strFrame, 1024, 3);
    std::string_view("abc").copy(data, 3);
    sim::FinishWriteFrame(strFrame);
    EXPECT_EQ(strFrame, kWriteFrame);
}

TEST(Codec, CountsTheLongestBlockInTwoBytes) {
    const std::string strPacket = sim::WritePacket(0x01020304, std::string(65535, 'x'));
    EXPECT_EQ(strPacket.substr(0, 8), "W\xFF\xFF\x01\x02\x03\x04x"sv);
    EXPECT_EQ(strPacket.size(), 65542U);
    std::string strFrame;
    std::string(65535, 'x').copy(sim::StartWriteFrame(strFrame, 0x01020304, 65535), 65535);
    sim::FinishWriteFrame(strFrame);
    EXPECT_EQ(strFrame, BuildFrame(strPacket));
}

TEST(Codec, StatesOffsetsBeyond31Bits) {
    std::string strFrame;
    static_cast<void>(sim::StartWriteFrame(strFrame, 0x9C3E63C1, 256)); // the head alone counts
    EXPECT_EQ(strFrame.substr(0, 8), "\x02W\x01\x00\x9C\x3E\x63\xC1"sv);
    EXPECT_EQ(sim::WritePacket(0x9C3E63C1, "").substr(3), "\x9C\x3E\x63\xC1"sv);
}

TEST(Codec, BuildsEachPacket) {
    const DateTime date{2015, 5, 22, 11, 0, 9};
    EXPECT_EQ(sim::OpenPacket('O', "A.TXT", 2748, date),
              "OD00000ABC0000000020150522110009XXXXXXXXA.TXT");
    EXPECT_EQ(sim::OpenPacket('A', "b", 4294967295, date, true),
              "ACFFFFFFFF0000000020150522110009XXXXXXXXb");
    EXPECT_EQ(sim::ClosePacket(), "C");
    EXPECT_EQ(sim::VariablePacket("A=B=C"), "LA\x1C"
                                            "B=C");
    EXPECT_EQ(sim::VariablePacket("plain"), "Lplain");
    EXPECT_EQ(sim::MessagePacket("hello"), "Mhello");
    EXPECT_EQ(sim::PasswordPacket("1234"), "P1234");
    EXPECT_EQ(sim::TimePacket({2024, 1, 2, 3, 4, 5}), "T20240102030405");
    EXPECT_EQ(sim::SuccessPacket(), "S");
    EXPECT_EQ(sim::FailurePacket(), "U");
    EXPECT_EQ(sim::DirectoryPacket("abc"), "D\x03"
                                           "abc");
}

TEST(FrameReader, ReadsAPlainFrame) {
    FrameReader reader;
    EXPECT_EQ(reader.Add(kHelloFrame), Result::Good);
    EXPECT_EQ(reader.strPayload(), "Mhello");
}

TEST(FrameReader, ReadsAWriteFrameThatHoldsEveryByte) {
    std::string strData;
    for (int byte = 0; byte < 256; ++byte) {
        strData.push_back(static_cast<char>(byte));
    }
    FrameReader reader;
    EXPECT_EQ(reader.Add(BuildFrame(sim::WritePacket(7, strData))), Result::Good);
    EXPECT_EQ(reader.strPayload(), std::string("W\x01\x00\x00\x00\x00\x07"sv) + strData);
}

TEST(FrameReader, ReadsFramesInAnyCutting) {
    for (const std::string_view strFrame : {kHelloFrame, kWriteFrame}) {
        for (size_t nCut = 1; nCut < strFrame.size(); ++nCut) {
            FrameReader reader;
            EXPECT_EQ(reader.Add(strFrame.substr(0, nCut)), Result::Incomplete) << nCut;
            EXPECT_EQ(reader.Add(strFrame.substr(nCut)), Result::Good) << nCut;
        }
    }
}

TEST(FrameReader, ReadsByteByByte) {
    FrameReader reader;
    for (size_t n = 0; n + 1 < kHelloFrame.size(); ++n) {
        EXPECT_EQ(reader.Add(kHelloFrame.substr(n, 1)), Result::Incomplete);
    }
    EXPECT_EQ(reader.Add(kHelloFrame.substr(kHelloFrame.size() - 1)), Result::Good);
}

TEST(FrameReader, DropsNoiseAheadOfTheStart) {
    FrameReader reader;
    EXPECT_EQ(reader.Add("\x03\x06junk"), Result::Incomplete);
    EXPECT_EQ(reader.Add("more" + std::string(kHelloFrame)), Result::Good);
    EXPECT_EQ(reader.strPayload(), "Mhello");
}

TEST(FrameReader, TellsAWrongCheckAndBeginsAnew) {
    FrameReader reader;
    EXPECT_EQ(reader.Add("\x02Mhello\x03\x0C\x48"), Result::WrongCheck);
    EXPECT_EQ(reader.Add("\x02Mhello\x03\x0D\x49"), Result::WrongCheck);
    EXPECT_EQ(reader.Add(kHelloFrame), Result::Good);
}

TEST(FrameReader, ReadsAnEmptyPayload) {
    FrameReader reader;
    EXPECT_EQ(reader.Add("\x02\x03\x00\x0A"sv), Result::Good);
    EXPECT_EQ(reader.strPayload(), "");
}

TEST(FrameReader, BoundsWhatItKeeps) {
    FrameReader reader;
    const std::string strJunk = "\x02" + std::string(300'000, 'x');
    for (int n = 0; n < 10; ++n) {
        EXPECT_EQ(reader.Add(strJunk), Result::Incomplete);
    }
    EXPECT_EQ(reader.Add("\x03\x01\x02"), Result::Incomplete)
        << "what lies beyond the bound is dropped, its end included";
}

TEST(Codec, FramesManagementMessagesWithOneByteOfCheck) {
    EXPECT_EQ(sim::BuildManagementFrame("5.8,0,LS,Q,0,0,,,"), "\x02"
                                                              "5.8,0,LS,Q,0,0,,,\x03\x5E");
    EXPECT_EQ(sim::BuildManagementFrame(""), "\x02\x03\x03");
    EXPECT_EQ(sim::BuildManagementFrame("\x03"), "\x02\x03\x03\x00"sv);
    EXPECT_EQ(sim::LongitudinalCheck("\x80\xFF\x01"), '\x7E');
    EXPECT_EQ(sim::LongitudinalCheck(""), '\0');
}

TEST(Codec, KnowsTheFormOfManagementMessages) {
    for (const char* strPayload : {"5.8,0,LS", "3.9,", "12.345,x", "0.0,"}) {
        EXPECT_TRUE(sim::HasManagementForm(strPayload)) << strPayload;
    }
    for (const char* strPayload :
         {"", "5", "5.", "5.8", "5,8,", ".8,", "5.,", " 5.8,", "5.8 ,", "5.8.1,", "VFI,5.8,"}) {
        EXPECT_FALSE(sim::HasManagementForm(strPayload)) << strPayload;
    }
}

TEST(Codec, BuildsResumeReplies) {
    EXPECT_EQ(sim::ResumeReply(16), "\x02R10\x03");
    EXPECT_EQ(sim::ResumeReply(0), "\x02R0\x03");
    EXPECT_EQ(sim::ResumeReply(0xFFFFFFFF), "\x02RFFFFFFFF\x03");
}

TEST(Codec, ReadsOpenPackets) {
    const std::string strFields = "D00000ABC0000000020150522110009XXXXXXXX";
    EXPECT_EQ(sim::ReadOpenPacket("O" + strFields + "A.TXT")->strName, "A.TXT");
    EXPECT_FALSE(sim::ReadOpenPacket("O" + strFields)->bAppend);
    EXPECT_TRUE(sim::ReadOpenPacket("A" + strFields + "x")->bAppend);
    EXPECT_TRUE(sim::ReadOpenPacket("a" + strFields)->bAppend);
    EXPECT_EQ(sim::ReadOpenPacket("O" + strFields)->strName, "");
    EXPECT_FALSE(sim::ReadOpenPacket(strFields));
}

TEST(Codec, ReadsWriteOffsetsAndVariables) {
    EXPECT_EQ(sim::ReadWriteOffset("W\x00\x00\x9C\x3E\x63\xC1x"sv), 0x9C3E63C1U);
    EXPECT_EQ(sim::ReadVariablePacket("LA\x1C"
                                      "B\x1C"
                                      "C"),
              "A=B=C");
    EXPECT_EQ(sim::ReadVariablePacket("L"), "");
}

TEST(Codec, JoinsRecordsSoThatTheySplitAgain) {
    EXPECT_EQ(sim::JoinRecord({"VFI", "", " P "}), "VFI,, P ");
    EXPECT_EQ(sim::JoinRecord({"a,b", "\"c", "d\"e", "f\",g"}), R"("a,b","""c",d"e,"f"",g")");
    EXPECT_EQ(sim::JoinRecord({""}), "");
    EXPECT_EQ(sim::JoinRecord({}), "");
    const std::vector<std::string> fields = {"a,b", "\"c", "", "d\"e", "\""};
    EXPECT_EQ(sim::SplitRecord(sim::JoinRecord(fields)), fields);
}

TEST(Codec, SplitsRecords) {
    EXPECT_THAT(sim::SplitRecord("VFI,P,XDL"), ElementsAre("VFI", "P", "XDL"));
    EXPECT_THAT(sim::SplitRecord(""), ElementsAre(""));
    EXPECT_THAT(sim::SplitRecord(","), ElementsAre("", ""));
    EXPECT_THAT(sim::SplitRecord(R"(a,"b,c",d)"), ElementsAre("a", "b,c", "d"));
    EXPECT_THAT(sim::SplitRecord(R"("say ""hi""",x)"), ElementsAre(R"(say "hi")", "x"));
    EXPECT_THAT(sim::SplitRecord(R"(a"b,c)"), ElementsAre(R"(a"b)", "c"));
    EXPECT_THAT(sim::SplitRecord(R"(a,"open)"), ElementsAre("a", "open"));
}

} // namespace
} // namespace brennik
