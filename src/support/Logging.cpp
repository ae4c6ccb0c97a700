#include "support/Logging.h"

#include "platform/Host.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/FileSystem.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace brennik {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr size_t kStampLength = 32; // with room to spare for the month names of other languages
constexpr int32_t kLargestFile = 1048576;
constexpr size_t kLongestPlainRun = 12;
constexpr size_t kDigitsShown = 4;

// The bytes below 32 that have a name. 8 has none: it is told by its number.
constexpr std::array<std::string_view, 32> kNames = {
    "NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "",   "",  "LF",
    "",    "",    "CR",  "",    "",    "DLE", "",    "",    "",   "",  "NAK",
    "SYN", "",    "",    "",    "",    "",    "FS",  "",    "RS", "US"};

constexpr size_t kShownWidth = std::string_view("<ASCII 127>").size(); // there is no longer one

// What stands in the log for one byte.
struct ShownByte {
    std::array<char, kShownWidth> text{};
    uint8_t nLength = 0;

    constexpr void Append(char c) { text[nLength++] = c; }
    constexpr void Append(std::string_view strMore) {
        for (const char c : strMore) {
            Append(c);
        }
    }
    constexpr void AppendNumber(size_t nNumber) {
        if (nNumber >= 10) {
            AppendNumber(nNumber / 10);
        }
        Append(static_cast<char>('0' + nNumber % 10));
    }
};

constexpr ShownByte Show(size_t nByte) {
    ShownByte shown;
    if (nByte >= 32 && nByte < 127) {
        shown.Append(static_cast<char>(nByte));
        return shown;
    }
    shown.Append('<');
    if (nByte < kNames.size() && !kNames[nByte].empty()) {
        shown.Append(kNames[nByte]);
    } else {
        shown.Append("ASCII ");
        shown.AppendNumber(nByte);
    }
    shown.Append('>');
    return shown;
}

// Packets pass through here byte by byte, so every answer stands ready.
constexpr std::array<ShownByte, 256> kShown = [] {
    std::array<ShownByte, 256> table{};
    for (size_t nByte = 0; nByte < table.size(); ++nByte) {
        table[nByte] = Show(nByte);
    }
    return table;
}();

const ShownByte& ShownFor(char c) {
    return kShown[static_cast<unsigned char>(c)];
}

size_t ShownLength(std::string_view strMsg) {
    size_t nLength = 0;
    for (const char c : strMsg) {
        nLength += ShownFor(c).nLength;
    }
    return nLength;
}

// Every byte is copied at full width and the next one put over what was too much: a copy of fixed
// size is far cheaper than one of the right length.
void AppendShown(std::string& strLine, std::string_view strMsg) {
    size_t nEnd = strLine.size();
    strLine.resize(nEnd + ShownLength(strMsg) + kShownWidth);
    for (const char c : strMsg) {
        const ShownByte& shown = ShownFor(c);
        std::memcpy(strLine.data() + nEnd, shown.text.data(), kShownWidth);
        nEnd += shown.nLength;
    }
    strLine.resize(nEnd);
}

void AppendTwoDigits(std::string& strText, int32_t lValue) {
    strText += static_cast<char>('0' + lValue / 10 % 10);
    strText += static_cast<char>('0' + lValue % 10);
}

void AppendFourDigits(std::string& strText, int32_t lValue) {
    AppendTwoDigits(strText, lValue / 100);
    AppendTwoDigits(strText, lValue);
}

std::string MakeMask(size_t nLength) {
    return std::string(nLength, '*');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string ObscureNumericStrings(std::string_view strLine) {
    std::string strResult;
    strResult.reserve(strLine.size());
    while (!strLine.empty()) {
        const auto notDigit = std::find_if_not(strLine.begin(), strLine.end(), IsDigit);
        const auto nDigits = static_cast<size_t>(notDigit - strLine.begin());
        size_t nCopied = 0;
        if (nDigits > kLongestPlainRun) {
            nCopied = nDigits - kDigitsShown;
            strResult += MakeMask(nCopied);
        }
        const auto nextDigit = std::find_if(notDigit, strLine.end(), IsDigit);
        const auto nEnd = static_cast<size_t>(nextDigit - strLine.begin());
        strResult += strLine.substr(nCopied, nEnd - nCopied);
        strLine.remove_prefix(nEnd);
    }
    return strResult;
}

} // namespace

void Logging::LogJoined(std::initializer_list<std::string_view> strParts) {
    if (!bLoggingEnabled_) {
        return;
    }
    Quietly([&] {
        const std::string strFile = FileFor(strLogFile_);
        size_t nLength = kStampLength + kLineEnd.size() + kShownWidth;
        for (const std::string_view strPart : strParts) {
            nLength += ShownLength(strPart);
        }
        std::string strLine;
        strLine.reserve(nLength);
        AppendStamp(strLine);
        for (const std::string_view strPart : strParts) {
            AppendShown(strLine, strPart);
        }
        WriteLine(strFile, std::move(strLine));
    });
}

void Logging::Logit2(std::string_view strMsg) {
    if (!bLoggingEnabled_) {
        return;
    }
    Quietly([&] {
        // Not strLogFile but the other, empty name is put behind the folder: it is meant so.
        const std::string strFile = FileFor(strLogFileDirAndName_);
        std::string strLine;
        AppendStamp(strLine);
        strLine += strMsg;
        WriteLine(strFile, std::move(strLine));
    });
}

std::string Logging::ProcessLogMsg(std::string_view strMsg) {
    std::string strResult;
    AppendShown(strResult, strMsg);
    return strResult;
}

// The file to write, after the archive rule had its turn.
std::string Logging::FileFor(const std::string& strFile) {
    if (strLogFileDirAndName_.empty()) {
        if (strLogPath_.empty()) {
            throw RuntimeFailure(FailureKind::PathNotFound);
        }
        if (!strLogPath_.ends_with('\\')) {
            strLogPath_ += '\\';
        }
    }
    if (bArchiveLogFile_) {
        ArchiveLogFile();
    }
    return strLogFileDirAndName_.empty() ? strLogPath_ + strFile : strLogFileDirAndName_;
}

void Logging::AppendStamp(std::string& strLine) {
    const DateTime now = LocalNow();
    const DateTime day{now.iYear, now.iMonth, now.iDay, 0, 0, 0};
    if (strDay_.empty() || day != dateDay_) {
        std::string strDay;
        AppendTwoDigits(strDay, now.iDay);
        strDay += ' ';
        strDay += CurrentHost().clock.MonthName(now.iMonth);
        strDay += ' ';
        AppendFourDigits(strDay, now.iYear);
        strDay_ = std::move(strDay);
        dateDay_ = day;
    }
    strLine += strDay_;
    strLine += ": ";
    AppendTwoDigits(strLine, now.iHour);
    strLine += ':';
    AppendTwoDigits(strLine, now.iMinute);
    strLine += ':';
    AppendTwoDigits(strLine, now.iSecond);
    strLine += " : ";
}

void Logging::WriteLine(const std::string& strFile, std::string strLine) const {
    if (bObscureNumericStrings_) {
        strLine = ObscureNumericStrings(strLine);
    }
    strLine += kLineEnd;
    CurrentHost().files.AppendLine(strFile, strLine);
}

void Logging::ArchiveLogFile() const {
    FileSystem oFileSystem;
    if (!oFileSystem.FolderExists(strLogPath_)) {
        return;
    }
    std::string strTarget = strLogPath_ + "old\\";
    if (!oFileSystem.FolderExists(strTarget) && oFileSystem.CreateFolder(strTarget) != 0) {
        return;
    }
    const std::string strFile = strLogPath_ + strLogFile_;
    if (oFileSystem.GetFileSize(strFile) <= kLargestFile) {
        return;
    }
    const DateTime now = LocalNow();
    AppendFourDigits(strTarget, now.iYear);
    AppendTwoDigits(strTarget, now.iMonth);
    AppendTwoDigits(strTarget, now.iDay);
    strTarget += '_';
    AppendTwoDigits(strTarget, now.iHour);
    AppendTwoDigits(strTarget, now.iMinute);
    AppendTwoDigits(strTarget, now.iSecond);
    strTarget += '_';
    strTarget += strLogFile_;
    // A file that can't be moved goes on growing.
    static_cast<void>(oFileSystem.MoveFile(strFile, strTarget));
}

} // namespace brennik
