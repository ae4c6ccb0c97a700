#include "tests/world/SimFiles.h"

#include "platform/Wildcards.h"
#include "tests/world/SimFileNodes.h"

#include <algorithm>

namespace brennik::world {

namespace {

[[noreturn]] void Throw(FailureKind kind) {
    throw RuntimeFailure(kind);
}

} // namespace

void SimFiles::Note(Op op, const std::string& strPath) {
    if (ledger_.Recording()) {
        ledger_.Record(std::string(NameOf(op)) + " " + strPath);
    }
}

void SimFiles::EnterOrThrow(Op op, const std::string& strPath) {
    const Fault* fault = ledger_.Enter(op);
    Note(op, strPath);
    if (fault != nullptr) {
        Throw(fault->kind.value_or(FailureKind::DeviceIoError));
    }
}

// Streams.

class SimFiles::Stream : public TextStream {
  public:
    Stream(SimFiles& files, NodePtr node, OpenMode mode)
        : files_(files), node_(std::move(node)), mode_(mode) {
        ++files_.nOpenStreams_;
    }
    ~Stream() override { Release(); }

    std::string Read(size_t nCount) override {
        const std::string& strContent = BeginRead();
        std::string strRead = strContent.substr(nPosition_, nCount);
        nPosition_ += strRead.size();
        return strRead;
    }

    std::string ReadLine() override {
        const std::string& strContent = BeginRead();
        if (nPosition_ == strContent.size()) {
            Throw(FailureKind::InputPastEndOfFile);
        }
        const size_t nFeed = strContent.find('\n', nPosition_);
        const size_t nEnd = nFeed == std::string::npos ? strContent.size() : nFeed;
        std::string strLine = strContent.substr(nPosition_, nEnd - nPosition_);
        if (nFeed != std::string::npos && !strLine.empty() && strLine.back() == '\r') {
            strLine.pop_back();
        }
        nPosition_ = nFeed == std::string::npos ? nEnd : nFeed + 1;
        return strLine;
    }

    std::string ReadAll() override {
        const std::string& strContent = BeginRead();
        std::string strRest = strContent.substr(nPosition_);
        nPosition_ = strContent.size();
        return strRest;
    }

    bool AtEndOfStream() override {
        const std::string& strContent = BeginRead();
        return nPosition_ == strContent.size();
    }

    void Write(std::string_view strData) override {
        BeginWrite();
        if (mode_ == OpenMode::Append) {
            nPosition_ = node_->strContent.size();
        }
        files_.Write(*node_, nPosition_, strData);
    }

    void WriteLine(std::string_view strData) override {
        std::string strLine(strData);
        strLine += "\r\n";
        Write(strLine);
    }

    void Close() override {
        const Fault* fault = files_.ledger_.Enter(Op::StreamClose);
        files_.Note(Op::StreamClose, {});
        const bool bWasOpen = node_ != nullptr;
        Release();
        if (fault != nullptr && bWasOpen) {
            Throw(fault->kind.value_or(FailureKind::DeviceIoError));
        }
    }

  private:
    void Release() {
        if (node_ != nullptr) {
            node_.reset();
            --files_.nOpenStreams_;
        }
    }

    const std::string& BeginRead() {
        Begin(Op::StreamRead, mode_ == OpenMode::Read);
        // A file that another handle has cut short is at its end.
        nPosition_ = std::min(nPosition_, node_->strContent.size());
        return node_->strContent;
    }

    void BeginWrite() { Begin(Op::StreamWrite, mode_ != OpenMode::Read); }

    void Begin(Op op, bool bFits) {
        files_.EnterOrThrow(op, {});
        if (node_ == nullptr) {
            Throw(FailureKind::BadFileNumber);
        }
        if (!bFits) {
            Throw(FailureKind::BadFileMode);
        }
    }

    SimFiles& files_;
    NodePtr node_;
    OpenMode mode_;
    size_t nPosition_ = 0;
};

std::unique_ptr<TextStream> SimFiles::OpenText(const std::string& strPath, OpenMode mode) {
    EnterOrThrow(Op::OpenText, strPath);
    return std::make_unique<Stream>(*this, OpenNode(strPath, mode), mode);
}

void SimFiles::AppendLine(const std::string& strPath, std::string_view strLine) {
    EnterOrThrow(Op::AppendLine, strPath);
    const NodePtr node = OpenNode(strPath, OpenMode::Append);
    if (Room() < static_cast<int64_t>(strLine.size())) {
        Throw(FailureKind::DiskFull);
    }
    size_t nPosition = node->strContent.size();
    Write(*node, nPosition, strLine);
}

// Looking.

std::vector<FoundFile> SimFiles::Find(const std::string& strPattern) {
    const Fault* fault = ledger_.Enter(Op::Find);
    Note(Op::Find, strPattern);
    std::vector<FoundFile> found;
    const auto strMapped = NativePath(strPattern, drives_);
    if (fault != nullptr || !strMapped) {
        return found;
    }
    const std::string strNative = Native(strPattern);
    const size_t nSlash = strNative.rfind('/');
    const std::string strName = strNative.substr(nSlash + 1);
    const auto strFolder = Resolve(strNative.substr(0, nSlash + 1), true);
    const NodePtr folder = strFolder ? Lookup(*strFolder) : nullptr;
    if (folder == nullptr || folder->kind != NodeKind::Folder || strName.empty()) {
        return found;
    }
    const auto add = [&](std::string strEntry, const Node& node) {
        found.push_back(FoundFile{std::move(strEntry), node.kind == NodeKind::Folder, node.times});
    };
    const std::string strPrefix = *strFolder == "/" ? "/" : *strFolder + "/";
    const auto target = [&](const std::string& strEntry, const NodePtr& entry) {
        const auto strPlace = Resolve(strPrefix + strEntry, true);
        const NodePtr followed = strPlace ? Lookup(*strPlace) : nullptr;
        return followed != nullptr ? followed : entry;
    };
    if (!HasWildcard(strName)) {
        if (const NodePtr entry = Lookup(strPrefix + strName)) {
            add(strName, *target(strName, entry));
        }
        return found;
    }
    for (const char* strDots : {".", ".."}) {
        if (MatchesWildcard(strDots, strName)) {
            add(strDots, *folder);
        }
    }
    for (auto at = nodes_.upper_bound(strPrefix);
         at != nodes_.end() && at->first.starts_with(strPrefix); ++at) {
        const std::string strEntry = at->first.substr(strPrefix.size());
        if (strEntry.find('/') == std::string::npos && MatchesWildcard(strEntry, strName)) {
            add(strEntry, *target(strEntry, at->second));
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const FoundFile& one, const FoundFile& other) {
        return UpperCasedName(one.strName) < UpperCasedName(other.strName);
    });
    return found;
}

std::optional<FileTimes> SimFiles::GetTimes(const std::string& strPath) {
    const Fault* fault = ledger_.Enter(Op::GetTimes);
    Note(Op::GetTimes, strPath);
    if (fault != nullptr) {
        return std::nullopt;
    }
    try {
        return OpenNode(strPath, OpenMode::Read)->times;
    } catch (const RuntimeFailure&) {
        return std::nullopt;
    }
}

bool SimFiles::FolderExists(const std::string& strPath) {
    const Fault* fault = ledger_.Enter(Op::FolderExists);
    Note(Op::FolderExists, strPath);
    const NodePtr node = fault == nullptr ? PeekNode(strPath) : nullptr;
    return node != nullptr && node->kind == NodeKind::Folder;
}

int64_t SimFiles::GetFileSize(const std::string& strPath) {
    EnterOrThrow(Op::GetFileSize, strPath);
    return static_cast<int64_t>(RequireFile(Place(strPath))->strContent.size());
}

int64_t SimFiles::GetFolderSize(const std::string& strPath) {
    EnterOrThrow(Op::GetFolderSize, strPath);
    const std::string strPlace = Place(strPath);
    static_cast<void>(RequireFolder(strPlace)); // only that it is there
    int64_t lBytes = 0;
    for (const auto& [strBelow, node] : Below(nodes_, strPlace)) {
        lBytes += static_cast<int64_t>(node->strContent.size());
    }
    return lBytes;
}

bool SimFiles::StaysInside(const std::string& strBaseFolder, const std::string& strPath) {
    const Fault* fault = ledger_.Enter(Op::StaysInside);
    Note(Op::StaysInside, strPath);
    const auto strBaseMapped = NativePath(strBaseFolder, drives_);
    const auto strMapped = NativePath(strPath, drives_);
    if (fault != nullptr || !strBaseMapped || !strMapped) {
        return false;
    }
    std::string strBase = *strBaseMapped;
    while (!strBase.empty() && strBase.back() == '/') {
        strBase.pop_back();
    }
    strBase += '/';
    if (!strMapped->starts_with(strBase)) {
        return false;
    }
    std::string strPart = strBase;
    for (const std::string& strName : SplitPath(strMapped->substr(strBase.size()))) {
        if (strName == "..") {
            return false;
        }
        strPart += strName;
        const NodePtr node = PeekNode(strPart, false);
        if (node != nullptr && node->kind == NodeKind::Link) {
            return false;
        }
        strPart += '/';
    }
    return true;
}

// Changing.

void SimFiles::CreateFolder(const std::string& strPath) {
    EnterOrThrow(Op::CreateFolder, strPath);
    const std::string strPlace = Place(strPath, false);
    if (Lookup(strPlace) != nullptr) {
        Throw(FailureKind::FileAlreadyExists);
    }
    RequireAllowed(strPlace, true);
    RequireWritableParent(strPlace);
    nodes_[strPlace] = NewNode(NodeKind::Folder, clock_.PeekEpochSeconds());
}

void SimFiles::DeleteFolder(const std::string& strPath) {
    EnterOrThrow(Op::DeleteFolder, strPath);
    const std::string strPlace = Place(strPath, false);
    const NodePtr folder = Lookup(strPlace);
    if (folder != nullptr && folder->kind == NodeKind::Link) {
        Throw(FailureKind::PermissionDenied);
    }
    static_cast<void>(RequireFolder(strPlace)); // only that it is there
    if (IsProtected(strPlace) || folder->bReadOnly) {
        Throw(FailureKind::PermissionDenied);
    }
    RequireAllowed(strPlace, true);
    RequireWritableParent(strPlace);
    for (const auto& [strBelow, node] : Below(nodes_, strPlace)) {
        RequireAllowed(strBelow, true);
        if (node->bReadOnly && node->kind != NodeKind::Link) {
            Throw(FailureKind::PermissionDenied);
        }
    }
    EraseTree(nodes_, strPlace);
}

void SimFiles::DeleteFile(const std::string& strPath) {
    EnterOrThrow(Op::DeleteFile, strPath);
    const std::string strPlace = Place(strPath, false);
    const NodePtr node = Lookup(strPlace);
    if (node == nullptr) {
        Throw(FailureKind::FileNotFound);
    }
    if (node->kind == NodeKind::Folder) {
        Throw(FailureKind::PermissionDenied);
    }
    RequireAllowed(strPlace, true);
    RequireWritableParent(strPlace);
    nodes_.erase(strPlace);
}

void SimFiles::CopyFile(const std::string& strSource, const std::string& strTarget) {
    EnterOrThrow(Op::CopyFile, strSource);
    const NodePtr source = OpenNode(strSource, OpenMode::Read);
    const std::string strContent = source->strContent;
    size_t nPosition = 0;
    Write(*OpenNode(strTarget, OpenMode::Write), nPosition, strContent);
}

void SimFiles::MoveFile(const std::string& strSource, const std::string& strTarget) {
    EnterOrThrow(Op::MoveFile, strSource);
    const std::string strFrom = Place(strSource, false);
    const std::string strTo = Place(strTarget, false);
    const NodePtr node = Lookup(strFrom);
    if (node == nullptr || node->kind == NodeKind::Folder) {
        Throw(FailureKind::FileNotFound);
    }
    if (Lookup(strTo) != nullptr) {
        Throw(FailureKind::FileAlreadyExists);
    }
    RequireAllowed(strFrom, true);
    RequireAllowed(strTo, true);
    RequireWritableParent(strFrom);
    RequireWritableParent(strTo);
    nodes_[strTo] = node;
    nodes_.erase(strFrom);
}

void SimFiles::CopyFolder(const std::string& strSource, const std::string& strTarget,
                          bool bOverwrite) {
    EnterOrThrow(Op::CopyFolder, strSource);
    const std::string strFrom = Place(strSource);
    const std::string strTo = Place(strTarget);
    static_cast<void>(RequireFolder(strFrom)); // only that it is there
    if (strTo == strFrom || strTo.starts_with(strFrom + "/")) {
        Throw(FailureKind::PermissionDenied);
    }
    const auto copyInto = [&](const std::string& strPlace, const NodePtr& from) {
        const NodePtr there = Lookup(strPlace);
        if (from->kind == NodeKind::Folder) {
            if (there == nullptr) {
                RequireAllowed(strPlace, true);
                RequireWritableParent(strPlace);
                nodes_[strPlace] = NewNode(NodeKind::Folder, clock_.PeekEpochSeconds());
            }
            return;
        }
        if (there != nullptr && !bOverwrite) {
            Throw(FailureKind::FileAlreadyExists);
        }
        if (from->kind == NodeKind::Link) {
            nodes_[strPlace] = std::make_shared<Node>(*from);
            return;
        }
        size_t nPosition = 0;
        Write(*OpenNode(strPlace, OpenMode::Write), nPosition, from->strContent);
    };
    copyInto(strTo, Lookup(strFrom));
    const auto sources = Below(nodes_, strFrom);
    for (const auto& [strBelow, node] : sources) {
        copyInto(strTo + strBelow.substr(strFrom.size()), node);
    }
}

void SimFiles::SetAttributes(const std::string& strPath, int32_t lAttributes) {
    EnterOrThrow(Op::SetAttributes, strPath);
    const std::string strPlace = Place(strPath);
    const NodePtr node = Lookup(strPlace);
    if (node == nullptr) {
        Throw(FailureKind::FileNotFound);
    }
    RequireAllowed(strPlace, true);
    node->bReadOnly = (lAttributes & 1) != 0;
}

} // namespace brennik::world
