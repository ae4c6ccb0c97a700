// A serial line whose far end is in the hands of the test: a pseudo-terminal, spoken to with plain
// system calls.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik::system_tests {

/// How a terminal is set, in the flags of the operating system.
struct SeenSettings {
    uint32_t lControlFlags = 0;
    uint32_t lInputFlags = 0;
    uint32_t lOutputFlags = 0;
    uint32_t lLocalFlags = 0;
    uint32_t lBaudRate = 0;
    unsigned char cXon = 0;
    unsigned char cXoff = 0;

    bool operator==(const SeenSettings&) const = default;
};

class PseudoTerminal {
  public:
    PseudoTerminal();
    ~PseudoTerminal() { HangUp(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /// Of the near end, the line that a test opens.
    const std::string& strPath() const { return strPath_; }

    /// Writes all of the text.
    void Send(std::string_view strText);

    /// So many bytes, or fewer when no more come for a long time.
    std::string Receive(size_t nBytes);

    /// All that is there.
    std::string ReceiveAll();

    void HangUp();

    SeenSettings Settings() const;

    /// The near end's permissions.
    void Permit(unsigned nMode) const;

  private:
    int nFarEnd_;
    std::string strPath_;
};

/// The open descriptor of this process for a path, or -1.
int DescriptorFor(const std::string& strPath);

/// Bytes that a read of the descriptor would find.
int BytesThere(int nDescriptor);

/// In a process of its own: root becomes somebody whom permissions bind.
void BecomeOrdinaryUser();

} // namespace brennik::system_tests
