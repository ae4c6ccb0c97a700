#include "passthru/TEncryption.h"

#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace brennik::passthru {
namespace {

using world::Op;

constexpr const char* kKey = "2b7e151628aed2a6abf7158809cf4f3c";
constexpr const char* kIV = "000102030405060708090a0b0c0d0e0f";

class TEncryptionTest : public world::WorldTest {
  protected:
    TEncryption oEncryption;
    std::string strResult = "old";

    std::string Zero(const std::string& strText) const { return strText + '\0'; }
    const world::SimOstRtl::NotedCall& LastCall() const { return host.ostRtl.calls.back(); }
};

TEST_F(TEncryptionTest, HashesWithSha1ButForTheTypeOfMd5) {
    for (const int32_t lType : {0, 2, -1, 100}) {
        EXPECT_EQ(oEncryption.GenerateHash(lType, "abc", strResult), 0);
        EXPECT_EQ(strResult, "a9993e364706816aba3e25717850c26c9cd0d89d") << lType;
    }
    EXPECT_EQ(oEncryption.GenerateHash(1, "abc", strResult), 0);
    EXPECT_EQ(strResult, "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(LastCall().strName, "ComputeMD5");
    EXPECT_EQ(LastCall().nBuffers, std::vector<size_t>{50});
}

TEST_F(TEncryptionTest, HashesWithoutAZeroByteBehindAndAnEmptyText) {
    EXPECT_EQ(oEncryption.GenerateHash(0, "", strResult), 0);
    EXPECT_EQ(strResult, "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(LastCall().strTexts, std::vector<std::string>{""});
}

TEST_F(TEncryptionTest, TakesTheResultOfAHashAsSixteenBits) {
    host.FailNext(Op::OstRtl, {.lResult = 32767});
    EXPECT_EQ(oEncryption.GenerateHash(0, "abc", strResult), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "GenerateHash() Failed - Hash API returned 32767");
    host.FailNext(Op::OstRtl, {.lResult = 32768});
    EXPECT_EQ(oEncryption.GenerateHash(0, "abc", strResult), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "TEncryption.GenerateHash() Failed - Overflow");
    EXPECT_EQ(strResult, "old");
}

TEST_F(TEncryptionTest, MakesVectorsAndKeys) {
    EXPECT_EQ(oEncryption.GenerateAesIV(strResult), 0);
    EXPECT_EQ(strResult.size(), 32u);
    EXPECT_EQ(LastCall().nBuffers, std::vector<size_t>{33});
    EXPECT_EQ(oEncryption.GenerateAesKey(256, strResult), 0);
    EXPECT_EQ(strResult.size(), 64u);
    EXPECT_EQ(LastCall().nBuffers, std::vector<size_t>{65});
    EXPECT_EQ(LastCall().lKeySize, 256);
}

// Each operation on data, by its name in texts and the buffer for a length.
struct Operation {
    std::string strName;
    std::string strUnexpected;
    std::string strKind;
    std::string strLibrary;
    std::vector<std::string> strTexts; ///< of the call, but the data
    std::function<int32_t(TEncryption&, const std::string&, std::string&)> run;
    std::function<size_t(size_t)> nBuffer;
};

size_t UpTo64(size_t nBytes) {
    while (nBytes % 64 != 0)
        ++nBytes;
    return nBytes;
}

size_t OfEcb(size_t n) {
    return UpTo64((n + 1) * 2) + 1;
}
size_t OfChained(size_t n) {
    return UpTo64((n + 4) * 2) + 1;
}
size_t OfDecryption(size_t n) {
    // Half of the length; of two whole numbers equally near, the even one.
    const size_t nHalf = n / 2;
    return UpTo64(n % 2 == 0 || nHalf % 2 == 0 ? nHalf : nHalf + 1) + 1;
}
size_t OfRsa(size_t) {
    return 5000;
}

const std::vector<Operation> kOperations = {
    {"EncryptAesEcb",
     "EncryptAesEcb",
     "Aes",
     "AesEcbEncrypt",
     {kKey},
     [](auto& o, auto& d, auto& r) { return o.EncryptAesEcb(kKey, d, r); },
     OfEcb},
    {"DecryptAesEcb",
     "DecryptAesEcb",
     "Aes",
     "AesEcbDecrypt",
     {kKey},
     [](auto& o, auto& d, auto& r) { return o.DecryptAesEcb(kKey, d, r); },
     OfDecryption},
    {"EncryptAesCbc",
     "EncryptAescbc",
     "Aes",
     "AesCbcEncrypt",
     {kKey, kIV},
     [](auto& o, auto& d, auto& r) { return o.EncryptAesCbc(kKey, kIV, d, r); },
     OfChained},
    {"EncryptAesOfb",
     "EncryptAesOfb",
     "Aes",
     "AesOfbEncrypt",
     {kKey, kIV},
     [](auto& o, auto& d, auto& r) { return o.EncryptAesOfb(kKey, kIV, d, r); },
     OfChained},
    {"DecryptAesCbc",
     "DecryptAescbc",
     "Aes",
     "AesCbcDecrypt",
     {kKey, kIV},
     [](auto& o, auto& d, auto& r) { return o.DecryptAesCbc(kKey, kIV, d, r); },
     OfDecryption},
    {"DecryptAesOfb",
     "DecryptAesOfb",
     "Aes",
     "AesOfbDecrypt",
     {kKey, kIV},
     [](auto& o, auto& d, auto& r) { return o.DecryptAesOfb(kKey, kIV, d, r); },
     OfDecryption},
    {"EncryptRsa",
     "EncryptRsa",
     "Rsa",
     "RsaEncrypt",
     {"key"},
     [](auto& o, auto& d, auto& r) { return o.EncryptRsa("key", d, r); },
     OfRsa},
    {"DecryptRsa",
     "DecryptRsa",
     "Rsa",
     "RsaDecrypt",
     {"key"},
     [](auto& o, auto& d, auto& r) { return o.DecryptRsa("key", d, r); },
     OfRsa},
};

TEST_F(TEncryptionTest, RefusesEmptyData) {
    for (const Operation& operation : kOperations) {
        TEncryption oFresh;
        EXPECT_EQ(operation.run(oFresh, "", strResult), 1) << operation.strName;
        EXPECT_EQ(oFresh.strErrorMessage(), "Input buffer is empty");
        EXPECT_TRUE(host.ostRtl.calls.empty());
    }
}

TEST_F(TEncryptionTest, HandsTheLibraryTextsWithAZeroByteAndABufferByTheLength) {
    for (const Operation& operation : kOperations) {
        for (const size_t nLength : {1u, 3u, 5u, 27u, 28u, 29u, 31u, 32u, 126u, 128u, 129u, 130u}) {
            host.FailNext(Op::OstRtl, {.lResult = 7});
            const std::string strData(nLength, 'd');
            EXPECT_EQ(operation.run(oEncryption, strData, strResult), 1);
            EXPECT_EQ(oEncryption.strErrorMessage(),
                      operation.strName + "() Failed - " + operation.strKind + " API returned 7");
            std::vector<std::string> strTexts;
            for (const std::string& strText : operation.strTexts)
                strTexts.push_back(Zero(strText));
            strTexts.push_back(Zero(strData));
            EXPECT_EQ(LastCall().strName, operation.strLibrary);
            EXPECT_EQ(LastCall().strTexts, strTexts);
            EXPECT_EQ(LastCall().nBuffers, std::vector<size_t>{operation.nBuffer(nLength)})
                << operation.strName << " of " << nLength;
        }
    }
    EXPECT_EQ(strResult, "old");
}

TEST_F(TEncryptionTest, BringsBackWhatItEncrypted) {
    for (size_t nLength = 1; nLength < 70; ++nLength) {
        const std::string strData(nLength, 'd');
        std::string strPlain;
        ASSERT_EQ(oEncryption.EncryptAesEcb(kKey, strData, strResult), 0) << nLength;
        ASSERT_EQ(oEncryption.DecryptAesEcb(kKey, strResult, strPlain), 0);
        EXPECT_EQ(strPlain, strData);
        ASSERT_EQ(oEncryption.EncryptAesCbc(kKey, kIV, strData, strResult), 0);
        ASSERT_EQ(oEncryption.DecryptAesCbc(kKey, kIV, strResult, strPlain), 0);
        EXPECT_EQ(strPlain, strData);
        ASSERT_EQ(oEncryption.EncryptAesOfb(kKey, kIV, strData, strResult), 0);
        ASSERT_EQ(oEncryption.DecryptAesOfb(kKey, kIV, strResult, strPlain), 0);
        EXPECT_EQ(strPlain, strData);
    }
}

TEST_F(TEncryptionTest, AResultLargerThanItsBufferIsAFailureOfTheLibrary) {
    std::string strPublic = "p";
    std::string strPrivate = "q";
    EXPECT_EQ(oEncryption.GenerateRsaKeyPair(strPrivate, strPublic, 2048), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "Failed generating rsa public/private key pair");
    EXPECT_EQ(strPublic + strPrivate, "") << "emptied first";
    EXPECT_EQ(LastCall().nBuffers, (std::vector<size_t>{501, 1250}));
    EXPECT_EQ(LastCall().lKeySize, 2048);
    EXPECT_EQ(oEncryption.GenerateAesKey(100, strResult), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "GenerateAesKey() Failed - Aes API returned 1");
}

TEST_F(TEncryptionTest, MakesRsaKeysThatServe) {
    std::string strPublic;
    std::string strPrivate;
    ASSERT_EQ(oEncryption.GenerateRsaKeyPair(strPrivate, strPublic, 1024), 0);
    std::string strPlain;
    ASSERT_EQ(oEncryption.EncryptRsa(strPublic, "secret", strResult), 0);
    ASSERT_EQ(oEncryption.DecryptRsa(strPrivate, strResult, strPlain), 0);
    EXPECT_EQ(strPlain, "secret");
    ASSERT_EQ(oEncryption.GenerateRsaKeys(1024, strPublic, strPrivate), 0);
    EXPECT_EQ(LastCall().nBuffers, (std::vector<size_t>{1000, 3000}));
    ASSERT_EQ(oEncryption.EncryptRsa(strPublic, "secret", strResult), 0);
    ASSERT_EQ(oEncryption.DecryptRsa(strPrivate, strResult, strPlain), 0);
    EXPECT_EQ(strPlain, "secret");
}

TEST_F(TEncryptionTest, TellsWhatTheLibraryReturned) {
    std::string strOther = "other";
    host.FailNext(Op::OstRtl, {.lResult = 9}, 3);
    EXPECT_EQ(oEncryption.GenerateAesIV(strResult), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "GenerateAesIV() Failed - Aes API returned 9");
    EXPECT_EQ(oEncryption.GenerateAesKey(128, strResult), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "GenerateAesKey() Failed - Aes API returned 9");
    EXPECT_EQ(oEncryption.GenerateRsaKeys(512, strResult, strOther), 1);
    EXPECT_EQ(oEncryption.strErrorMessage(), "GenerateRsaKeys() Failed - Rsa API returned 9");
    EXPECT_EQ(strResult + strOther, "oldother");
}

// ---- Visible characters.

TEST_F(TEncryptionTest, ScramblesVisibleCharactersAndBack) {
    std::string strAll;
    for (char c = 32; c < 127; ++c)
        strAll += c;
    for (const std::string& strText : {strAll, strAll + strAll + strAll, std::string("~"),
                                       std::string(500, '~'), std::string(300, '!')}) {
        std::string strScrambled;
        ASSERT_EQ(oEncryption.EncryptVisibleChar(strText, strScrambled), 0);
        for (const char c : strScrambled)
            EXPECT_TRUE(c >= 32 && c < 127);
        ASSERT_EQ(oEncryption.DecryptVisibleChar(strScrambled, strResult), 0);
        EXPECT_EQ(strResult, strText);
    }
}

TEST_F(TEncryptionTest, ABlankStaysABlankAtEveryPlace) {
    ASSERT_EQ(oEncryption.EncryptVisibleChar(std::string(200, ' '), strResult), 0);
    EXPECT_EQ(strResult, std::string(200, ' '));
}

TEST_F(TEncryptionTest, TheNumbersOfThePlacesAreNotAllAlike) {
    // One character at every place: the escapes apart, many different ones.
    ASSERT_EQ(oEncryption.EncryptVisibleChar(std::string(96, '!'), strResult), 0);
    const std::set<char> different(strResult.begin(), strResult.end());
    EXPECT_GT(different.size(), 80u);
    // The table begins anew behind 96 places.
    std::string strTwice;
    ASSERT_EQ(oEncryption.EncryptVisibleChar(std::string(192, '!'), strTwice), 0);
    EXPECT_EQ(strTwice, strResult + strResult);
}

TEST_F(TEncryptionTest, EscapesFiveValuesAndNoOther) {
    // At the first place the number is 5 to the power 11 modulo 97, which is 71: the character
    // whose value v is comes from v times the inverse of 71, which is 41.
    for (int32_t lValue = 0; lValue < 97; ++lValue) {
        const int32_t lPlain = lValue * 41 % 97;
        if (lPlain > 94)
            continue; // no visible character has this one
        ASSERT_EQ(oEncryption.EncryptVisibleChar(std::string(1, static_cast<char>(lPlain + 32)),
                                                 strResult),
                  0);
        const std::string strExpected = lValue == 7    ? ") "
                                        : lValue == 9  ? "))"
                                        : lValue == 92 ? ")!"
                                        : lValue == 95 ? ")%"
                                        : lValue == 96
                                            ? ")&"
                                            : std::string(1, static_cast<char>(lValue + 32));
        EXPECT_EQ(strResult, strExpected) << lValue;
    }
}

TEST_F(TEncryptionTest, RefusesCharactersOutOfRange) {
    for (const char c : {'\x1F', '\x7F', '\0', '\x80', '\xFF'}) {
        EXPECT_EQ(oEncryption.EncryptVisibleChar(std::string("   ") + c + "x", strResult), 1);
        EXPECT_EQ(oEncryption.strErrorMessage(),
                  std::string("Input character is out of range ") + c);
        EXPECT_EQ(strResult, "   ");
        EXPECT_EQ(oEncryption.DecryptVisibleChar(std::string("  ") + c, strResult), 1);
        EXPECT_EQ(oEncryption.strErrorMessage(),
                  std::string("Input character is out of range ") + c);
        EXPECT_EQ(strResult, "  ");
    }
    EXPECT_EQ(oEncryption.EncryptVisibleChar("~", strResult), 0);
    for (const bool bEncrypt : {true, false}) {
        TEncryption oFresh;
        EXPECT_EQ(bEncrypt ? oFresh.EncryptVisibleChar("", strResult)
                           : oFresh.DecryptVisibleChar("", strResult),
                  1);
        EXPECT_EQ(oFresh.strErrorMessage(), "Input buffer is empty");
    }
}

TEST_F(TEncryptionTest, AnUnknownSecondCharacterCountsAsTheEscapeItself) {
    std::string strKnown;
    ASSERT_EQ(oEncryption.DecryptVisibleChar("))", strKnown), 0);
    for (const std::string strText : {")x", ")\x01", ")~"}) {
        ASSERT_EQ(oEncryption.DecryptVisibleChar(strText, strResult), 0);
        EXPECT_EQ(strResult, strKnown);
    }
    EXPECT_EQ(oEncryption.DecryptVisibleChar("  )", strResult), 1);
    EXPECT_EQ(oEncryption.strErrorMessage().find("TEncryption.DecryptVisibleChar() Failed - "), 0u);
}

// ---- Unexpected failures.

TEST_F(TEncryptionTest, EndsARunTimeFailureInItsOwnText) {
    // A call behind the budget of the host is one that throws.
    const std::string strDescription = "Internal error";
    const auto expect = [&](const std::string& strName, const std::function<int32_t()>& run) {
        host.SetBudget(0);
        EXPECT_EQ(run(), 1);
        host.ForgiveOverrun();
        EXPECT_EQ(oEncryption.strErrorMessage(),
                  "TEncryption." + strName + "() Failed - " + strDescription);
    };
    std::string strOther;
    expect("GenerateRsaKeyPair",
           [&] { return oEncryption.GenerateRsaKeyPair(strResult, strOther, 512); });
    expect("GenerateHash", [&] { return oEncryption.GenerateHash(0, "x", strResult); });
    expect("GenerateAesIV", [&] { return oEncryption.GenerateAesIV(strResult); });
    expect("GenerateAesKey", [&] { return oEncryption.GenerateAesKey(128, strResult); });
    expect("GenerateRsaKeys",
           [&] { return oEncryption.GenerateRsaKeys(512, strResult, strOther); });
    for (const Operation& operation : kOperations)
        expect(operation.strUnexpected, [&] { return operation.run(oEncryption, "x", strResult); });
}

} // namespace
} // namespace brennik::passthru
