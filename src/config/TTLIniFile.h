// The one door to INI text: single values of one file, by section and key, all as plain text.
// Behind it stand the profile strings of the current host; tests put files in memory there.
// It knows nothing of what sections mean, keeps no file open and caches nothing.
#pragma once

#include "support/ListControl.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace brennik {

/// The buffer that every caller in this system reads with: a longer value is cut.
inline constexpr int32_t kIniBufferSize = 10000;

class TTLIniFile {
  public:
    /// The value of the key as it stands, cut to bufferSize - 1 characters; szDefault when the
    /// file, the section or the key is missing. Empty when the read fails, which a negative
    /// bufferSize and a value of more than 32,767 characters do.
    std::string GetINIString(const std::string& section, const std::string& szItem,
                             const std::string& szDefault, int32_t bufferSize);

    /// Creates file, section and key as needed. Non-zero on success, 0 when it can't be written.
    [[nodiscard]] int32_t SetINIString(const std::string& section, const std::string& stItem,
                                       const std::string& stNewValue);

    /// Splits the line at one character, dropping empty values, and gives their number. The array
    /// ends with one empty element behind the last value, so go by the number; a line without
    /// values leaves it untouched. -1 when 16 bits can't count the values.
    int16_t FillSingleLineValues(std::vector<std::string>& strLineValues,
                                 const std::string& strLine, int16_t iSeperator);

    /// Replaces the items of the control by the values of the line and gives their number. With 0,
    /// no values, and -1, too many, the control stays as it was.
    int32_t FillBoxWithLineValues(ListControl& oBox, const std::string& strLineValue,
                                  int16_t iSeperator);

    /// Adds the values of the keys 1 to lNumLines of a section to what the control holds, skipping
    /// empty ones, and gives the number added; 0 when that fails.
    int32_t FillBoxWithMultiLineValues(ListControl& oBox, const std::string& strSection,
                                       int32_t lNumLines);

    /// The folder of the file. It gains a trailing backslash the first time the file is used.
    const std::string& strIniFileDir() const { return strIniFileDir_; }
    void strIniFileDir(std::string strIniFileDir) { strIniFileDir_ = std::move(strIniFileDir); }

    /// The file's name without its folder.
    const std::string& strIniFileName() const { return strIniFileName_; }
    void strIniFileName(std::string strIniFileName) { strIniFileName_ = std::move(strIniFileName); }

  private:
    static std::string EnsureTrailingBackslash(std::string strFolder);
    std::string IniFilePath();

    std::string strIniFileDir_;
    std::string strIniFileName_;
};

} // namespace brennik
