// A pseudo-terminal whose master side is ours: the near end of a serial line that another program
// opens by the name of the slave side. It tells when that program comes and goes.
// It stands on the operating system; tests of the far ends play them in virtual time instead.
#pragma once

#include <cstdint>
#include <string>

namespace brennik::sim {

class PseudoTerminal {
  public:
    PseudoTerminal() = default;

    /// Hangs the line up: whoever has it open meets the end at once, and what it had not read yet
    /// is lost.
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /// Makes it, with a raw slave side that nobody has open. Once only. False with the reason in
    /// strError.
    bool Open(std::string& strError);

    /// The slave side, such as "/dev/pts/3".
    const std::string& strDevice() const { return strDevice_; }

    /// The master side. Reads and writes on it never wait.
    int Master() const { return master_; }

    /// The speed that the slave side is set to, in bits per second.
    int64_t lSpeed() const;

    /// Becomes readable when somebody opens or closes the slave side; -1 when the host doesn't
    /// tell, and one has to look.
    int Watch() const { return watch_; }

    /// Somebody has opened the slave side since it was made or renewed; perhaps it is closed again.
    bool bOpened();

    /// The one who opened it is its holder from now on.
    void BeginHold();

    /// Since BeginHold the slave side was closed by all who had it open, and opened by another.
    /// Without this one that closes and another that opens at once would look like one.
    bool bChangedHands();

    /// Makes the line as good as new for the next holder: what the last one left unread is thrown
    /// away, and its settings are too while nobody has the line open. False when the last one took
    /// the line for itself alone and left it so: nobody can open it any more.
    bool Renew();

    /// The same, but the settings stay as the last one left them, as on a line with a device.
    bool Clear();

  private:
    bool bDeserted() const;
    bool Clear(bool bSettings);
    void TakeEvents();
    void Opened();
    void Closed();

    int master_ = -1;
    int watch_ = -1;
    std::string strDevice_;
    int nHolders_ = 0;
    bool bCounted_ = false; ///< the opening told next, if that is next, stands in nHolders_ already
    bool bOpened_ = false;
    bool bAllLeft_ = false;
    bool bChangedHands_ = false;
};

} // namespace brennik::sim
