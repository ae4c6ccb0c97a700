// All that a simulated file system holds, with the content of each file, so that two moments can
// be compared as a whole.
#pragma once

#include "tests/world/SimFiles.h"

#include <map>
#include <string>

namespace brennik::session {

/// By native path; folders end in "/", links in "@", and have no content.
inline std::map<std::string, std::string> Contents(const world::SimFiles& files) {
    std::map<std::string, std::string> contents;
    for (const std::string& strPath : files.Tree("/")) {
        const bool bFile = strPath.back() != '/' && strPath.back() != '@';
        contents[strPath] = bFile ? files.Get(strPath).value() : "";
    }
    return contents;
}

} // namespace brennik::session
