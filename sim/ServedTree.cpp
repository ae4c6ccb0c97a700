#include "sim/ServedTree.h"

#include "platform/RuntimeFailure.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace brennik::sim {

namespace {

template <class Named>
Named& FindOrAdd(std::vector<Named>& list, const std::string& strName) {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const Named& entry) { return entry.strName == strName; });
    if (found != list.end()) {
        return *found;
    }
    list.emplace_back().strName = strName;
    return list.back();
}

void AppendFiles(std::vector<ServedItem>& items, const std::vector<ServedFile>& files) {
    for (const ServedFile& file : files) {
        items.push_back({ServedItem::Kind::File, nullptr, &file});
    }
}

} // namespace

void ServedTree::AddVariable(std::string strLine) {
    variables_.push_back(std::move(strLine));
}

void ServedTree::AddMessage(std::string strText) {
    messages_.push_back(std::move(strText));
}

void ServedTree::AddDrive(const std::string& strDrive) {
    static_cast<void>(DriveOf(strDrive)); // adding it is all that is wanted
}

void ServedTree::AddGroup(const std::string& strDrive, const std::string& strGroup) {
    static_cast<void>(GroupOf(strDrive, strGroup)); // adding it is all that is wanted
}

void ServedTree::AddFile(const std::string& strDrive, const std::string& strGroup,
                         ServedFile file) {
    if (!strGroup.empty()) {
        GroupOf(strDrive, strGroup).files.push_back(std::move(file));
    } else if (!strDrive.empty()) {
        DriveOf(strDrive).files.push_back(std::move(file));
    } else {
        files_.push_back(std::move(file));
    }
}

void ServedTree::AddFile(const std::string& strDrive, const std::string& strGroup,
                         std::string strName, std::string strBytes) {
    ServedFile file;
    file.strName = std::move(strName);
    file.lSize = static_cast<int64_t>(strBytes.size());
    const auto bytes = std::make_shared<const std::string>(std::move(strBytes));
    file.open = [bytes]() -> ReadAt {
        return [bytes](int64_t lOffset, char* buffer, size_t nCount) {
            return bytes->copy(buffer, nCount, static_cast<size_t>(lOffset));
        };
    };
    AddFile(strDrive, strGroup, std::move(file));
}

std::vector<ServedItem> ServedTree::Sequence() const {
    std::vector<ServedItem> items;
    for (const std::string& strLine : variables_) {
        items.push_back({ServedItem::Kind::Variable, &strLine, nullptr});
    }
    for (const std::string& strText : messages_) {
        items.push_back({ServedItem::Kind::Message, &strText, nullptr});
    }
    AppendFiles(items, files_);
    for (const Drive& drive : drives_) {
        if (!drive.files.empty() || drive.groups.empty()) {
            items.push_back({ServedItem::Kind::Drive, &drive.strName, nullptr});
            AppendFiles(items, drive.files);
        }
    }
    for (const Drive& drive : drives_) {
        if (drive.groups.empty()) {
            continue;
        }
        items.push_back({ServedItem::Kind::Drive, &drive.strName, nullptr});
        for (const Group& group : drive.groups) {
            items.push_back({ServedItem::Kind::Group, &group.strName, nullptr});
            AppendFiles(items, group.files);
        }
    }
    return items;
}

ServedTree::Drive& ServedTree::DriveOf(const std::string& strDrive) {
    if (strDrive.empty()) {
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    }
    return FindOrAdd(drives_, strDrive);
}

ServedTree::Group& ServedTree::GroupOf(const std::string& strDrive, const std::string& strGroup) {
    return FindOrAdd(DriveOf(strDrive).groups, strGroup);
}

} // namespace brennik::sim
