// The content of the INI file that was read last, kept with an index of its sections and checked
// against the disk at every use, so that reading a whole profile costs one read of the file.
// Room-internal: LinuxProfileStrings stands on it.
#pragma once

#include "platform/IniText.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace brennik {

/// A file beyond this size is no INI file of ours; it can neither be read nor written.
inline constexpr size_t kLargestIniFile = 67108864;

class IniFileCache {
  public:
    /// The file at that native path as it stands now; null when it can't be read. Valid until the
    /// next call.
    IniIndex* Read(const std::string& strPath);

  private:
    /// What changes whenever a file is changed or replaced.
    struct Identity {
        uint64_t nDevice = 0;
        uint64_t nInode = 0;
        int64_t lSize = 0;
        int64_t lModified = 0; ///< nanoseconds since the epoch, as lChanged
        int64_t lChanged = 0;
        bool operator==(const Identity&) const = default;
    };

    static std::optional<Identity> IdentityOf(const std::string& strPath, int nDescriptor);
    void Load(const std::string& strPath);

    Identity identity_;
    bool bSettled_ = false; ///< a further change is sure to show in the identity
    std::unique_ptr<IniIndex> index_;
};

} // namespace brennik
