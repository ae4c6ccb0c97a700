// The texts that go into the encryption and come out of it: where one ends, one string for input
// and result, and what an unforeseen failure says of the operations that need no library.
#include "passthru/TEncryption.h"
#include "tests/world/AllocationLimit.h"
#include "tests/world/SimHost.h"
#include "tests/world/SwappedHost.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace brennik::passthru {
namespace {

constexpr const char* kKey = "2b7e151628aed2a6abf7158809cf4f3c";
constexpr const char* kIV = "000102030405060708090a0b0c0d0e0f";

constexpr size_t kMegabyte = size_t{1024} * 1024;

class TEncryptionTexts : public world::WorldTest {
  protected:
    TEncryption oEncryption;
};

/// Leaves bytes behind the zero that ends a result.
class BusyRtl : public world::SimOstRtl {
  public:
    using SimOstRtl::SimOstRtl;
    int32_t ComputeSHA1(std::string_view, std::span<char> output) override {
        constexpr std::string_view kBytes("a\xFFz\0behind\0", 11);
        std::copy(kBytes.begin(), kBytes.end(), output.begin());
        return 0;
    }
};

TEST_F(TEncryptionTexts, AResultEndsAtTheFirstZeroByteOfItsBuffer) {
    BusyRtl busy(host.ledger);
    Host swapped = world::Swapped(host.TheHost(), busy);
    const ScopedHost scoped(swapped);
    std::string strHash;
    EXPECT_EQ(oEncryption.GenerateHash(0, "abc", strHash), 0);
    EXPECT_EQ(strHash, "a\xFFz") << "each byte as one character";
}

// ---- One string for input and result.

TEST_F(TEncryptionTexts, VisibleCharactersMayBeScrambledInTheirPlace) {
    std::string strScrambled;
    ASSERT_EQ(oEncryption.EncryptVisibleChar("Hello, device!", strScrambled), 0);
    std::string strText = "Hello, device!";
    ASSERT_EQ(oEncryption.EncryptVisibleChar(strText, strText), 0);
    EXPECT_EQ(strText, strScrambled);
    ASSERT_EQ(oEncryption.DecryptVisibleChar(strText, strText), 0);
    EXPECT_EQ(strText, "Hello, device!");
}

TEST_F(TEncryptionTexts, ACharacterOutOfRangeIsFoundInItsPlaceToo) {
    std::string strText = "  \x07x";
    EXPECT_EQ(oEncryption.EncryptVisibleChar(strText, strText), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "Input character is out of range \x07");
    EXPECT_EQ(strText, "  ");
    strText = "  \x7Fx";
    EXPECT_EQ(oEncryption.DecryptVisibleChar(strText, strText), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "Input character is out of range \x7F");
    EXPECT_EQ(strText, "  ");
}

TEST_F(TEncryptionTexts, DataMayBeEncryptedInItsPlace) {
    std::string strText = "plain";
    ASSERT_EQ(oEncryption.EncryptAesEcb(kKey, strText, strText), 0);
    ASSERT_EQ(oEncryption.DecryptAesEcb(kKey, strText, strText), 0);
    EXPECT_EQ(strText, "plain");
    ASSERT_EQ(oEncryption.EncryptAesCbc(kKey, kIV, strText, strText), 0);
    ASSERT_EQ(oEncryption.DecryptAesCbc(kKey, kIV, strText, strText), 0);
    EXPECT_EQ(strText, "plain");
    ASSERT_EQ(oEncryption.EncryptAesOfb(kKey, kIV, strText, strText), 0);
    ASSERT_EQ(oEncryption.DecryptAesOfb(kKey, kIV, strText, strText), 0);
    EXPECT_EQ(strText, "plain");
    strText = "abc";
    ASSERT_EQ(oEncryption.GenerateHash(0, strText, strText), 0);
    EXPECT_EQ(strText, "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST_F(TEncryptionTexts, AnEmptyInputLeavesTheResultAlone) {
    std::string strResult = "old";
    EXPECT_EQ(oEncryption.EncryptVisibleChar("", strResult), 1);
    EXPECT_EQ(oEncryption.DecryptVisibleChar("", strResult), 1);
    EXPECT_EQ(strResult, "old");
}

// ---- Unforeseen failures.

TEST_F(TEncryptionTexts, AnUnforeseenFailureNamesItsOperation) {
    const std::string strLong(2 * kMegabyte, ' '); // the result needs that much memory
    std::string strResult;
    const auto runs = [&](auto operation) {
        const world::AllocationLimit limit(kMegabyte);
        return (oEncryption.*operation)(strLong, strResult);
    };
    EXPECT_EQ(runs(&TEncryption::EncryptVisibleChar), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(),
              "TEncryption.EncryptVisibleChar() Failed - Out of memory");
    EXPECT_EQ(runs(&TEncryption::DecryptVisibleChar), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(),
              "TEncryption.DecryptVisibleChar() Failed - Out of memory");
}

TEST_F(TEncryptionTexts, AnEscapeWithoutASecondCharacterIsAnUnforeseenFailure) {
    std::string strResult;
    EXPECT_EQ(oEncryption.DecryptVisibleChar("  )", strResult), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(),
              "TEncryption.DecryptVisibleChar() Failed - Invalid procedure call");
}

} // namespace
} // namespace brennik::passthru
