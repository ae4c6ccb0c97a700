#include "support/TLongBitMap.h"

#include "platform/RuntimeFailure.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

namespace brennik {
namespace {

constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();

template <class Body>
std::optional<FailureKind> KindThrownBy(Body&& body) {
    try {
        body();
    } catch (const RuntimeFailure& failure) {
        return failure.Kind();
    }
    return std::nullopt;
}

TEST(TLongBitMap, StartsWithNoBitSet) {
    EXPECT_EQ(TLongBitMap().GetBitMap(), 0);
    EXPECT_EQ(TLongBitMap().GetBitMapAsBinaryString(), std::string(32, '0'));
}

TEST(TLongBitMap, TellsItsBitsWithBit31First) {
    TLongBitMap bits;
    bits.SetBitMap(5);
    EXPECT_EQ(bits.GetBitMapAsBinaryString(), "00000000000000000000000000000101");
    bits.SetBitMap(1 << 30);
    EXPECT_EQ(bits.GetBitMapAsBinaryString(), "01000000000000000000000000000000");
}

TEST(TLongBitMap, GivesBackWhatWasSet) {
    TLongBitMap bits;
    for (const int32_t lValue : {0, 1, 5, 0x1011, 0x40000000, kLargest}) {
        bits.SetBitMap(lValue);
        EXPECT_EQ(bits.GetBitMap(), lValue);
    }
}

TEST(TLongBitMap, SetFieldChangesOneBit) {
    TLongBitMap bits;
    bits.SetBitMap(0x1011);
    bits.SetField(4, false);
    bits.SetField(5, true);
    bits.SetField(0, true);
    EXPECT_EQ(bits.GetBitMap(), 0x1021);
    EXPECT_TRUE(bits.GetField(5));
    EXPECT_FALSE(bits.GetField(4));
    EXPECT_TRUE(bits.GetField(0));
}

TEST(TLongBitMap, SetBitMapLeavesBit31AsItWas) {
    TLongBitMap bits;
    bits.SetBitMap(-1);
    EXPECT_FALSE(bits.GetField(31));
    EXPECT_EQ(bits.GetBitMap(), kLargest);
    bits.SetField(31, true);
    bits.SetBitMap(0);
    EXPECT_TRUE(bits.GetField(31));
    EXPECT_EQ(bits.GetBitMapAsBinaryString(), "10000000000000000000000000000000");
}

TEST(TLongBitMap, GetBitMapAddsUpTheBitsBelow31) {
    TLongBitMap bits;
    bits.SetBitMap(6);
    bits.SetField(31, true);
    EXPECT_EQ(bits.GetBitMap(), 6);
}

TEST(TLongBitMap, ABitNumberOutside0To31Fails) {
    TLongBitMap bits;
    for (const int32_t lBit : {-1, 32, 1000}) {
        EXPECT_EQ(KindThrownBy([&] { bits.SetField(lBit, true); }),
                  FailureKind::SubscriptOutOfRange);
        EXPECT_EQ(KindThrownBy([&] { static_cast<void>(bits.GetField(lBit)); }),
                  FailureKind::SubscriptOutOfRange);
    }
    EXPECT_EQ(bits.GetBitMapAsBinaryString(), std::string(32, '0'));
}

} // namespace
} // namespace brennik
