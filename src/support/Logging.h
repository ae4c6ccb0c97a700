// Writes stamped lines to a text file, opened, appended to and closed again for each line, so that
// the file is whole at every moment. Control characters are shown by name; long numbers can be
// masked; an oversized file can be moved aside. Behind it stands AppendLine of the host's files;
// tests put files in memory in its place. Logging never fails a run: what can't be written is lost.
#pragma once

#include "platform/DateTime.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace brennik {

class Logging {
  public:
    /// The folder of the file. Writing a line puts a "\" at its end if there is none.
    const std::string& strLogPath() const { return strLogPath_; }
    void strLogPath(const std::string& strValue) { strLogPath_ = strValue; }

    const std::string& strLogFile() const { return strLogFile_; }
    void strLogFile(const std::string& strValue) { strLogFile_ = strValue; }

    /// Nothing is written unless it is True; False at first.
    bool bLoggingEnabled() const { return bLoggingEnabled_; }
    void bLoggingEnabled(bool bValue) { bLoggingEnabled_ = bValue; }

    /// Masks runs of 13 digits or more but for their last four; False at first.
    bool bObscureNumericStrings() const { return bObscureNumericStrings_; }
    void bObscureNumericStrings(bool bValue) { bObscureNumericStrings_ = bValue; }

    /// The whole path of the file; unless empty it stands in for the folder and the name.
    const std::string& strLogFileDirAndName() const { return strLogFileDirAndName_; }
    void strLogFileDirAndName(const std::string& strValue) { strLogFileDirAndName_ = strValue; }

    /// Moves a file of more than 1,048,576 bytes into the subfolder "old" before each line; always
    /// that of strLogPath and strLogFile. False at first.
    bool bArchiveLogFile() const { return bArchiveLogFile_; }
    void bArchiveLogFile(bool bValue) { bArchiveLogFile_ = bValue; }

    /// Writes one line, the message passed through ProcessLogMsg.
    void Logit(std::string_view strMsg) { LogJoined({strMsg}); }

    /// The same for a message in parts, which need not be joined first.
    void LogJoined(std::initializer_list<std::string_view> strParts);

    /// Writes the message raw. Without strLogFileDirAndName nothing can be written.
    void Logit2(std::string_view strMsg);

    /// The message with control characters and bytes of 127 and above by name: "<STX>",
    /// "<ASCII 9>". All other bytes stay.
    static std::string ProcessLogMsg(std::string_view strMsg);

  private:
    std::string FileFor(const std::string& strFile);
    void AppendStamp(std::string& strLine);
    void WriteLine(const std::string& strFile, std::string strLine) const;
    void ArchiveLogFile() const;

    std::string strLogPath_;
    std::string strLogFile_;
    bool bLoggingEnabled_ = false;
    bool bObscureNumericStrings_ = false;
    std::string strLogFileDirAndName_;
    bool bArchiveLogFile_ = false;

    DateTime dateDay_;   ///< the day that strDay_ tells, midnight
    std::string strDay_; ///< "14 Nov 2026", kept since it changes once a day
};

} // namespace brennik
