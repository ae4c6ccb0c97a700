// The cryptographic library of the simulated host: the real one, since it only computes, with each
// call entered in the ledger, noted, and failing on demand.
#pragma once

#include "platform/OpenSslRtl.h"
#include "tests/world/CallLedger.h"

#include <string>
#include <vector>

namespace brennik::world {

class SimOstRtl : public OstRtl {
  public:
    explicit SimOstRtl(CallLedger& ledger) : ledger_(ledger) {}

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

    /// One call as it came: its name, its texts with their zero bytes, the sizes of its buffers.
    struct NotedCall {
        std::string strName;
        std::vector<std::string> strTexts;
        std::vector<size_t> nBuffers;
        int32_t lKeySize = 0;
    };
    std::vector<NotedCall> calls;

  private:
    /// A planned failure gives its number, 1 where it names none.
    template <class Call>
    int32_t Enter(NotedCall noted, Call&& call);

    CallLedger& ledger_;
    OpenSslRtl library_;
};

} // namespace brennik::world
