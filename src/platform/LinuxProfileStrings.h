// Single values of INI files on disk. A read goes through a checked copy in memory; a write takes
// a lock on the folder, writes a new file beside the old one and renames it over it, so that
// parallel writers lose nothing and the file is whole at any moment.
// Tests above the seam put the files in memory in its place.
#pragma once

#include "platform/IniFileCache.h"
#include "platform/Paths.h"
#include "platform/ProfileStrings.h"

#include <string>

namespace brennik {

class LinuxProfileStrings : public ProfileStrings {
  public:
    explicit LinuxProfileStrings(DriveTable drives);

    std::string GetPrivateProfileString(const std::string& strSection, const std::string& strKey,
                                        const std::string& strDefault, int32_t lBufferSize,
                                        const std::string& strPath) override;
    int32_t WritePrivateProfileString(const std::string& strSection, const std::string& strKey,
                                      const std::string& strValue,
                                      const std::string& strPath) override;

  private:
    DriveTable drives_;
    IniFileCache cache_;
};

} // namespace brennik
