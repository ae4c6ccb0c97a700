// The cryptographic library over OpenSSL's EVP interface. It has no state; what tests put in its
// place notes the calls and hands them on to it.
#pragma once

#include "platform/OstRtl.h"

namespace brennik {

class OpenSslRtl : public OstRtl {
  public:
    int32_t ComputeSHA1(std::string_view strInput, std::span<char> output) override;
    int32_t ComputeMD5(std::string_view strInput, std::span<char> output) override;
    int32_t CreateAesIv(std::span<char> output) override;
    int32_t CreateAesKey(std::span<char> output, int32_t lKeySize) override;
    int32_t CreateRsaKey(std::span<char> publicKey, std::span<char> privateKey,
                         int32_t lKeySize) override;
    int32_t AesEcbEncrypt(std::string_view strKey, std::string_view strData,
                          std::span<char> output) override;
    int32_t AesEcbDecrypt(std::string_view strKey, std::string_view strData,
                          std::span<char> output) override;
    int32_t AesCbcEncrypt(std::string_view strKey, std::string_view strIV, std::string_view strData,
                          std::span<char> output) override;
    int32_t AesCbcDecrypt(std::string_view strKey, std::string_view strIV, std::string_view strData,
                          std::span<char> output) override;
    int32_t AesOfbEncrypt(std::string_view strKey, std::string_view strIV, std::string_view strData,
                          std::span<char> output) override;
    int32_t AesOfbDecrypt(std::string_view strKey, std::string_view strIV, std::string_view strData,
                          std::span<char> output) override;
    int32_t RsaEncrypt(std::string_view strKey, std::string_view strData,
                       std::span<char> output) override;
    int32_t RsaDecrypt(std::string_view strKey, std::string_view strData,
                       std::span<char> output) override;
};

} // namespace brennik
