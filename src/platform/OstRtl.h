// The cryptographic library as the encryption facade calls it: digests, AES and RSA over texts.
// For real it stands on OpenSSL (OpenSslRtl); tests put one in its place that notes the calls and
// fails on demand.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace brennik {

namespace ostrtlerror {
inline constexpr int32_t kBadInput = 1;       ///< a key, vector or data that can't be read
inline constexpr int32_t kBufferTooSmall = 2; ///< the result and its zero byte don't fit
inline constexpr int32_t kFailed = 3;         ///< the computation itself
} // namespace ostrtlerror

/// Every text argument ends at its first zero byte, where it has one. A result is text with a zero
/// byte behind it in the caller's buffer. Keys, initialisation vectors, encrypted data and digests
/// are hexadecimal text, lower case where the library makes it, either case where it reads it; RSA
/// keys are PEM. 0 is success, anything else one of the numbers above.
class OstRtl {
  public:
    virtual ~OstRtl() = default;

    /// The digest of all bytes of the input, zero bytes among them.
    virtual int32_t ComputeSHA1(std::string_view strInput, std::span<char> output) = 0;
    virtual int32_t ComputeMD5(std::string_view strInput, std::span<char> output) = 0;

    /// 16 random bytes.
    virtual int32_t CreateAesIv(std::span<char> output) = 0;

    /// A random key of 128, 192 or 256 bits.
    virtual int32_t CreateAesKey(std::span<char> output, int32_t lKeySize) = 0;

    /// A key pair of so many bits, 512 to 16384.
    virtual int32_t CreateRsaKey(std::span<char> publicKey, std::span<char> privateKey,
                                 int32_t lKeySize) = 0;

    /// ECB and CBC pad as PKCS #7 says, OFB doesn't pad.
    virtual int32_t AesEcbEncrypt(std::string_view strKey, std::string_view strData,
                                  std::span<char> output) = 0;
    virtual int32_t AesEcbDecrypt(std::string_view strKey, std::string_view strData,
                                  std::span<char> output) = 0;
    virtual int32_t AesCbcEncrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) = 0;
    virtual int32_t AesCbcDecrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) = 0;
    virtual int32_t AesOfbEncrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) = 0;
    virtual int32_t AesOfbDecrypt(std::string_view strKey, std::string_view strIV,
                                  std::string_view strData, std::span<char> output) = 0;

    /// PKCS #1 version 1.5; encrypts with a public and decrypts with a private key.
    virtual int32_t RsaEncrypt(std::string_view strKey, std::string_view strData,
                               std::span<char> output) = 0;
    virtual int32_t RsaDecrypt(std::string_view strKey, std::string_view strData,
                               std::span<char> output) = 0;
};

} // namespace brennik
