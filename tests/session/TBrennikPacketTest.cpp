#include "session/TBrennikPacket.h"

#include "platform/RuntimeFailure.h"
#include "tests/world/AllocationLimit.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using Type = BrennikPacketType;

class TBrennikPacketTest : public world::WorldTest {
  protected:
    std::string Request(bool bService, bool bFull = true, const std::string& strTerminal = "T1") {
        std::string strRequest = "left over";
        EXPECT_EQ(packet.BuildDownloadRequestPacket("VX520", bFull, "APP", strTerminal, "EPROM",
                                                    1024, "PT1", 4096, "CONFIG", "RELEASE",
                                                    bService, strRequest),
                  0);
        return strRequest;
    }

    // A refusal of a short packet: number and text change places on the way, and the conversion
    // of the text is what callers see.
    void ExpectRefusedLength(std::string_view strPacket, const std::string& strOperation) {
        EXPECT_EQ(packet.BreakOutPacket(strPacket), 1);
        EXPECT_EQ(packet.strErrorMessage(),
                  "TBrennikPacket." + strOperation + "() Failed - Type mismatch");
        EXPECT_EQ(packet.lErrorCode(), 1000000);
    }

    void ExpectNoDate() const {
        EXPECT_EQ(packet.iYear(), 0);
        EXPECT_EQ(packet.iMonth(), 0);
        EXPECT_EQ(packet.iDay(), 0);
        EXPECT_EQ(packet.iHour(), 0);
        EXPECT_EQ(packet.iMinute(), 0);
        EXPECT_EQ(packet.iSecond(), 0);
    }

    // A failure for want of memory, under the name of the operation.
    void ExpectNoMemory(const std::string& strOperation) const {
        EXPECT_EQ(packet.strErrorMessage(),
                  "TBrennikPacket." + strOperation + "() Failed - Out of memory");
        EXPECT_EQ(packet.lErrorCode(), 1000000);
    }

    TBrennikPacket packet;
};

// 40 bytes of header: size 00000ABC, checksum 0000000F, 14 Nov 2026, 23:46:32, reserved bytes.
const std::string kOpenHeader = "OC00000ABC0000000F20261114234632XXXXXXXX";

TEST_F(TBrennikPacketTest, BuildsTheRequestOfAServiceClientWithTwelveFields) {
    EXPECT_EQ(Request(true), "VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1,RELEASE,CONFIG");
}

TEST_F(TBrennikPacketTest, BuildsTheRequestOfADeviceClientWithoutTitles) {
    EXPECT_EQ(Request(false), "VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1");
}

TEST_F(TBrennikPacketTest, AsksForAPartialDownloadWithP) {
    EXPECT_EQ(Request(true, false), "VFI,VX520,XDL,P,APP,T1,EPROM,1024,4096,PT1,RELEASE,CONFIG");
}

TEST_F(TBrennikPacketTest, QuotesAndTrimsRequestFieldsAsARecordDoes) {
    EXPECT_EQ(Request(false, true, "A,\"B"), "VFI,VX520,XDL,F,APP,\"A,\"\"B\",EPROM,1024,4096,PT1");
    EXPECT_EQ(Request(false, true, "  T2 "), "VFI,VX520,XDL,F,APP,T2,EPROM,1024,4096,PT1");
}

TEST_F(TBrennikPacketTest, WritesNegativeNumbersOfTheRequestAsDecimalText) {
    std::string strRequest;
    ASSERT_EQ(packet.BuildDownloadRequestPacket("", true, "", "", "", -1, "", 0, "", "", false,
                                                strRequest),
              0);
    EXPECT_EQ(strRequest, "VFI,,XDL,F,,,,-1,0,");
}

TEST_F(TBrennikPacketTest, BuildsTheSingleBytePackets) {
    std::string strPacket;
    EXPECT_EQ(packet.BuildSessionSuccessfulPacket(strPacket), 0);
    EXPECT_EQ(strPacket, "S");
    EXPECT_EQ(packet.BuildCloseFilePacket(strPacket), 0);
    EXPECT_EQ(strPacket, "C");
}

TEST_F(TBrennikPacketTest, BuildsAnOpenFilePacketWithTheFixedStamp) {
    std::string strPacket;
    ASSERT_EQ(packet.BuildOpenFilePacket(strPacket, "flpkey.csv", false, 2748, true), 0);
    EXPECT_EQ(strPacket, "OD00000ABC0000000020150522110000XXXXXXXXflpkey.csv");
}

TEST_F(TBrennikPacketTest, BuildsAnOpenFilePacketWithThePresentMoment) {
    host.clock.SetLocal(DateTime{2027, 3, 4, 5, 6, 7});
    std::string strPacket;
    ASSERT_EQ(packet.BuildOpenFilePacket(strPacket, "a.out", true, 1, false), 0);
    EXPECT_EQ(strPacket, "OC000000010000000020270304050607XXXXXXXXa.out");
}

TEST_F(TBrennikPacketTest, WritesTheWholeRangeOfSizesInEightDigits) {
    std::string strPacket;
    ASSERT_EQ(packet.BuildOpenFilePacket(strPacket, "", true, 0x7FFFFFFF, true), 0);
    EXPECT_EQ(strPacket.substr(2, 8), "7FFFFFFF");
    ASSERT_EQ(packet.BuildOpenFilePacket(strPacket, "", true, 0, true), 0);
    EXPECT_EQ(strPacket.substr(2, 8), "00000000");
    ASSERT_EQ(packet.BuildOpenFilePacket(strPacket, "", true, -1, true), 0);
    EXPECT_EQ(strPacket.substr(2, 8), "FFFFFFFF");
}

TEST_F(TBrennikPacketTest, BuildsConfigVariables) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"NAME=value", "LNAME\x1C"s + "value"},
        {"  *A=b  ", "L*A\x1C"s + "b"},
        {"A=b=c", "LA\x1C"s + "b=c"},
        {"A=", "LA\x1C"s},
        {"=value", ""},
        {"no sign", ""},
        {"", ""},
        {"  =x", ""}};
    for (const auto& [strLine, strExpected] : cases) {
        std::string strPacket = "left over";
        EXPECT_EQ(packet.BuildConfigSysPacket(strPacket, strLine), 0) << strLine;
        EXPECT_EQ(strPacket, strExpected) << strLine;
    }
}

TEST_F(TBrennikPacketTest, BuildsASetDirectoryPacketWithItsLength) {
    std::string strPacket;
    ASSERT_EQ(packet.BuildSetDirectoryPacket(strPacket, "I:15/"), 0);
    EXPECT_EQ(strPacket, "D\x05I:15/"s);
    ASSERT_EQ(packet.BuildSetDirectoryPacket(strPacket, ""), 0);
    EXPECT_EQ(strPacket, "D\0"s);
    ASSERT_EQ(packet.BuildSetDirectoryPacket(strPacket, std::string(255, 'x')), 0);
    EXPECT_EQ(strPacket, "D\xFF" + std::string(255, 'x'));
}

TEST_F(TBrennikPacketTest, RefusesADirectoryNameWhoseLengthNeedsMoreThanAByte) {
    std::string strPacket;
    EXPECT_EQ(packet.BuildSetDirectoryPacket(strPacket, std::string(256, 'x')), 1);
    EXPECT_EQ(packet.strErrorMessage(),
              "TBrennikPacket.BuildSetDirectoryPacket() Failed - Invalid procedure call");
    EXPECT_EQ(packet.lErrorCode(), 1000000);
}

TEST_F(TBrennikPacketTest, BuildsWriteDataWithLengthAndOffsetInBinary) {
    std::string strPacket;
    ASSERT_EQ(packet.BuildWriteDataToFilePacket(strPacket, "ab\0c"s, 0x01020304), 0);
    EXPECT_EQ(strPacket, "W\x00\x04\x01\x02\x03\x04"s + "ab\0c"s);
    ASSERT_EQ(packet.BuildWriteDataToFilePacket(strPacket, std::string(258, 'x'), 0x7FFFFFFF), 0);
    EXPECT_EQ(strPacket, "W\x01\x02\x7F\xFF\xFF\xFF"s + std::string(258, 'x'));
    ASSERT_EQ(packet.BuildWriteDataToFilePacket(strPacket, "", 0), 0);
    EXPECT_EQ(strPacket, "W\0\0\0\0\0\0"s);
}

TEST_F(TBrennikPacketTest, TakesAtMost65535BytesOfDataAndFailsUnderTheBorrowedPrefix) {
    std::string strPacket;
    ASSERT_EQ(packet.BuildWriteDataToFilePacket(strPacket, std::string(65535, 'x'), 0), 0);
    EXPECT_EQ(strPacket.substr(0, 7), "W\xFF\xFF\0\0\0\0"s);
    EXPECT_EQ(packet.BuildWriteDataToFilePacket(strPacket, std::string(65536, 'x'), 0), 1);
    EXPECT_EQ(packet.strErrorMessage(),
              "TBrennikPacket.BuildCloseFilePacket() Failed - Invalid procedure call");
    EXPECT_EQ(packet.lErrorCode(), 1000000);
}

TEST_F(TBrennikPacketTest, RefusesANegativeOffset) {
    std::string strPacket;
    EXPECT_EQ(packet.BuildWriteDataToFilePacket(strPacket, "x", -1), 1);
    EXPECT_EQ(packet.strErrorMessage(),
              "TBrennikPacket.BuildCloseFilePacket() Failed - Invalid procedure call");
}

TEST_F(TBrennikPacketTest, KnowsEveryTypeByItsFirstByteInEitherCase) {
    const std::vector<std::pair<char, Type>> letters = {{'O', Type::OpenFile},
                                                        {'W', Type::WriteData},
                                                        {'B', Type::WriteData},
                                                        {'I', Type::Recognised},
                                                        {'C', Type::CloseFile},
                                                        {'L', Type::ConfigVariable},
                                                        {'M', Type::Message},
                                                        {'P', Type::SetPassword},
                                                        {'T', Type::SetTime},
                                                        {'S', Type::SessionSuccessful},
                                                        {'U', Type::SessionUnsuccessful},
                                                        {'A', Type::AppendFile},
                                                        {'D', Type::SetDirectory}};
    for (int lByte = 0; lByte < 256; ++lByte) {
        Type expected = Type::Unknown;
        for (const auto& [letter, type] : letters) {
            if (lByte == letter || lByte == letter - 'A' + 'a')
                expected = type;
        }
        EXPECT_EQ(packet.GetPacketType(std::string(1, static_cast<char>(lByte)) + "rest"), expected)
            << lByte;
    }
    EXPECT_EQ(packet.GetPacketType(""), Type::Unknown);
}

TEST_F(TBrennikPacketTest, NumbersTheTypesAsTheTableDoes) {
    EXPECT_EQ(static_cast<int>(Type::OpenFile), 0);
    EXPECT_EQ(static_cast<int>(Type::WriteData), 1);
    EXPECT_EQ(static_cast<int>(Type::Recognised), 2);
    EXPECT_EQ(static_cast<int>(Type::CloseFile), 3);
    EXPECT_EQ(static_cast<int>(Type::ConfigVariable), 4);
    EXPECT_EQ(static_cast<int>(Type::Message), 5);
    EXPECT_EQ(static_cast<int>(Type::SetPassword), 6);
    EXPECT_EQ(static_cast<int>(Type::SetTime), 7);
    EXPECT_EQ(static_cast<int>(Type::SessionSuccessful), 8);
    EXPECT_EQ(static_cast<int>(Type::SessionUnsuccessful), 9);
    EXPECT_EQ(static_cast<int>(Type::Unknown), 10);
    EXPECT_EQ(static_cast<int>(Type::AppendFile), 11);
    EXPECT_EQ(static_cast<int>(Type::SetDirectory), 12);
}

TEST_F(TBrennikPacketTest, RefusesUnknownTypesAndTheLetterThatIsOnlyKnown) {
    for (const char* text : {"", "X", "I", "i", "\x02", "9"}) {
        TBrennikPacket fresh;
        EXPECT_EQ(fresh.BreakOutPacket(text), 1) << text;
        EXPECT_EQ(fresh.strErrorMessage(), "Unknown brennik packet type") << text;
        EXPECT_EQ(fresh.lErrorCode(), 1000022) << text;
    }
}

TEST_F(TBrennikPacketTest, TakesPacketsWithoutFieldsAsTheyAre) {
    for (const char* text : {"C", "S", "U", "D", "c", "s rest", "D\x05I:15/"})
        EXPECT_EQ(packet.BreakOutPacket(text), 0) << text;
    EXPECT_EQ(packet.strErrorMessage(), "");
    EXPECT_EQ(packet.lErrorCode(), 0);
}

TEST_F(TBrennikPacketTest, BreaksOutEveryFieldOfAnOpenFilePacket) {
    ASSERT_EQ(packet.BreakOutPacket(kOpenHeader + "name.bin"), 0);
    EXPECT_EQ(packet.lFileType(), 0);
    EXPECT_EQ(packet.lFileSize(), 2748);
    EXPECT_EQ(packet.lFileChecksum(), 15);
    EXPECT_EQ(packet.iYear(), 2026);
    EXPECT_EQ(packet.iMonth(), 11);
    EXPECT_EQ(packet.iDay(), 14);
    EXPECT_EQ(packet.iHour(), 23);
    EXPECT_EQ(packet.iMinute(), 46);
    EXPECT_EQ(packet.iSecond(), 32);
    EXPECT_EQ(packet.strFilename(), "name.bin");
}

TEST_F(TBrennikPacketTest, BreaksOutAnAppendFilePacketInTheSameWay) {
    ASSERT_EQ(packet.BreakOutPacket("A" + kOpenHeader.substr(1) + "more.bin"), 0);
    EXPECT_EQ(packet.lFileSize(), 2748);
    EXPECT_EQ(packet.strFilename(), "more.bin");
}

TEST_F(TBrennikPacketTest, TakesOnlyACapitalCForCode) {
    std::string strOpen = kOpenHeader;
    for (const auto& [type, lExpected] :
         std::vector<std::pair<char, int32_t>>{{'C', 0}, {'D', 1}, {'c', 1}, {' ', 1}, {'\0', 1}}) {
        strOpen[1] = type;
        strOpen[0] = 'o';
        ASSERT_EQ(packet.BreakOutPacket(strOpen), 0);
        EXPECT_EQ(packet.lFileType(), lExpected) << type;
    }
}

TEST_F(TBrennikPacketTest, TakesAnOpenFilePacketOfFortyBytesWithoutAName) {
    ASSERT_EQ(packet.BreakOutPacket(kOpenHeader + "x"), 0);
    ASSERT_EQ(packet.BreakOutPacket(kOpenHeader), 0);
    EXPECT_EQ(packet.strFilename(), "");
    EXPECT_EQ(packet.lFileSize(), 2748);
}

TEST_F(TBrennikPacketTest, RefusesAnOpenFilePacketOf39BytesAndLeavesItsFieldsCleared) {
    ASSERT_EQ(packet.BreakOutPacket(kOpenHeader + "x"), 0);
    ExpectRefusedLength(kOpenHeader.substr(0, 39), "BreakOutOpenFilePacket");
    EXPECT_EQ(packet.lFileSize(), 0);
    EXPECT_EQ(packet.lFileType(), 0);
    EXPECT_EQ(packet.lFileChecksum(), 0);
    ExpectNoDate();
    EXPECT_EQ(packet.strFilename(), "");
    EXPECT_THROW(static_cast<void>(packet.strReserved()), RuntimeFailure);
}

TEST_F(TBrennikPacketTest, ClearsTheReservedBytesOfARefusedOpenFilePacket) {
    std::string strOpen = kOpenHeader;
    strOpen.replace(32, 8, "00012345");
    ASSERT_EQ(packet.BreakOutPacket(strOpen), 0);
    ASSERT_EQ(packet.strReserved(), 12345);
    ExpectRefusedLength(strOpen.substr(0, 39), "BreakOutOpenFilePacket");
    EXPECT_THROW(static_cast<void>(packet.strReserved()), RuntimeFailure);
}

TEST_F(TBrennikPacketTest, ReadsSizesInEitherCaseAndBadDigitsAsZero) {
    const std::vector<std::pair<std::string, int32_t>> sizes = {
        {"00000abc", 2748}, {"7FFFFFFF", 0x7FFFFFFF}, {"80000000", 0}, {"FFFFFFFF", 0},
        {"0000000G", 0},    {"-0000001", 0},          {"        ", 0}};
    for (const auto& [strSize, lExpected] : sizes) {
        std::string strOpen = kOpenHeader;
        strOpen.replace(2, 8, strSize);
        ASSERT_EQ(packet.BreakOutPacket(strOpen), 0) << strSize;
        EXPECT_EQ(packet.lFileSize(), lExpected) << strSize;
    }
}

TEST_F(TBrennikPacketTest, ReadsDateFieldsThatAreNoNumbersAsZero) {
    std::string strOpen = kOpenHeader;
    strOpen.replace(18, 14, "year1x--99 5a:");
    ASSERT_EQ(packet.BreakOutPacket(strOpen), 0);
    EXPECT_EQ(packet.iYear(), 0);
    EXPECT_EQ(packet.iMonth(), 0);
    EXPECT_EQ(packet.iDay(), 0);
    EXPECT_EQ(packet.iHour(), 99);
    EXPECT_EQ(packet.iMinute(), 5);
    EXPECT_EQ(packet.iSecond(), 0);
}

TEST_F(TBrennikPacketTest, ReadsTheReservedBytesAsANumberAndFailsOnTheUsualOnes) {
    ASSERT_EQ(packet.BreakOutPacket(kOpenHeader), 0);
    try {
        static_cast<void>(packet.strReserved());
        FAIL() << "a conversion that must fail did not";
    } catch (const RuntimeFailure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::TypeMismatch);
    }
    std::string strOpen = kOpenHeader;
    strOpen.replace(32, 8, "00012345");
    ASSERT_EQ(packet.BreakOutPacket(strOpen), 0);
    EXPECT_EQ(packet.strReserved(), 12345);
    strOpen.replace(32, 8, "00040000");
    ASSERT_EQ(packet.BreakOutPacket(strOpen), 0);
    try {
        static_cast<void>(packet.strReserved());
        FAIL() << "a number beyond 16 bits was taken";
    } catch (const RuntimeFailure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Overflow);
    }
}

TEST_F(TBrennikPacketTest, LetsACallerChangeTheFileName) {
    ASSERT_EQ(packet.BreakOutPacket(kOpenHeader + "<default>"), 0);
    packet.strFilename("default.txt");
    EXPECT_EQ(packet.strFilename(), "default.txt");
}

TEST_F(TBrennikPacketTest, BreaksOutWriteDataWithBothLetters) {
    for (char letter : {'W', 'B', 'w', 'b'}) {
        ASSERT_EQ(packet.BreakOutPacket(letter + "\x01\x02\x01\x02\x03\x04"s + "da\0ta"s), 0);
        EXPECT_EQ(packet.strData(), "da\0ta"s);
        EXPECT_EQ(packet.lDataSize(), 258) << "the stated length, not that of the data";
        EXPECT_EQ(packet.lDataOffset(), 0x01020304);
    }
}

TEST_F(TBrennikPacketTest, TakesAWriteDataPacketOfSevenBytes) {
    ASSERT_EQ(packet.BreakOutPacket("W\xFF\xFF\0\0\0\0"s), 0);
    EXPECT_EQ(packet.strData(), "");
    EXPECT_EQ(packet.lDataSize(), 65535);
}

TEST_F(TBrennikPacketTest, ReadsAnOffsetBeyond31BitsAsZero) {
    ASSERT_EQ(packet.BreakOutPacket("W\0\0\x7F\xFF\xFF\xFF"s), 0);
    EXPECT_EQ(packet.lDataOffset(), 0x7FFFFFFF);
    ASSERT_EQ(packet.BreakOutPacket("W\0\0\x80\0\0\0"s), 0);
    EXPECT_EQ(packet.lDataOffset(), 0);
}

TEST_F(TBrennikPacketTest, RefusesAWriteDataPacketOfSixBytesAndLeavesItsFieldsCleared) {
    ASSERT_EQ(packet.BreakOutPacket("W\0\x01\0\0\0\x05z"s), 0);
    ExpectRefusedLength("W\0\x01\0\0\0"s, "BreakOutWriteDataPacket");
    EXPECT_EQ(packet.strData(), "");
    EXPECT_EQ(packet.lDataSize(), 0);
    EXPECT_EQ(packet.lDataOffset(), 0);
}

TEST_F(TBrennikPacketTest, BreaksOutATimePacketAndKeepsNothingBehindIt) {
    ASSERT_EQ(packet.BreakOutPacket("T20261114234632and more"), 0);
    EXPECT_EQ(packet.iYear(), 2026);
    EXPECT_EQ(packet.iMonth(), 11);
    EXPECT_EQ(packet.iDay(), 14);
    EXPECT_EQ(packet.iHour(), 23);
    EXPECT_EQ(packet.iMinute(), 46);
    EXPECT_EQ(packet.iSecond(), 32);
    ASSERT_EQ(packet.BreakOutPacket("T20270101000000"), 0) << "15 bytes are enough";
    EXPECT_EQ(packet.iYear(), 2027);
}

TEST_F(TBrennikPacketTest, RefusesATimePacketOf14BytesAndLeavesItsFieldsCleared) {
    ASSERT_EQ(packet.BreakOutPacket("T20261114234632"), 0);
    ExpectRefusedLength("T2026111423463", "BreakOutTimePacket");
    ExpectNoDate();
}

TEST_F(TBrennikPacketTest, BreaksOutSingleFieldsAndTurnsTheSeparatorOfVariablesAlone) {
    ASSERT_EQ(packet.BreakOutPacket("LNAME\x1C"s + "a\x1C"s + "b"), 0);
    EXPECT_EQ(packet.strData(), "NAME=a=b");
    ASSERT_EQ(packet.BreakOutPacket("Lplain"), 0);
    EXPECT_EQ(packet.strData(), "plain");
    ASSERT_EQ(packet.BreakOutPacket("MHello\x1C there"), 0);
    EXPECT_EQ(packet.strData(), "Hello\x1C there");
    ASSERT_EQ(packet.BreakOutPacket("Psecret\x1C"), 0);
    EXPECT_EQ(packet.strData(), "secret\x1C");
}

TEST_F(TBrennikPacketTest, TakesASingleFieldPacketOfOneByte) {
    for (const char* text : {"L", "M", "P"}) {
        ASSERT_EQ(packet.BreakOutPacket("Mbefore"), 0);
        EXPECT_EQ(packet.BreakOutPacket(text), 0);
        EXPECT_EQ(packet.strData(), "");
    }
}

TEST_F(TBrennikPacketTest, KeepsTheTextOfAFailureThroughASuccess) {
    ASSERT_EQ(packet.BreakOutPacket("X"), 1);
    ASSERT_EQ(packet.BreakOutPacket("S"), 0);
    EXPECT_EQ(packet.strErrorMessage(), "Unknown brennik packet type");
    EXPECT_EQ(packet.lErrorCode(), 1000022);
}

TEST_F(TBrennikPacketTest, ReadsTheResumePosition) {
    const std::vector<std::pair<std::string, int32_t>> replies = {
        {"\x02R10\x03"s, 17}, // 16 bytes held: the 17th is next
        {"\x02R0\x03"s, 1},
        {"\x02Rff\x03"s, 256},
        {"\x02RFF\x03"s, 256},
        {"\x02R7FFFFFFE\x03"s, 0x7FFFFFFF},
        {"R10\x03"s, 17},
        {"\x02\x02R\x02"s + "1\x02"s + "0\x03"s, 17},
        {"\x02R10\x03more\x03"s, 17},
        {"\x02R8000\x03"s, 32769},
        {"\x02X10\x03"s, 0},
        {"\x02r10\x03"s, 0},
        {"\x02R10"s, 0},
        {"R1\x03"s, 0},
        {"\x02\x02\x02\x03"s, 0},
        {""s, 0},
        {"\x06"s, 0}};
    for (const auto& [strReply, lExpected] : replies)
        EXPECT_EQ(packet.ExtractResumePosition(strReply), lExpected) << strReply;
}

TEST_F(TBrennikPacketTest, ThrowsOnMalformedResumeDigits) {
    const auto kindOf = [&](const std::string& strReply) {
        try {
            static_cast<void>(packet.ExtractResumePosition(strReply));
        } catch (const RuntimeFailure& failure) {
            return failure.Kind();
        }
        return FailureKind::Internal;
    };
    EXPECT_EQ(kindOf("\x02RG1\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02R1G\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02R-1\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02R-0\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02R+1\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02R 1\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02R0x10\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02\x02R\x03"s), FailureKind::TypeMismatch);
    EXPECT_EQ(kindOf("\x02R7FFFFFFF\x03"s), FailureKind::Overflow);
    EXPECT_EQ(kindOf("\x02R80000000\x03"s), FailureKind::Overflow);
    EXPECT_EQ(kindOf("\x02R123456789\x03"s), FailureKind::Overflow);
}

TEST_F(TBrennikPacketTest, TellsByTheOperationsNameWhatFailsForWantOfMemory) {
    const std::string strLong(600000, 'n');
    const std::string strLine = "name=" + strLong;
    const std::string strMessage = "M" + strLong;
    const std::string strOpen = kOpenHeader + strLong;
    const std::string strWrite = "W\x01\x02\x01\x02\x03\x04" + strLong;
    std::string strPacket;
    const world::AllocationLimit limit(1 << 19);
    EXPECT_EQ(packet.BuildDownloadRequestPacket("VX520", true, "APP", strLong, "EPROM", 1024, "PT1",
                                                4096, "CONFIG", "RELEASE", true, strPacket),
              1);
    ExpectNoMemory("BuildDownloadResquestPacket"); // so misspelt
    EXPECT_EQ(packet.BuildOpenFilePacket(strPacket, strLong, true, 1, true), 1);
    ExpectNoMemory("BuildOpenFilePacket");
    EXPECT_EQ(packet.BuildConfigSysPacket(strPacket, strLine), 1);
    ExpectNoMemory("BuildConfigSysPacket");
    EXPECT_EQ(packet.BreakOutPacket(strMessage), 1);
    ExpectNoMemory("BreakOutSingleFieldPacket");
    EXPECT_EQ(packet.BreakOutPacket(strOpen), 1);
    ExpectNoMemory("BreakOutOpenFilePacket");
    EXPECT_EQ(packet.BreakOutPacket(strWrite), 1);
    ExpectNoMemory("BreakOutWriteDataPacket");
}

} // namespace
} // namespace brennik
