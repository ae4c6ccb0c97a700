#include "tests/world/SimFileNodes.h"

namespace brennik::world {

namespace {

std::string PrefixOf(const std::string& strFolder) {
    return strFolder == "/" ? strFolder : strFolder + "/";
}

} // namespace

std::shared_ptr<SimFiles::Node> NewNode(NodeKind kind, int64_t lNow) {
    auto node = std::make_shared<SimFiles::Node>();
    node->kind = kind;
    node->times = FileTimes{lNow, lNow, lNow};
    return node;
}

std::vector<std::string> SplitPath(std::string_view strPath) {
    std::vector<std::string> names;
    while (!strPath.empty()) {
        const size_t nSlash = strPath.find('/');
        const std::string_view strName = strPath.substr(0, nSlash);
        if (!strName.empty() && strName != ".") {
            names.emplace_back(strName);
        }
        strPath.remove_prefix(nSlash == std::string_view::npos ? strPath.size() : nSlash + 1);
    }
    return names;
}

std::string ParentOf(std::string_view strPlace) {
    const size_t nSlash = strPlace.rfind('/');
    return nSlash == 0 || nSlash == std::string_view::npos
               ? "/"
               : std::string(strPlace.substr(0, nSlash));
}

bool IsAtOrBelow(std::string_view strPlace, std::string_view strFolder) {
    if (strFolder == "/" || strPlace == strFolder) {
        return true;
    }
    return strPlace.size() > strFolder.size() && strPlace.starts_with(strFolder) &&
           strPlace[strFolder.size()] == '/';
}

std::vector<std::pair<std::string, std::shared_ptr<SimFiles::Node>>>
Below(const SimFiles::NodeMap& nodes, const std::string& strFolder) {
    const std::string strPrefix = PrefixOf(strFolder);
    std::vector<std::pair<std::string, std::shared_ptr<SimFiles::Node>>> found;
    for (auto at = nodes.upper_bound(strPrefix);
         at != nodes.end() && at->first.starts_with(strPrefix); ++at) {
        found.emplace_back(*at);
    }
    return found;
}

void EraseTree(SimFiles::NodeMap& nodes, const std::string& strPlace) {
    const std::string strPrefix = PrefixOf(strPlace);
    auto at = nodes.upper_bound(strPrefix);
    while (at != nodes.end() && at->first.starts_with(strPrefix)) {
        at = nodes.erase(at);
    }
    nodes.erase(strPlace);
}

} // namespace brennik::world
