// The tree behind the file calls, and what tests lay out and read in it.
#include "tests/world/SimFileNodes.h"
#include "tests/world/SimFiles.h"

#include <algorithm>

namespace brennik::world {

namespace {

constexpr int32_t kLinksAtMost = 40;

[[noreturn]] void Throw(FailureKind kind) {
    throw RuntimeFailure(kind);
}

} // namespace

SimFiles::SimFiles(CallLedger& ledger, const SimClock& clock) : ledger_(ledger), clock_(clock) {
    nodes_["/"] = NewNode(NodeKind::Folder, clock_.PeekEpochSeconds());
    MakeFolders(kHomeFolder);
    MakeFolders(kProgramFolder);
}

SimFiles::~SimFiles() = default;

// Paths.

std::string SimFiles::Native(const std::string& strPath) const {
    auto strNative = NativePath(strPath, drives_);
    if (!strNative) {
        Throw(FailureKind::PathNotFound);
    }
    return strNative->front() == '/' ? std::move(*strNative) : strCurrent_ + "/" + *strNative;
}

SimFiles::NodePtr SimFiles::Lookup(std::string_view strPlace) const {
    const auto found = nodes_.find(strPlace);
    return found == nodes_.end() ? nullptr : found->second;
}

/// The place of a path whose folders exist; the last name itself may be missing.
std::optional<std::string> SimFiles::Resolve(const std::string& strNative, bool bFollowLast,
                                             int32_t nDepth) const {
    const std::vector<std::string> names = SplitPath(strNative);
    std::string strPlace = "/";
    for (size_t nName = 0; nName < names.size(); ++nName) {
        const bool bLast = nName + 1 == names.size();
        const NodePtr folder = Lookup(strPlace);
        if (folder == nullptr || folder->kind != NodeKind::Folder) {
            return std::nullopt;
        }
        if (names[nName] == "..") {
            strPlace = ParentOf(strPlace);
            continue;
        }
        const std::string strFolder = strPlace;
        strPlace = strFolder == "/" ? "/" + names[nName] : strFolder + "/" + names[nName];
        const NodePtr node = Lookup(strPlace);
        if (node != nullptr && node->kind == NodeKind::Link && (!bLast || bFollowLast)) {
            if (nDepth >= kLinksAtMost) {
                return std::nullopt;
            }
            std::string strRest = node->strContent.starts_with('/')
                                      ? node->strContent
                                      : strFolder + "/" + node->strContent;
            for (size_t nRest = nName + 1; nRest < names.size(); ++nRest) {
                strRest += "/" + names[nRest];
            }
            return Resolve(strRest, bFollowLast, nDepth + 1);
        }
    }
    return strPlace;
}

/// The place of a text; PathNotFound when it has none. A file is no folder, so a separator behind
/// its name leads nowhere.
std::string SimFiles::Place(const std::string& strPath, bool bFollowLast) const {
    const std::string strNative = Native(strPath);
    auto strPlace = Resolve(strNative, bFollowLast);
    if (!strPlace) {
        Throw(FailureKind::PathNotFound);
    }
    if (strNative.back() == '/') {
        const NodePtr node = Lookup(*strPlace);
        if (node != nullptr && node->kind == NodeKind::File) {
            Throw(FailureKind::PathNotFound);
        }
    }
    return std::move(*strPlace);
}

SimFiles::NodePtr SimFiles::PeekNode(const std::string& strPath, bool bFollowLast) const {
    try {
        return Lookup(Place(strPath, bFollowLast));
    } catch (const RuntimeFailure&) {
        return nullptr;
    }
}

SimFiles::NodePtr SimFiles::RequireFile(const std::string& strPlace) const {
    NodePtr node = Lookup(strPlace);
    if (node == nullptr || node->kind != NodeKind::File) {
        Throw(FailureKind::FileNotFound);
    }
    return node;
}

SimFiles::NodePtr SimFiles::RequireFolder(const std::string& strPlace) const {
    NodePtr node = Lookup(strPlace);
    if (node == nullptr || node->kind != NodeKind::Folder) {
        Throw(FailureKind::PathNotFound);
    }
    return node;
}

void SimFiles::RequireAllowed(const std::string& strPlace, bool bWriting) const {
    const auto holds = [&](const auto& places) {
        return std::any_of(places.begin(), places.end(), [&](const std::string& strDenied) {
            return IsAtOrBelow(strPlace, strDenied);
        });
    };
    if (holds(denied_) || (bWriting && holds(writeDenied_))) {
        Throw(FailureKind::PermissionDenied);
    }
}

void SimFiles::RequireWritableParent(const std::string& strPlace) const {
    if (RequireFolder(ParentOf(strPlace))->bReadOnly) {
        Throw(FailureKind::PermissionDenied);
    }
}

bool SimFiles::IsProtected(const std::string& strPlace) const {
    const auto holds = [&](const std::string& strKept) {
        const auto strKeptPlace = Resolve(strKept, true);
        return IsAtOrBelow(strKeptPlace.value_or(strKept), strPlace);
    };
    if (strPlace == "/" || holds(kHomeFolder) || holds(strProgramFolder_)) {
        return true;
    }
    return std::any_of(mountPoints_.begin(), mountPoints_.end(), holds) ||
           std::any_of(drives_.begin(), drives_.end(),
                       [&](const auto& drive) { return holds(drive.second); });
}

// Content.

int64_t SimFiles::Room() const {
    return lQuota_ ? std::max<int64_t>(*lQuota_ - TotalBytes(), 0) : INT64_MAX;
}

int64_t SimFiles::TotalBytes() const {
    int64_t lTotal = 0;
    for (const auto& [strPlace, node] : nodes_) {
        if (node->kind == NodeKind::File) {
            lTotal += static_cast<int64_t>(node->strContent.size());
        }
    }
    return lTotal;
}

SimFiles::NodePtr SimFiles::CreateFile(const std::string& strPlace) {
    RequireWritableParent(strPlace);
    return nodes_[strPlace] = NewNode(NodeKind::File, clock_.PeekEpochSeconds());
}

SimFiles::NodePtr SimFiles::OpenNode(const std::string& strPath, OpenMode mode) {
    const std::string strPlace = Place(strPath);
    RequireAllowed(strPlace, mode != OpenMode::Read);
    NodePtr node = Lookup(strPlace);
    if (node != nullptr && node->kind != NodeKind::File) {
        Throw(FailureKind::PermissionDenied);
    }
    if (mode == OpenMode::Read) {
        return RequireFile(strPlace);
    }
    if (node == nullptr) {
        return CreateFile(strPlace);
    }
    if (node->bReadOnly) {
        Throw(FailureKind::PermissionDenied);
    }
    if (mode == OpenMode::Write) {
        node->strContent.clear();
        node->times.lModified = clock_.PeekEpochSeconds();
    }
    return node;
}

/// Writes what fits and moves the position behind it; DiskFull when that isn't all.
void SimFiles::Write(Node& node, size_t& nPosition, std::string_view strData) {
    ++nWrites_;
    const int64_t lRoom = Room();
    const bool bFits = static_cast<int64_t>(strData.size()) <= lRoom;
    const std::string_view strTaken =
        bFits ? strData : strData.substr(0, static_cast<size_t>(lRoom));
    if (nPosition > node.strContent.size()) {
        node.strContent.resize(nPosition);
    }
    node.strContent.replace(nPosition, strTaken.size(), strTaken);
    nPosition += strTaken.size();
    node.times.lModified = clock_.PeekEpochSeconds();
    if (!bFits) {
        Throw(FailureKind::DiskFull);
    }
}

std::optional<std::string> SimFiles::ReadWhole(const std::string& strPath) const {
    try {
        const std::string strPlace = Place(strPath);
        RequireAllowed(strPlace, false);
        return RequireFile(strPlace)->strContent;
    } catch (const RuntimeFailure&) {
        return std::nullopt;
    }
}

/// All of the new content or, when it throws, all of the old.
void SimFiles::ReplaceWhole(const std::string& strPath, std::string_view strContent) {
    const std::string strPlace = Place(strPath);
    RequireAllowed(strPlace, true);
    NodePtr node = Lookup(strPlace);
    if (node != nullptr && (node->kind != NodeKind::File || node->bReadOnly)) {
        Throw(FailureKind::PermissionDenied);
    }
    RequireWritableParent(strPlace);
    // The new text stands beside the old one until it is whole.
    if (Room() < static_cast<int64_t>(strContent.size())) {
        Throw(FailureKind::DiskFull);
    }
    if (node == nullptr) {
        node = CreateFile(strPlace);
    }
    ++nWrites_;
    node->strContent = strContent;
    node->times.lModified = clock_.PeekEpochSeconds();
}

// For tests.

void SimFiles::MakeFolders(const std::string& strNative) {
    std::string strPlace;
    for (const std::string& strName : SplitPath(strNative)) {
        strPlace += "/" + strName;
        const auto strResolved = Resolve(strPlace, true);
        strPlace = strResolved.value_or(strPlace);
        NodePtr& node = nodes_[strPlace];
        if (node == nullptr) {
            node = NewNode(NodeKind::Folder, clock_.PeekEpochSeconds());
        } else if (node->kind != NodeKind::Folder) {
            Throw(FailureKind::PathNotFound);
        }
    }
}

void SimFiles::MakeFolder(const std::string& strPath) {
    MakeFolders(Native(strPath));
}

void SimFiles::Put(const std::string& strPath, std::string_view strContent) {
    MakeFolders(ParentOf(Native(strPath)));
    const std::string strPlace = Place(strPath);
    NodePtr& node = nodes_[strPlace];
    if (node == nullptr) {
        node = NewNode(NodeKind::File, clock_.PeekEpochSeconds());
    } else if (node->kind != NodeKind::File) {
        Throw(FailureKind::FileAlreadyExists);
    }
    node->strContent = strContent;
    node->times.lModified = clock_.PeekEpochSeconds();
}

std::optional<std::string> SimFiles::Get(const std::string& strPath) const {
    const NodePtr node = PeekNode(strPath);
    return node != nullptr && node->kind == NodeKind::File ? std::optional(node->strContent)
                                                           : std::nullopt;
}

std::vector<std::string> SimFiles::Lines(const std::string& strPath) const {
    const std::string strContent = Get(strPath).value_or("");
    std::vector<std::string> lines;
    for (size_t nAt = 0; nAt < strContent.size();) {
        const size_t nFeed = std::min(strContent.find('\n', nAt), strContent.size());
        std::string strLine = strContent.substr(nAt, nFeed - nAt);
        if (nFeed < strContent.size() && !strLine.empty() && strLine.back() == '\r') {
            strLine.pop_back();
        }
        lines.push_back(std::move(strLine));
        nAt = nFeed + 1;
    }
    return lines;
}

bool SimFiles::Exists(const std::string& strPath) const {
    return PeekNode(strPath, false) != nullptr;
}

void SimFiles::MakeLink(const std::string& strPath, const std::string& strTarget) {
    MakeFolders(ParentOf(Native(strPath)));
    const std::string strPlace = Place(strPath, false);
    if (Lookup(strPlace) != nullptr) {
        Throw(FailureKind::FileAlreadyExists);
    }
    const NodePtr node = NewNode(NodeKind::Link, clock_.PeekEpochSeconds());
    node->strContent = strTarget;
    nodes_[strPlace] = node;
}

void SimFiles::Remove(const std::string& strPath) {
    if (PeekNode(strPath, false) != nullptr) {
        EraseTree(nodes_, Place(strPath, false));
    }
}

std::vector<std::string> SimFiles::Tree(const std::string& strFolder) const {
    std::vector<std::string> paths;
    const NodePtr folder = PeekNode(strFolder);
    if (folder == nullptr || folder->kind != NodeKind::Folder) {
        return paths;
    }
    const std::string strPlace = Place(strFolder);
    const size_t nPrefix = strPlace == "/" ? 0 : strPlace.size() + 1;
    for (const auto& [strBelow, node] : Below(nodes_, strPlace)) {
        const char* strMark = node->kind == NodeKind::Folder ? "/"
                              : node->kind == NodeKind::Link ? "@"
                                                             : "";
        paths.push_back(strBelow.substr(nPrefix) + strMark);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

void SimFiles::SetReadOnly(const std::string& strPath, bool bReadOnly) {
    const NodePtr node = PeekNode(strPath);
    if (node == nullptr) {
        Throw(FailureKind::FileNotFound);
    }
    node->bReadOnly = bReadOnly;
}

bool SimFiles::IsReadOnly(const std::string& strPath) const {
    const NodePtr node = PeekNode(strPath);
    return node != nullptr && node->bReadOnly;
}

void SimFiles::SetTimes(const std::string& strPath, const FileTimes& times) {
    const NodePtr node = PeekNode(strPath);
    if (node == nullptr) {
        Throw(FailureKind::FileNotFound);
    }
    node->times = times;
}

void SimFiles::Deny(const std::string& strPath) {
    denied_.insert(PlannedPlace(strPath));
}

void SimFiles::DenyWrites(const std::string& strPath) {
    writeDenied_.insert(PlannedPlace(strPath));
}

void SimFiles::Allow(const std::string& strPath) {
    denied_.erase(PlannedPlace(strPath));
    writeDenied_.erase(PlannedPlace(strPath));
}

void SimFiles::SetCurrentFolder(const std::string& strFolder) {
    const std::string strPlace = Place(strFolder);
    static_cast<void>(RequireFolder(strPlace)); // only that it is there
    strCurrent_ = strPlace;
}

void SimFiles::AddMountPoint(const std::string& strPath) {
    mountPoints_.insert(PlannedPlace(strPath));
}

/// The place that a path has or would have, were its folders made.
std::string SimFiles::PlannedPlace(const std::string& strPath) const {
    const std::string strNative = Native(strPath);
    if (const auto strPlace = Resolve(strNative, true)) {
        return *strPlace;
    }
    std::string strPlanned;
    for (const std::string& strName : SplitPath(strNative)) {
        strPlanned += "/" + strName;
    }
    return strPlanned;
}

} // namespace brennik::world
