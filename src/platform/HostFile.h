// The optional file that maps the host: which folders the drive letters stand for.
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

  private:
    DriveTable drives_;
};

} // namespace brennik
