#include "platform/OpenSslRtl.h"

#include <algorithm>
#include <array>
#include <memory>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <optional>
#include <string>

namespace brennik {

namespace {

constexpr size_t kAesBlock = 16;
constexpr int32_t kLeastRsaBits = 512;
constexpr int32_t kMostRsaBits = 16384;

template <auto free>
struct Free {
    template <class Object>
    void operator()(Object* object) const {
        free(object);
    }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Free<EVP_CIPHER_CTX_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Free<EVP_PKEY_CTX_free>>;
using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;
using Memory = std::unique_ptr<BIO, Free<BIO_free>>;

using Computed = std::optional<std::string>; ///< nothing when the computation failed

/// A text as the library reads it: up to the first zero byte.
std::string_view TextOf(std::string_view strText) {
    return strText.substr(0, strText.find('\0'));
}

const unsigned char* BytesOf(std::string_view strText) {
    return reinterpret_cast<const unsigned char*>(strText.data());
}

unsigned char* BytesOf(std::string& strText) {
    return reinterpret_cast<unsigned char*>(strText.data());
}

std::string ToHex(std::string_view strBytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string strText;
    strText.reserve(strBytes.size() * 2);
    for (const char cByte : strBytes) {
        const auto lByte = static_cast<unsigned char>(cByte);
        strText += digits[lByte >> 4];
        strText += digits[lByte & 0x0F];
    }
    return strText;
}

int ValueOfDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> FromHex(std::string_view strText) {
    if (strText.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string strBytes;
    for (size_t n = 0; n < strText.size(); n += 2) {
        const int high = ValueOfDigit(strText[n]);
        const int low = ValueOfDigit(strText[n + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        strBytes += static_cast<char>(high << 4 | low);
    }
    return strBytes;
}

int32_t Deliver(std::string_view strResult, std::span<char> output) {
    if (strResult.size() >= output.size()) {
        return ostrtlerror::kBufferTooSmall;
    }
    std::copy(strResult.begin(), strResult.end(), output.begin());
    output[strResult.size()] = '\0';
    return 0;
}

int32_t DeliverIfAny(const Computed& result, std::span<char> output) {
    return result ? Deliver(*result, output) : ostrtlerror::kFailed;
}

int32_t Digest(const EVP_MD* kind, std::string_view strInput, std::span<char> output) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned nSize = 0;
    if (EVP_Digest(strInput.data(), strInput.size(), digest.data(), &nSize, kind, nullptr) != 1) {
        return ostrtlerror::kFailed;
    }
    return Deliver(ToHex({reinterpret_cast<const char*>(digest.data()), nSize}), output);
}

int32_t RandomBytes(size_t nBytes, std::span<char> output) {
    std::string strBytes(nBytes, '\0');
    if (RAND_bytes(BytesOf(strBytes), static_cast<int>(nBytes)) != 1) {
        return ostrtlerror::kFailed;
    }
    return Deliver(ToHex(strBytes), output);
}

enum class Mode { Ecb, Cbc, Ofb };

const EVP_CIPHER* CipherOf(Mode mode, size_t nKey) {
    switch (nKey) {
    case 16:
        return mode == Mode::Ecb   ? EVP_aes_128_ecb()
               : mode == Mode::Cbc ? EVP_aes_128_cbc()
                                   : EVP_aes_128_ofb();
    case 24:
        return mode == Mode::Ecb   ? EVP_aes_192_ecb()
               : mode == Mode::Cbc ? EVP_aes_192_cbc()
                                   : EVP_aes_192_ofb();
    case 32:
        return mode == Mode::Ecb   ? EVP_aes_256_ecb()
               : mode == Mode::Cbc ? EVP_aes_256_cbc()
                                   : EVP_aes_256_ofb();
    default:
        return nullptr;
    }
}

/// One pass of a cipher over the bytes.
Computed Transform(const EVP_CIPHER* cipher, const std::string& strKey, const std::string& strIV,
                   std::string_view strBytes, bool bEncrypt) {
    const CipherContext context(EVP_CIPHER_CTX_new());
    std::string strResult(strBytes.size() + kAesBlock, '\0');
    int nFirst = 0;
    int nLast = 0;
    if (context == nullptr ||
        EVP_CipherInit_ex(context.get(), cipher, nullptr, BytesOf(strKey),
                          strIV.empty() ? nullptr : BytesOf(strIV), bEncrypt ? 1 : 0) != 1 ||
        EVP_CipherUpdate(context.get(), BytesOf(strResult), &nFirst, BytesOf(strBytes),
                         static_cast<int>(strBytes.size())) != 1 ||
        EVP_CipherFinal_ex(context.get(), BytesOf(strResult) + nFirst, &nLast) != 1) {
        return std::nullopt;
    }
    strResult.resize(static_cast<size_t>(nFirst) + static_cast<size_t>(nLast));
    return strResult;
}

int32_t Aes(Mode mode, bool bEncrypt, std::string_view strKeyText, std::string_view strIVText,
            std::string_view strDataText, std::span<char> output) {
    const auto strKey = FromHex(TextOf(strKeyText));
    const auto strIV = FromHex(TextOf(strIVText));
    const auto strData = bEncrypt ? std::string(TextOf(strDataText)) : FromHex(TextOf(strDataText));
    const EVP_CIPHER* cipher = strKey ? CipherOf(mode, strKey->size()) : nullptr;
    if (cipher == nullptr || !strIV || !strData ||
        strIV->size() != (mode == Mode::Ecb ? 0 : kAesBlock)) {
        return ostrtlerror::kBadInput;
    }
    const Computed result = Transform(cipher, *strKey, *strIV, *strData, bEncrypt);
    return bEncrypt && result ? Deliver(ToHex(*result), output) : DeliverIfAny(result, output);
}

std::string ContentOf(BIO* memory) {
    char* data = nullptr;
    const long nSize = BIO_get_mem_data(memory, &data);
    return nSize > 0 ? std::string(data, static_cast<size_t>(nSize)) : std::string();
}

Key ReadKey(std::string_view strPem, bool bPublic) {
    const Memory memory(BIO_new_mem_buf(strPem.data(), static_cast<int>(strPem.size())));
    if (memory == nullptr) {
        return nullptr;
    }
    // A key with a password asks nobody for it: it can't be read.
    const auto noPassword = [](char*, int, int, void*) { return -1; };
    return Key(bPublic ? PEM_read_bio_PUBKEY(memory.get(), nullptr, noPassword, nullptr)
                       : PEM_read_bio_PrivateKey(memory.get(), nullptr, noPassword, nullptr));
}

using KeyOperation = int (*)(EVP_PKEY_CTX*, unsigned char*, size_t*, const unsigned char*, size_t);

int32_t Rsa(KeyOperation begin(EVP_PKEY_CTX*), const Key& key, std::string_view strBytes,
            Computed& result) {
    if (key == nullptr || EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA) {
        return ostrtlerror::kBadInput;
    }
    const KeyContext context(EVP_PKEY_CTX_new(key.get(), nullptr));
    const KeyOperation operate = context == nullptr ? nullptr : begin(context.get());
    size_t nSize = 0;
    if (operate == nullptr || EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1 ||
        operate(context.get(), nullptr, &nSize, BytesOf(strBytes), strBytes.size()) != 1) {
        return ostrtlerror::kFailed;
    }
    std::string strResult(nSize, '\0');
    if (operate(context.get(), BytesOf(strResult), &nSize, BytesOf(strBytes), strBytes.size()) !=
        1) {
        return ostrtlerror::kFailed;
    }
    strResult.resize(nSize);
    result = std::move(strResult);
    return 0;
}

} // namespace

int32_t OpenSslRtl::ComputeSHA1(std::string_view strInput, std::span<char> output) {
    return Digest(EVP_sha1(), strInput, output);
}

int32_t OpenSslRtl::ComputeMD5(std::string_view strInput, std::span<char> output) {
    return Digest(EVP_md5(), strInput, output);
}

int32_t OpenSslRtl::CreateAesIv(std::span<char> output) {
    return RandomBytes(kAesBlock, output);
}

int32_t OpenSslRtl::CreateAesKey(std::span<char> output, int32_t lKeySize) {
    if (lKeySize != 128 && lKeySize != 192 && lKeySize != 256) {
        return ostrtlerror::kBadInput;
    }
    return RandomBytes(static_cast<size_t>(lKeySize) / 8, output);
}

int32_t OpenSslRtl::CreateRsaKey(std::span<char> publicKey, std::span<char> privateKey,
                                 int32_t lKeySize) {
    if (lKeySize < kLeastRsaBits || lKeySize > kMostRsaBits) {
        return ostrtlerror::kBadInput;
    }
    const Key key(EVP_RSA_gen(static_cast<unsigned>(lKeySize)));
    const Memory publicText(BIO_new(BIO_s_mem()));
    const Memory privateText(BIO_new(BIO_s_secmem()));
    if (key == nullptr || publicText == nullptr || privateText == nullptr ||
        PEM_write_bio_PUBKEY(publicText.get(), key.get()) != 1 ||
        PEM_write_bio_PrivateKey(privateText.get(), key.get(), nullptr, nullptr, 0, nullptr,
                                 nullptr) != 1) {
        return ostrtlerror::kFailed;
    }
    const int32_t lResult = Deliver(ContentOf(publicText.get()), publicKey);
    return lResult != 0 ? lResult : Deliver(ContentOf(privateText.get()), privateKey);
}

int32_t OpenSslRtl::AesEcbEncrypt(std::string_view strKey, std::string_view strData,
                                  std::span<char> output) {
    return Aes(Mode::Ecb, true, strKey, "", strData, output);
}

int32_t OpenSslRtl::AesEcbDecrypt(std::string_view strKey, std::string_view strData,
                                  std::span<char> output) {
    return Aes(Mode::Ecb, false, strKey, "", strData, output);
}

int32_t OpenSslRtl::AesCbcEncrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) {
    return Aes(Mode::Cbc, true, strKey, strIV, strData, output);
}

int32_t OpenSslRtl::AesCbcDecrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) {
    return Aes(Mode::Cbc, false, strKey, strIV, strData, output);
}

int32_t OpenSslRtl::AesOfbEncrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) {
    return Aes(Mode::Ofb, true, strKey, strIV, strData, output);
}

int32_t OpenSslRtl::AesOfbDecrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) {
    return Aes(Mode::Ofb, false, strKey, strIV, strData, output);
}

int32_t OpenSslRtl::RsaEncrypt(std::string_view strKey, std::string_view strData,
                               std::span<char> output) {
    const auto begin = [](EVP_PKEY_CTX* context) -> KeyOperation {
        return EVP_PKEY_encrypt_init(context) == 1 ? EVP_PKEY_encrypt : nullptr;
    };
    Computed result;
    const int32_t lResult = Rsa(begin, ReadKey(TextOf(strKey), true), TextOf(strData), result);
    return lResult != 0 ? lResult : Deliver(ToHex(*result), output);
}

int32_t OpenSslRtl::RsaDecrypt(std::string_view strKey, std::string_view strData,
                               std::span<char> output) {
    const auto begin = [](EVP_PKEY_CTX* context) -> KeyOperation {
        return EVP_PKEY_decrypt_init(context) == 1 ? EVP_PKEY_decrypt : nullptr;
    };
    const auto strBytes = FromHex(TextOf(strData));
    if (!strBytes) {
        return ostrtlerror::kBadInput;
    }
    Computed result;
    const int32_t lResult = Rsa(begin, ReadKey(TextOf(strKey), false), *strBytes, result);
    return lResult != 0 ? lResult : Deliver(*result, output);
}

} // namespace brennik
