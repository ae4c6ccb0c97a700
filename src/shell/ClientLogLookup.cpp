#include "platform/DateTime.h"
#include "platform/RuntimeFailure.h"
#include "shell/BrennikClnt.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/FileSystem.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace brennik {

namespace {

constexpr const char* kLoginMark = " logged in, Mode=";
constexpr const char* kInfoMark = " INFO   :";
constexpr size_t kInfoMarkLength = 9;

// The modification time of a log, in local time.
DateTime ModifiedAt(FileSystem& oFileSystem, const std::string& strPath) {
    DateTime created;
    DateTime accessed;
    DateTime modified;
    // A log whose times can't be had counts as the oldest.
    static_cast<void>(oFileSystem.GetFileTimes(strPath, created, accessed, modified, true));
    return modified;
}

// The newest of the files; the first of several with one time. The last entry of the table is
// always an empty one and names no file.
std::string NewestOf(FileSystem& oFileSystem, const std::string& strFolder,
                     const std::vector<std::string>& strFiles) {
    std::string strNewest = strFiles.front();
    DateTime newest = ModifiedAt(oFileSystem, strFolder + strNewest);
    for (size_t i = 1; i + 1 < strFiles.size(); ++i) {
        const DateTime modified = ModifiedAt(oFileSystem, strFolder + strFiles[i]);
        if (modified > newest) {
            strNewest = strFiles[i];
            newest = modified;
        }
    }
    return strNewest;
}

// The id in a line that tells of a login; nothing in any other line.
std::optional<std::string> IdentityIn(const std::string& strLine) {
    const size_t nLogin = strLine.find(kLoginMark);
    const size_t nInfo = strLine.find(kInfoMark);
    if (nLogin == std::string::npos || nInfo == std::string::npos)
        return std::nullopt;
    const size_t nStart = nInfo + kInfoMarkLength;
    if (nStart > nLogin)
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    std::string strIdentity = Trim(strLine.substr(nStart, nLogin - nStart));
    std::replace(strIdentity.begin(), strIdentity.end(), ',', '-');
    return strIdentity;
}

} // namespace

void GetTerminalIdFromClientLog(const std::string& strLogFolder, std::string& strTerminalId) {
    strTerminalId.clear();
    Quietly([&] {
        const std::string strFolder = WithTrailingBackslash(strLogFolder);
        FileSystem oFileSystem;
        std::vector<std::string> strFiles;
        if (oFileSystem.GetFilesInFolder(strFiles, strFolder, "*flclient*") != 0)
            return;
        const int32_t lHandle =
            oFileSystem.OpenFile(strFolder + NewestOf(oFileSystem, strFolder, strFiles), 0);
        if (lHandle < 0)
            return;
        // The first login counts, although later ones are newer, and ends the search even without
        // an id: it is meant so. An unknown handle is at its end, so that a failed open ends here
        // as well, and so does a read that fails, which would fail again for ever.
        std::optional<std::string> strIdentity;
        while (!strIdentity && !oFileSystem.Eof(lHandle)) {
            std::string strLine;
            if (oFileSystem.ReadData(lHandle, strLine, true, 0) != 0)
                break;
            strIdentity = IdentityIn(strLine);
        }
        strTerminalId = strIdentity.value_or("");
        oFileSystem.CloseFile(lHandle);
    });
}

} // namespace brennik
