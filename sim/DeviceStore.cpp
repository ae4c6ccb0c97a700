#include "sim/DeviceStore.h"

#include <algorithm>

namespace brennik::sim {

namespace {

void AppendParts(std::string_view strText, std::string& strPath) {
    while (!strText.empty()) {
        const size_t nEnd = std::min(strText.find_first_of("/\\"), strText.size());
        const std::string_view strPart = strText.substr(0, nEnd);
        strText.remove_prefix(std::min(nEnd + 1, strText.size()));
        if (!strPart.empty() && strPart != "." && strPart != "..") {
            strPath += strPath.empty() ? "" : "/";
            strPath += strPart;
        }
    }
}

} // namespace

bool MemoryStore::Open(const std::string& strPath, std::optional<size_t> nKeep) {
    open_ = &files_[strPath];
    if (nKeep && *nKeep < open_->size()) {
        open_->resize(*nKeep);
    }
    return true;
}

bool MemoryStore::Write(std::string_view strBytes) {
    if (open_ != nullptr) {
        open_->append(strBytes);
    }
    return open_ != nullptr;
}

bool MemoryStore::Append(const std::string& strPath, std::string_view strBytes) {
    files_[strPath] += strBytes;
    return true;
}

std::string StoredPath(std::string_view strFolder, std::string_view strName) {
    std::string strFile;
    AppendParts(strName, strFile);
    std::string strPath;
    AppendParts(strFolder, strPath);
    strPath += strPath.empty() ? "" : "/";
    strPath += strFile.empty() ? "_" : strFile;
    std::replace(strPath.begin(), strPath.end(), '\0', '_');
    return strPath;
}

} // namespace brennik::sim
