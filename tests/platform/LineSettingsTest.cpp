#include "platform/LineSettings.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace brennik {
namespace {

// The bits of the terminal interface, as the operating system documents them.
constexpr uint32_t kFiveBits = 0000000;
constexpr uint32_t kSixBits = 0000020;
constexpr uint32_t kSevenBits = 0000040;
constexpr uint32_t kEightBits = 0000060;
constexpr uint32_t kTwoStops = 0000100;
constexpr uint32_t kReceiver = 0000200;
constexpr uint32_t kParity = 0000400;
constexpr uint32_t kOdd = 0001000;
constexpr uint32_t kLocal = 0004000;
constexpr uint32_t kMarkOrSpace = 010000000000;
constexpr uint32_t kHardwareFlow = 020000000000;
constexpr uint32_t kStopsAtXoff = 0002000;
constexpr uint32_t kSendsXoff = 0010000;

constexpr uint32_t kAlways = kReceiver | kLocal;

/// What each of the values leads to; nothing for one that can't be made.
template <class Value>
struct Row {
    Value value;
    std::optional<uint32_t> lExpected;
};

DCB WithFlag(int32_t lLowestBit, int32_t lValue) {
    DCB dcb;
    dcb.Flags = (dcb.Flags & ~(3 << lLowestBit)) | lValue << lLowestBit;
    return dcb;
}

DCB WithOneBit(int32_t lBit) {
    DCB dcb;
    dcb.Flags |= 1 << lBit;
    return dcb;
}

std::optional<uint32_t> ControlFlagsOf(const DCB& dcb) {
    const auto settings = LineSettingsOf(dcb);
    return settings ? std::optional(settings->lControlFlags) : std::nullopt;
}

TEST(LineSettings, APortBeginsWithEightBitsNoParityAndItsModemLinesUp) {
    LineSettings expected;
    expected.lControlFlags = kAlways | kEightBits;
    expected.lInputFlags = 0;
    expected.lBaudRate = 9600;
    expected.cXon = '\x11';
    expected.cXoff = '\x13';
    expected.bDtr = true;
    expected.bRts = true;
    EXPECT_EQ(LineSettingsOf(DCB{}), expected);
}

TEST(LineSettings, HasFiveToEightDataBits) {
    const std::vector<Row<int8_t>> rows = {
        {-128, {}},    {-1, {}},        {0, {}},         {3, {}}, {4, {}},  {5, kFiveBits},
        {6, kSixBits}, {7, kSevenBits}, {8, kEightBits}, {9, {}}, {16, {}}, {127, {}}};
    for (const auto& row : rows) {
        DCB dcb;
        dcb.ByteSize = row.value;
        const auto lExpected =
            row.lExpected ? std::optional(kAlways | *row.lExpected) : std::nullopt;
        EXPECT_EQ(ControlFlagsOf(dcb), lExpected) << int{row.value};
    }
}

TEST(LineSettings, HasFiveKindsOfParity) {
    const std::vector<Row<int8_t>> rows = {{-128, {}},
                                           {-1, {}},
                                           {0, 0},
                                           {1, kParity | kOdd},
                                           {2, kParity},
                                           {3, kParity | kOdd | kMarkOrSpace},
                                           {4, kParity | kMarkOrSpace},
                                           {5, {}},
                                           {127, {}}};
    for (const auto& row : rows) {
        DCB dcb;
        dcb.Parity = row.value;
        const auto lExpected =
            row.lExpected ? std::optional(kAlways | kEightBits | *row.lExpected) : std::nullopt;
        EXPECT_EQ(ControlFlagsOf(dcb), lExpected) << int{row.value};
    }
}

TEST(LineSettings, MakesOneAndAHalfStopBitsBehindFiveDataBitsAndTwoBehindOthers) {
    struct Case {
        int8_t iByteSize;
        int8_t iStopBits;
        std::optional<uint32_t> lExpected;
    };
    const std::vector<Case> cases = {
        {5, 0, kAlways | kFiveBits},
        {5, 1, kAlways | kFiveBits | kTwoStops},
        {5, 2, {}},
        {6, 0, kAlways | kSixBits},
        {6, 1, {}},
        {6, 2, kAlways | kSixBits | kTwoStops},
        {7, 0, kAlways | kSevenBits},
        {7, 1, {}},
        {7, 2, kAlways | kSevenBits | kTwoStops},
        {8, 0, kAlways | kEightBits},
        {8, 1, {}},
        {8, 2, kAlways | kEightBits | kTwoStops},
        {5, 3, {}},
        {8, 3, {}},
        {5, -1, {}},
        {8, -1, {}},
        {8, 127, {}},
        {8, -128, {}},
        {4, 1, {}},
        {4, 2, {}},
    };
    for (const Case& one : cases) {
        DCB dcb;
        dcb.ByteSize = one.iByteSize;
        dcb.StopBits = one.iStopBits;
        EXPECT_EQ(ControlFlagsOf(dcb), one.lExpected)
            << int{one.iByteSize} << " data bits, " << int{one.iStopBits};
    }
}

TEST(LineSettings, EveryRateAboveNoneIsOne) {
    for (const int32_t lRate : {1, 50, 110, 300, 1200, 2400, 4800, 9600, 12345, 19200, 38400, 57600,
                                115200, 250000, 4000000, std::numeric_limits<int32_t>::max()}) {
        DCB dcb;
        dcb.BaudRate = lRate;
        const auto settings = LineSettingsOf(dcb);
        ASSERT_TRUE(settings) << lRate;
        EXPECT_EQ(settings->lBaudRate, static_cast<uint32_t>(lRate));
        EXPECT_EQ(settings->lControlFlags, kAlways | kEightBits);
    }
    for (const int32_t lRate : {0, -1, -9600, std::numeric_limits<int32_t>::min()}) {
        DCB dcb;
        dcb.BaudRate = lRate;
        EXPECT_EQ(LineSettingsOf(dcb), std::nullopt) << lRate;
    }
}

TEST(LineSettings, DtrIsOffOrOnButShakesNoHands) {
    const std::vector<Row<int32_t>> rows = {{0, 0}, {1, 1}, {2, {}}, {3, {}}};
    for (const auto& row : rows) {
        const auto settings = LineSettingsOf(WithFlag(dcbflag::kDtrControl, row.value));
        ASSERT_EQ(settings.has_value(), row.lExpected.has_value()) << row.value;
        if (settings) {
            EXPECT_EQ(settings->bDtr, *row.lExpected != 0);
            EXPECT_TRUE(settings->bRts);
            EXPECT_EQ(settings->lControlFlags, kAlways | kEightBits);
            EXPECT_EQ(settings->lInputFlags, 0U);
        }
    }
}

TEST(LineSettings, RtsIsOffOrOnAndHeldWhereAFormerHandshakeIsLeft) {
    const std::vector<Row<int32_t>> rows = {{0, 0}, {1, 1}, {2, 1}, {3, {}}};
    for (const auto& row : rows) {
        const auto settings = LineSettingsOf(WithFlag(dcbflag::kRtsControl, row.value));
        ASSERT_EQ(settings.has_value(), row.lExpected.has_value()) << row.value;
        if (settings) {
            EXPECT_EQ(settings->bRts, *row.lExpected != 0);
            EXPECT_TRUE(settings->bDtr);
            EXPECT_EQ(settings->lControlFlags, kAlways | kEightBits);
            EXPECT_EQ(settings->lInputFlags, 0U);
        }
    }
}

TEST(LineSettings, CtsFlowIsHardwareFlowWithEachUseOfRtsThatCanBeMade) {
    const std::vector<Row<int32_t>> rows = {{0, 0}, {1, 1}, {2, 1}, {3, {}}};
    for (const auto& row : rows) {
        DCB dcb = WithFlag(dcbflag::kRtsControl, row.value);
        dcb.Flags |= 1 << dcbflag::kOutxCtsFlow;
        const auto settings = LineSettingsOf(dcb);
        ASSERT_EQ(settings.has_value(), row.lExpected.has_value()) << row.value;
        if (settings) {
            EXPECT_EQ(settings->bRts, *row.lExpected != 0);
            EXPECT_EQ(settings->lControlFlags, kAlways | kEightBits | kHardwareFlow);
            EXPECT_EQ(settings->lInputFlags, 0U);
        }
    }
}

TEST(LineSettings, DsrFlowCannotBeMade) {
    EXPECT_EQ(LineSettingsOf(WithOneBit(dcbflag::kOutxDsrFlow)), std::nullopt);
}

TEST(LineSettings, SoftwareFlowGoesBothWaysByItself) {
    struct Case {
        std::vector<int32_t> lBits;
        uint32_t lExpected;
    };
    const std::vector<Case> cases = {
        {{}, 0},
        {{dcbflag::kOutX}, kStopsAtXoff},
        {{dcbflag::kInX}, kSendsXoff},
        {{dcbflag::kOutX, dcbflag::kInX}, kStopsAtXoff | kSendsXoff},
    };
    for (const Case& one : cases) {
        DCB dcb;
        for (const int32_t lBit : one.lBits) {
            dcb.Flags |= 1 << lBit;
        }
        dcb.XonChar = '\x12';
        dcb.XoffChar = '\xFE';
        const auto settings = LineSettingsOf(dcb);
        ASSERT_TRUE(settings);
        EXPECT_EQ(settings->lInputFlags, one.lExpected);
        EXPECT_EQ(settings->lControlFlags, kAlways | kEightBits);
        EXPECT_EQ(settings->cXon, '\x12');
        EXPECT_EQ(settings->cXoff, '\xFE');
    }
}

TEST(LineSettings, WholeBlocksOfTheFieldAreMadeAsAWhole) {
    DCB dcb;
    dcb.BaudRate = 1200;
    dcb.ByteSize = 7;
    dcb.Parity = 2;
    dcb.StopBits = 2;
    dcb.Flags = 0x2005; // binary, CTS flow, DTR off, handshake of RTS
    LineSettings expected;
    expected.lControlFlags = kAlways | kSevenBits | kParity | kTwoStops | kHardwareFlow;
    expected.lBaudRate = 1200;
    expected.cXon = '\x11';
    expected.cXoff = '\x13';
    expected.bRts = true;
    EXPECT_EQ(LineSettingsOf(dcb), expected);
}

// What a line says when it is read back.

LineSettings Wanted() {
    LineSettings wanted;
    wanted.lControlFlags = kAlways | kSevenBits | kParity;
    wanted.lInputFlags = kStopsAtXoff;
    wanted.lBaudRate = 10000;
    return wanted;
}

TEST(LineSettings, ALineThatSaysWhatItWasToldHasTakenIt) {
    EXPECT_TRUE(AreTaken(Wanted(), Wanted(), false));
    EXPECT_TRUE(AreTaken(Wanted(), Wanted(), true));
}

TEST(LineSettings, EachChangeOfTheFrameIsNoticedOnARealLineAlone) {
    for (const uint32_t lFlag : {kSixBits, kSevenBits, kEightBits, kParity, kOdd, kMarkOrSpace}) {
        LineSettings taken = Wanted();
        taken.lControlFlags ^= lFlag;
        EXPECT_FALSE(AreTaken(Wanted(), taken, false)) << lFlag;
        EXPECT_TRUE(AreTaken(Wanted(), taken, true)) << lFlag;
    }
}

TEST(LineSettings, AChangeOfTheStopBitsIsNoticedOnEveryLine) {
    LineSettings taken = Wanted();
    taken.lControlFlags ^= kTwoStops;
    EXPECT_FALSE(AreTaken(Wanted(), taken, false));
    EXPECT_FALSE(AreTaken(Wanted(), taken, true));
}

TEST(LineSettings, EachChangeOfFlowControlIsNoticed) {
    for (const bool bPseudoTerminal : {false, true}) {
        LineSettings taken = Wanted();
        taken.lControlFlags |= kHardwareFlow;
        EXPECT_FALSE(AreTaken(Wanted(), taken, bPseudoTerminal));
        for (const uint32_t lFlag : {kStopsAtXoff, kSendsXoff}) {
            taken = Wanted();
            taken.lInputFlags ^= lFlag;
            EXPECT_FALSE(AreTaken(Wanted(), taken, bPseudoTerminal)) << lFlag;
        }
    }
}

TEST(LineSettings, OtherFlagsAndTheModemLinesAreNotCompared) {
    LineSettings taken = Wanted();
    taken.lControlFlags ^= kAlways | 0002017; // the rate's own bits, and what a last close does
    taken.lInputFlags |= 0000001;             // breaks
    taken.cXon = 'x';
    taken.bDtr = true;
    EXPECT_TRUE(AreTaken(Wanted(), taken, false));
}

TEST(LineSettings, ARateMayBeRoundedByThreeInAHundred) {
    const std::vector<Row<uint32_t>> rows = {{9700, 1},  {10300, 1}, {9699, 0}, {10301, 0},
                                             {10000, 1}, {0, 0},     {20000, 0}};
    for (const auto& row : rows) {
        LineSettings taken = Wanted();
        taken.lBaudRate = row.value;
        for (const bool bPseudoTerminal : {false, true}) {
            EXPECT_EQ(AreTaken(Wanted(), taken, bPseudoTerminal), *row.lExpected != 0) << row.value;
        }
    }
    LineSettings fastest = Wanted();
    fastest.lBaudRate = 0x7FFFFFFF;
    EXPECT_TRUE(AreTaken(fastest, fastest, false));
    LineSettings beyond = fastest;
    beyond.lBaudRate = 0xFFFFFFFF;
    EXPECT_FALSE(AreTaken(fastest, beyond, false));
    EXPECT_FALSE(AreTaken(beyond, fastest, false));
}

TEST(LineSettings, CountsTheHalfBitsOfAByte) {
    struct Case {
        int8_t iByteSize;
        int8_t iParity;
        int8_t iStopBits;
        int32_t lExpected;
    };
    const std::vector<Case> cases = {
        {8, 0, 0, 20}, {8, 1, 0, 22}, {8, 2, 0, 22}, {8, 3, 0, 22}, {8, 4, 0, 22},
        {8, 0, 2, 22}, {8, 2, 2, 24}, {7, 0, 0, 18}, {7, 2, 0, 20}, {6, 0, 0, 16},
        {5, 0, 0, 14}, {5, 0, 1, 15}, {5, 1, 1, 17},
    };
    for (const Case& one : cases) {
        DCB dcb;
        dcb.ByteSize = one.iByteSize;
        dcb.Parity = one.iParity;
        dcb.StopBits = one.iStopBits;
        EXPECT_EQ(HalfBitsOfByte(dcb), one.lExpected)
            << int{one.iByteSize} << int{one.iParity} << int{one.iStopBits};
    }
}

} // namespace
} // namespace brennik
