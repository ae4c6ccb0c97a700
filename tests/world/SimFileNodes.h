// The entries of the files in memory and plain work on their paths, for SimFiles alone.
// A place is the canonical native path of an entry: absolute, no "." or "..", no "/" at its end
// but for the root itself.
#pragma once

#include "tests/world/SimFiles.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik::world {

enum class NodeKind : uint8_t { File, Folder, Link };

struct SimFiles::Node {
    NodeKind kind = NodeKind::File;
    bool bReadOnly = false;
    FileTimes times;
    std::string strContent; ///< the target of a link
};

std::shared_ptr<SimFiles::Node> NewNode(NodeKind kind, int64_t lNow);

/// The names of a path between its slashes, empty ones and "." left out.
std::vector<std::string> SplitPath(std::string_view strPath);

/// The place of the folder that holds a place.
std::string ParentOf(std::string_view strPlace);

/// True when the place is the folder or lies in or below it.
bool IsAtOrBelow(std::string_view strPlace, std::string_view strFolder);

/// All entries below a folder, in the order of their places, so that folders come first.
std::vector<std::pair<std::string, std::shared_ptr<SimFiles::Node>>>
Below(const SimFiles::NodeMap& nodes, const std::string& strFolder);

/// Takes an entry out with all below it.
void EraseTree(SimFiles::NodeMap& nodes, const std::string& strPlace);

} // namespace brennik::world
