// The optional file that maps the host: which folders the drive letters stand for, and which serial
// lines the port names.
// For real it is BrennikHost.ini in the program's folder; tests hand in its text.
#pragma once

#include "platform/Paths.h"

#include <string>
#include <string_view>

namespace brennik {

class HostFile {
  public:
    /// From the text of a host file; an empty one maps nothing of its own.
    explicit HostFile(std::string_view strContent);

    /// Reads the host file in that folder; one that is missing or unreadable maps nothing.
    static HostFile InFolder(const std::string& strFolder);

    /// With a [DRIVES] section its entries are all drives there are, each a letter and an absolute
    /// native folder; without one there is drive C, the root.
    const DriveTable& Drives() const { return drives_; }

    /// The native path of a port, "COM1" or with "\\.\" in front: its entry in [PORTS], an absolute
    /// native path, or without an entry /dev/ttyS0 for COM1 and so on. Empty for a port that
    /// doesn't exist. Names ignore case.
    std::string PortPath(std::string_view strPort) const;

  private:
    std::string strContent_;
    DriveTable drives_;
};

} // namespace brennik
