#include "platform/Paths.h"

#include "platform/PlainText.h"

#include <algorithm>

namespace brennik {

namespace {

bool IsSeparator(char character) {
    return character == '\\' || character == '/';
}

/// The upper-cased letter of a text in drive form, or a zero byte.
char DriveLetterOf(std::string_view strText) {
    if (strText.size() < 2 || strText[1] != ':') {
        return '\0';
    }
    if (strText.size() > 2 && !IsSeparator(strText[2])) {
        return '\0';
    }
    const char letter = UpperAscii(strText[0]);
    return letter >= 'A' && letter <= 'Z' ? letter : '\0';
}

std::string WithSlashes(std::string_view strText) {
    std::string strPath(strText);
    std::replace(strPath.begin(), strPath.end(), '\\', '/');
    return strPath;
}

std::string WithBackslashes(std::string_view strText) {
    std::string strPath(strText);
    std::replace(strPath.begin(), strPath.end(), '/', '\\');
    return strPath;
}

/// What of a drive's folder stands in front of the "/" that begins a path below it.
size_t LengthOfRoot(const std::string& strFolder) {
    return strFolder == "/" ? 0 : strFolder.size();
}

} // namespace

DriveTable DefaultDrives() {
    return DriveTable{{'C', "/"}};
}

bool IsKnownDrive(char letter, const DriveTable& drives) {
    return drives.count(UpperAscii(letter)) != 0;
}

std::optional<std::string> NativePath(std::string_view strText, const DriveTable& drives) {
    if (strText.empty() || strText.find('\0') != std::string_view::npos ||
        strText.substr(0, 2) == "\\\\") {
        return std::nullopt;
    }
    const char letter = DriveLetterOf(strText);
    if (letter == '\0') {
        return WithSlashes(strText);
    }
    const auto drive = drives.find(letter);
    if (drive == drives.end() || drive->second.empty()) {
        return std::nullopt;
    }
    std::string strPath = drive->second == "/" ? std::string() : drive->second;
    strPath += WithSlashes(strText.substr(2));
    return strPath.empty() ? std::string("/") : strPath;
}

std::string DriveForm(std::string_view strText, const DriveTable& drives) {
    if (DriveLetterOf(strText) != '\0') {
        return WithBackslashes(strText);
    }
    if (strText.empty() || strText.front() != '/') {
        return std::string(strText);
    }
    char letter = '\0';
    size_t nDeepest = 0;
    for (const auto& [driveLetter, strFolder] : drives) {
        const size_t nFolder = LengthOfRoot(strFolder);
        const bool bHolds = !strFolder.empty() &&
                            strText.substr(0, nFolder) == strFolder.substr(0, nFolder) &&
                            (strText.size() == nFolder || strText[nFolder] == '/');
        if (bHolds && (letter == '\0' || nFolder > nDeepest)) {
            letter = driveLetter;
            nDeepest = nFolder;
        }
    }
    if (letter == '\0') {
        return std::string(strText);
    }
    const std::string strRest = WithBackslashes(strText.substr(nDeepest));
    return std::string(1, letter) + ":" + (strRest.empty() ? "\\" : strRest);
}

std::string WithoutEndSeparators(std::string strNative) {
    while (strNative.size() > 1 && strNative.back() == '/') {
        strNative.pop_back();
    }
    return strNative;
}

} // namespace brennik
