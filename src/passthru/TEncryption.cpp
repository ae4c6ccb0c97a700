#include "passthru/TEncryption.h"

#include "platform/Host.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/Rounding.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace brennik {

namespace {

constexpr const char* kEmptyInput = "Input buffer is empty";

// Buffers, in bytes.
constexpr size_t kHashBuffer = 50;
constexpr size_t kAesIvBuffer = 33;
constexpr size_t kAesKeyBuffer = 65;
constexpr size_t kRsaBuffer = 5000;
constexpr size_t kPairPublicBuffer = 501;
constexpr size_t kPairPrivateBuffer = 1250;
constexpr size_t kKeysPublicBuffer = 1000;
constexpr size_t kKeysPrivateBuffer = 3000;

OstRtl& Library() {
    return CurrentHost().ostRtl;
}

/// A text as the library takes it.
std::string WithZero(const std::string& strText) {
    return strText + '\0';
}

// The scrambling of visible text: v characters from the blank on, multiplied by a number of its
// place, modulo 97.
constexpr int32_t kModulus = 97;
constexpr int32_t kGenerator = 5; // its powers are all numbers from 1 to 96
constexpr size_t kTableSize = 96;
constexpr int32_t kFirstVisible = 32;
constexpr int32_t kBehindVisible = 127;
constexpr int32_t kEscape = 9; // written as ")"

using Table = std::array<int32_t, kTableSize>;

int32_t PowerOfGenerator(size_t nExponent) {
    int32_t lPower = 1;
    for (; nExponent > 0; --nExponent) {
        lPower = lPower * kGenerator % kModulus;
    }
    return lPower;
}

size_t ExponentAt(size_t nPlace) {
    return (nPlace * 37 + 11) % kTableSize; // 37 and 96 have no divisor in common
}

Table BuildEncryptTable() {
    Table table{};
    for (size_t nPlace = 0; nPlace < kTableSize; ++nPlace) {
        table[nPlace] = PowerOfGenerator(ExponentAt(nPlace));
    }
    return table;
}

/// The inverses of the numbers above.
Table BuildDecryptTable() {
    Table table{};
    for (size_t nPlace = 0; nPlace < kTableSize; ++nPlace) {
        table[nPlace] = PowerOfGenerator(kTableSize - ExponentAt(nPlace));
    }
    return table;
}

/// Values that would be written as a character of their own outside the visible ones, or as one
/// that the escape is known by: two characters, the escape and this one.
constexpr std::array<std::pair<int32_t, char>, 5> kEscaped{
    {{7, ' '}, {kEscape, ')'}, {92, '!'}, {95, '%'}, {96, '&'}}};

void AppendValue(std::string& strText, int32_t lValue) {
    for (const auto& [lEscaped, cSecond] : kEscaped) {
        if (lEscaped == lValue) {
            strText += static_cast<char>(kEscape + kFirstVisible);
            strText += cSecond;
            return;
        }
    }
    strText += static_cast<char>(lValue + kFirstVisible);
}

/// Any other second character counts as the escape itself.
int32_t ValueBehindEscape(char cSecond) {
    for (const auto& [lEscaped, cKnown] : kEscaped) {
        if (cKnown == cSecond) {
            return lEscaped;
        }
    }
    return kEscape;
}

bool IsVisible(char cByte) {
    const int32_t lCode = static_cast<unsigned char>(cByte);
    return lCode >= kFirstVisible && lCode < kBehindVisible;
}

std::string OutOfRange(char cByte) {
    return std::string("Input character is out of range ") + cByte;
}

} // namespace

/// Runs one call of the library into a buffer and takes the result over.
int32_t TEncryption::Call(const Names& names, size_t nBuffer, std::string& strResult,
                          const LibraryCall& call) {
    const std::string strPrefix = "TEncryption." + std::string(names.strUnexpected);
    return GuardedWithText(strErrorMessage_, strPrefix + "() Failed - ", 1, [&]() -> int32_t {
        std::vector<char> buffer(nBuffer);
        const int32_t lReturned = call(buffer);
        if (lReturned != 0) {
            strErrorMessage_ = std::string(names.strLibrary) + ToDecimal(lReturned);
            return 1;
        }
        strResult = BufferToString(buffer);
        return 0;
    });
}

/// The form that AES and RSA share. The library takes what comes ahead of the data, a key or a
/// key and a vector, in the same order.
template <class Function, class... Ahead>
int32_t TEncryption::Transform(const Names& names, Function function, size_t nBuffer,
                               const std::string& strData, std::string& strResult,
                               const Ahead&... strAhead) {
    if (strData.empty()) {
        strErrorMessage_ = kEmptyInput;
        return 1;
    }
    return Call(names, nBuffer, strResult, [&](std::span<char> buffer) {
        return (Library().*function)(WithZero(strAhead)..., WithZero(strData), buffer);
    });
}

std::string TEncryption::BufferToString(std::span<const char> buffer) {
    return {buffer.begin(), std::find(buffer.begin(), buffer.end(), '\0')};
}

size_t TEncryption::RoundUpTo64(size_t nBytes) {
    return (nBytes + 63) / 64 * 64;
}

size_t TEncryption::EncryptBuffer(size_t nBytes) {
    return RoundUpTo64(nBytes * 2) + 1;
}

size_t TEncryption::DecryptBuffer(size_t nLength) {
    return RoundUpTo64(static_cast<size_t>(RoundedTiesToEven(static_cast<double>(nLength) / 2))) +
           1;
}

int32_t TEncryption::GenerateRsaKeyPair(std::string& strPrivateKey, std::string& strPublicKey,
                                        int32_t lKeySize) {
    return GuardedWithText(
        strErrorMessage_, "TEncryption.GenerateRsaKeyPair() Failed - ", 1, [&]() -> int32_t {
            strPrivateKey.clear();
            strPublicKey.clear();
            std::vector<char> publicKey(kPairPublicBuffer);
            std::vector<char> privateKey(kPairPrivateBuffer);
            if (Library().CreateRsaKey(publicKey, privateKey, lKeySize) != 0) {
                strErrorMessage_ = "Failed generating rsa public/private key pair";
                return 1;
            }
            strPublicKey = BufferToString(publicKey);
            strPrivateKey = BufferToString(privateKey);
            return 0;
        });
}

int32_t TEncryption::GenerateHash(int32_t lHashType, const std::string& strData,
                                  std::string& strHash) {
    return Call({"GenerateHash", "GenerateHash() Failed - Hash API returned "}, kHashBuffer,
                strHash, [&](std::span<char> buffer) -> int32_t {
                    // The result is meant to be 16 bits wide.
                    return Narrow<int16_t>(lHashType == 1 ? Library().ComputeMD5(strData, buffer)
                                                          : Library().ComputeSHA1(strData, buffer));
                });
}

int32_t TEncryption::GenerateAesIV(std::string& strIV) {
    return Call({"GenerateAesIV", "GenerateAesIV() Failed - Aes API returned "}, kAesIvBuffer,
                strIV, [](std::span<char> buffer) { return Library().CreateAesIv(buffer); });
}

int32_t TEncryption::GenerateAesKey(int32_t lKeySize, std::string& strKey) {
    return Call({"GenerateAesKey", "GenerateAesKey() Failed - Aes API returned "}, kAesKeyBuffer,
                strKey,
                [&](std::span<char> buffer) { return Library().CreateAesKey(buffer, lKeySize); });
}

// The small letters of the names with CBC are meant: readers of these texts know them so.

int32_t TEncryption::EncryptAesEcb(const std::string& strKey, const std::string& strData,
                                   std::string& strResult) {
    return Transform({"EncryptAesEcb", "EncryptAesEcb() Failed - Aes API returned "},
                     &OstRtl::AesEcbEncrypt, EncryptBuffer(strData.size() + 1), strData, strResult,
                     strKey);
}

int32_t TEncryption::DecryptAesEcb(const std::string& strKey, const std::string& strData,
                                   std::string& strResult) {
    return Transform({"DecryptAesEcb", "DecryptAesEcb() Failed - Aes API returned "},
                     &OstRtl::AesEcbDecrypt, DecryptBuffer(strData.size()), strData, strResult,
                     strKey);
}

int32_t TEncryption::EncryptAesCbc(const std::string& strKey, const std::string& strIV,
                                   const std::string& strData, std::string& strResult) {
    return Transform({"EncryptAescbc", "EncryptAesCbc() Failed - Aes API returned "},
                     &OstRtl::AesCbcEncrypt, EncryptBuffer(strData.size() + 4), strData, strResult,
                     strKey, strIV);
}

int32_t TEncryption::EncryptAesOfb(const std::string& strKey, const std::string& strIV,
                                   const std::string& strData, std::string& strResult) {
    return Transform({"EncryptAesOfb", "EncryptAesOfb() Failed - Aes API returned "},
                     &OstRtl::AesOfbEncrypt, EncryptBuffer(strData.size() + 4), strData, strResult,
                     strKey, strIV);
}

int32_t TEncryption::DecryptAesCbc(const std::string& strKey, const std::string& strIV,
                                   const std::string& strData, std::string& strResult) {
    return Transform({"DecryptAescbc", "DecryptAesCbc() Failed - Aes API returned "},
                     &OstRtl::AesCbcDecrypt, DecryptBuffer(strData.size()), strData, strResult,
                     strKey, strIV);
}

int32_t TEncryption::DecryptAesOfb(const std::string& strKey, const std::string& strIV,
                                   const std::string& strData, std::string& strResult) {
    return Transform({"DecryptAesOfb", "DecryptAesOfb() Failed - Aes API returned "},
                     &OstRtl::AesOfbDecrypt, DecryptBuffer(strData.size()), strData, strResult,
                     strKey, strIV);
}

int32_t TEncryption::GenerateRsaKeys(int32_t lKeySize, std::string& strPublicKey,
                                     std::string& strPrivateKey) {
    std::vector<char> privateKey(kKeysPrivateBuffer);
    const int32_t lStatus =
        Call({"GenerateRsaKeys", "GenerateRsaKeys() Failed - Rsa API returned "}, kKeysPublicBuffer,
             strPublicKey, [&](std::span<char> publicKey) {
                 return Library().CreateRsaKey(publicKey, privateKey, lKeySize);
             });
    if (lStatus == 0) {
        strPrivateKey = BufferToString(privateKey);
    }
    return lStatus;
}

int32_t TEncryption::EncryptRsa(const std::string& strKey, const std::string& strData,
                                std::string& strResult) {
    return Transform({"EncryptRsa", "EncryptRsa() Failed - Rsa API returned "}, &OstRtl::RsaEncrypt,
                     kRsaBuffer, strData, strResult, strKey);
}

int32_t TEncryption::DecryptRsa(const std::string& strKey, const std::string& strData,
                                std::string& strResult) {
    return Transform({"DecryptRsa", "DecryptRsa() Failed - Rsa API returned "}, &OstRtl::RsaDecrypt,
                     kRsaBuffer, strData, strResult, strKey);
}

// What the next two build goes into a string of its own: the caller may give one string for both.

int32_t TEncryption::EncryptVisibleChar(const std::string& strData, std::string& strResult) {
    if (strData.empty()) {
        strErrorMessage_ = kEmptyInput;
        return 1;
    }
    std::string strBuilt;
    const int32_t lStatus = GuardedWithText(
        strErrorMessage_, "TEncryption.EncryptVisibleChar() Failed - ", 1, [&]() -> int32_t {
            static const Table table = BuildEncryptTable();
            for (size_t nPlace = 0; nPlace < strData.size(); ++nPlace) {
                const char cByte = strData[nPlace];
                if (!IsVisible(cByte)) {
                    strErrorMessage_ = OutOfRange(cByte);
                    return 1;
                }
                AppendValue(strBuilt,
                            (cByte - kFirstVisible) * table[nPlace % kTableSize] % kModulus);
            }
            return 0;
        });
    strResult = std::move(strBuilt);
    return lStatus;
}

int32_t TEncryption::DecryptVisibleChar(const std::string& strData, std::string& strResult) {
    if (strData.empty()) {
        strErrorMessage_ = kEmptyInput;
        return 1;
    }
    std::string strBuilt;
    const int32_t lStatus = GuardedWithText(
        strErrorMessage_, "TEncryption.DecryptVisibleChar() Failed - ", 1, [&]() -> int32_t {
            static const Table table = BuildDecryptTable();
            // An escape takes two characters of the input and gives one of the output, by whose
            // place the table goes.
            for (size_t nPlace = 0; nPlace < strData.size(); ++nPlace) {
                const char cByte = strData[nPlace];
                if (!IsVisible(cByte)) {
                    strErrorMessage_ = OutOfRange(cByte);
                    return 1;
                }
                int32_t lValue = cByte - kFirstVisible;
                if (lValue == kEscape) {
                    if (++nPlace == strData.size()) {
                        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
                    }
                    lValue = ValueBehindEscape(strData[nPlace]);
                }
                strBuilt += static_cast<char>(
                    lValue * table[strBuilt.size() % kTableSize] % kModulus + kFirstVisible);
            }
            return 0;
        });
    strResult = std::move(strBuilt);
    return lStatus;
}

} // namespace brennik
