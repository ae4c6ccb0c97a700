// Digests, AES and RSA for the few places that need them, and a scrambling of visible text.
// It stands on the cryptographic library of the current host; tests put one that fails on demand
// there. Only GenerateHash is called by the system itself.
//
// A status is 0 for success and 1 for failure, told by strErrorMessage alone. Keys, vectors,
// encrypted data and digests are hexadecimal text, RSA keys PEM; a text ends at its first zero
// byte. A result that doesn't fit the buffer of its operation is a failure of the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace brennik {

class TEncryption {
  public:
    /// Empties both keys first. The buffers are 501 bytes for the public and 1250 for the private
    /// key, which a key of 1024 bits fits.
    [[nodiscard]] int32_t GenerateRsaKeyPair(std::string& strPrivateKey, std::string& strPublicKey,
                                             int32_t lKeySize);

    /// MD5 for lHashType 1, SHA-1 for any other; the one operation that reads zero bytes.
    [[nodiscard]] int32_t GenerateHash(int32_t lHashType, const std::string& strData,
                                       std::string& strHash);

    [[nodiscard]] int32_t GenerateAesIV(std::string& strIV);

    /// lKeySize in bits.
    [[nodiscard]] int32_t GenerateAesKey(int32_t lKeySize, std::string& strKey);

    // An empty strData is a failure of these.
    [[nodiscard]] int32_t EncryptAesEcb(const std::string& strKey, const std::string& strData,
                                        std::string& strResult);
    [[nodiscard]] int32_t DecryptAesEcb(const std::string& strKey, const std::string& strData,
                                        std::string& strResult);
    [[nodiscard]] int32_t EncryptAesCbc(const std::string& strKey, const std::string& strIV,
                                        const std::string& strData, std::string& strResult);
    [[nodiscard]] int32_t EncryptAesOfb(const std::string& strKey, const std::string& strIV,
                                        const std::string& strData, std::string& strResult);
    [[nodiscard]] int32_t DecryptAesCbc(const std::string& strKey, const std::string& strIV,
                                        const std::string& strData, std::string& strResult);
    [[nodiscard]] int32_t DecryptAesOfb(const std::string& strKey, const std::string& strIV,
                                        const std::string& strData, std::string& strResult);

    /// The buffers are 1000 bytes for the public and 3000 for the private key.
    [[nodiscard]] int32_t GenerateRsaKeys(int32_t lKeySize, std::string& strPublicKey,
                                          std::string& strPrivateKey);

    // An empty strData is a failure of these too.
    [[nodiscard]] int32_t EncryptRsa(const std::string& strKey, const std::string& strData,
                                     std::string& strResult);
    [[nodiscard]] int32_t DecryptRsa(const std::string& strKey, const std::string& strData,
                                     std::string& strResult);

    /// Visible characters, 32 to 126, to visible characters and back. What stands behind a
    /// character out of range isn't looked at; strResult then holds what came before it. An empty
    /// strData is a failure that leaves strResult alone; both may be one string.
    [[nodiscard]] int32_t EncryptVisibleChar(const std::string& strData, std::string& strResult);
    [[nodiscard]] int32_t DecryptVisibleChar(const std::string& strData, std::string& strResult);

    const std::string& strErrorMessage() const { return strErrorMessage_; }

  private:
    /// How an operation is spelt in the text of an unexpected failure, and in that of the library
    /// with its kind. The two differ for the CBC operations.
    struct Names {
        std::string_view strUnexpected;
        std::string_view strLibrary;
    };
    using LibraryCall = std::function<int32_t(std::span<char>)>;

    int32_t Call(const Names& names, size_t nBuffer, std::string& strResult,
                 const LibraryCall& call);
    template <class Function, class... Ahead>
    int32_t Transform(const Names& names, Function function, size_t nBuffer,
                      const std::string& strData, std::string& strResult, const Ahead&... strAhead);
    /// The buffers of AES hold the hexadecimal text of the padded data, or the data of such a text.
    static size_t EncryptBuffer(size_t nBytes);
    static size_t DecryptBuffer(size_t nLength);
    static std::string BufferToString(std::span<const char> buffer);
    static size_t RoundUpTo64(size_t nBytes);

    std::string strErrorMessage_;
};

} // namespace brennik
