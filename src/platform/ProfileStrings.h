// Reading and writing one value of an INI file, as the two profile-string calls do it.
// For real they stand on the file system with locks and renames (LinuxProfileStrings); tests put
// the files in memory in their place. Both share the rules of the text (platform/IniText.h).
#pragma once

#include <cstdint>
#include <string>

namespace brennik {

class ProfileStrings {
  public:
    virtual ~ProfileStrings() = default;

    /// The value of the key in the section, or the default when the file, the section or the key
    /// is missing, cut to lBufferSize - 1 characters (nothing when lBufferSize is below 1).
    virtual std::string GetPrivateProfileString(const std::string& strSection,
                                                const std::string& strKey,
                                                const std::string& strDefault, int32_t lBufferSize,
                                                const std::string& strPath) = 0;

    /// Creates the file, the section and the key as needed, or replaces the value; every other
    /// byte stays. Non-zero on success; 0 when the file can't be written (the old one is then
    /// whole) or when the value can't stand on one line.
    virtual int32_t WritePrivateProfileString(const std::string& strSection,
                                              const std::string& strKey,
                                              const std::string& strValue,
                                              const std::string& strPath) = 0;
};

} // namespace brennik
