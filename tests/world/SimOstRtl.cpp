#include "tests/world/SimOstRtl.h"

#include <utility>

namespace brennik::world {

template <class Call>
int32_t SimOstRtl::Enter(NotedCall noted, Call&& call) {
    const Fault* fault = ledger_.Enter(Op::OstRtl);
    calls.push_back(std::move(noted));
    return fault != nullptr ? fault->lResult.value_or(ostrtlerror::kBadInput) : call();
}

int32_t SimOstRtl::ComputeSHA1(std::string_view strInput, std::span<char> output) {
    return Enter({"ComputeSHA1", {std::string(strInput)}, {output.size()}},
                 [&] { return library_.ComputeSHA1(strInput, output); });
}

int32_t SimOstRtl::ComputeMD5(std::string_view strInput, std::span<char> output) {
    return Enter({"ComputeMD5", {std::string(strInput)}, {output.size()}},
                 [&] { return library_.ComputeMD5(strInput, output); });
}

int32_t SimOstRtl::CreateAesIv(std::span<char> output) {
    return Enter({"CreateAesIv", {}, {output.size()}},
                 [&] { return library_.CreateAesIv(output); });
}

int32_t SimOstRtl::CreateAesKey(std::span<char> output, int32_t lKeySize) {
    return Enter({"CreateAesKey", {}, {output.size()}, lKeySize},
                 [&] { return library_.CreateAesKey(output, lKeySize); });
}

int32_t SimOstRtl::CreateRsaKey(std::span<char> publicKey, std::span<char> privateKey,
                                int32_t lKeySize) {
    return Enter({"CreateRsaKey", {}, {publicKey.size(), privateKey.size()}, lKeySize},
                 [&] { return library_.CreateRsaKey(publicKey, privateKey, lKeySize); });
}

int32_t SimOstRtl::AesEcbEncrypt(std::string_view strKey, std::string_view strData,
                                 std::span<char> output) {
    return Enter({"AesEcbEncrypt", {std::string(strKey), std::string(strData)}, {output.size()}},
                 [&] { return library_.AesEcbEncrypt(strKey, strData, output); });
}

int32_t SimOstRtl::AesEcbDecrypt(std::string_view strKey, std::string_view strData,
                                 std::span<char> output) {
    return Enter({"AesEcbDecrypt", {std::string(strKey), std::string(strData)}, {output.size()}},
                 [&] { return library_.AesEcbDecrypt(strKey, strData, output); });
}

int32_t SimOstRtl::AesCbcEncrypt(std::string_view strKey, std::string_view strIV,
                                 std::string_view strData, std::span<char> output) {
    return Enter({"AesCbcEncrypt",
                  {std::string(strKey), std::string(strIV), std::string(strData)},
                  {output.size()}},
                 [&] { return library_.AesCbcEncrypt(strKey, strIV, strData, output); });
}

int32_t SimOstRtl::AesCbcDecrypt(std::string_view strKey, std::string_view strIV,
                                 std::string_view strData, std::span<char> output) {
    return Enter({"AesCbcDecrypt",
                  {std::string(strKey), std::string(strIV), std::string(strData)},
                  {output.size()}},
                 [&] { return library_.AesCbcDecrypt(strKey, strIV, strData, output); });
}

int32_t SimOstRtl::AesOfbEncrypt(std::string_view strKey, std::string_view strIV,
                                 std::string_view strData, std::span<char> output) {
    return Enter({"AesOfbEncrypt",
                  {std::string(strKey), std::string(strIV), std::string(strData)},
                  {output.size()}},
                 [&] { return library_.AesOfbEncrypt(strKey, strIV, strData, output); });
}

int32_t SimOstRtl::AesOfbDecrypt(std::string_view strKey, std::string_view strIV,
                                 std::string_view strData, std::span<char> output) {
    return Enter({"AesOfbDecrypt",
                  {std::string(strKey), std::string(strIV), std::string(strData)},
                  {output.size()}},
                 [&] { return library_.AesOfbDecrypt(strKey, strIV, strData, output); });
}

int32_t SimOstRtl::RsaEncrypt(std::string_view strKey, std::string_view strData,
                              std::span<char> output) {
    return Enter({"RsaEncrypt", {std::string(strKey), std::string(strData)}, {output.size()}},
                 [&] { return library_.RsaEncrypt(strKey, strData, output); });
}

int32_t SimOstRtl::RsaDecrypt(std::string_view strKey, std::string_view strData,
                              std::span<char> output) {
    return Enter({"RsaDecrypt", {std::string(strKey), std::string(strData)}, {output.size()}},
                 [&] { return library_.RsaDecrypt(strKey, strData, output); });
}

} // namespace brennik::world
