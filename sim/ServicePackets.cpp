#include "sim/ServicePackets.h"

#include "sim/Codec.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace brennik::sim {

namespace {

constexpr size_t kWindow = size_t{256} * 1024;

// Blocks of this size and above are read straight into the frame: one read each costs less there
// than copying them out of the window.
constexpr size_t kDirectBlock = size_t{32} * 1024;

} // namespace

ServicePackets::ServicePackets(std::shared_ptr<const ServedTree> tree, size_t nBlock)
    : tree_(std::move(tree)), items_(tree_->Sequence()), nBlock_(nBlock) {
}

ServicePackets::Result ServicePackets::Next(std::string& strFrame) {
    if (nItem_ == items_.size()) {
        return Result::NoMore;
    }
    const ServedItem& item = items_[nItem_];
    switch (item.kind) {
    case ServedItem::Kind::Variable:
        strFrame = BuildFrame(VariablePacket(*item.strText));
        ++nItem_;
        return Result::Frame;
    case ServedItem::Kind::Message:
        strFrame = BuildFrame(MessagePacket(*item.strText));
        ++nItem_;
        return Result::Frame;
    case ServedItem::Kind::Drive:
        NextOfMarker("SETDRIVE." + *item.strText, strFrame);
        return Result::Frame;
    case ServedItem::Kind::Group:
        NextOfMarker("SETGROUP." + *item.strText, strFrame);
        return Result::Frame;
    case ServedItem::Kind::File:
        break;
    }
    return NextOfFile(*item.file, strFrame);
}

// A drive or a group is told by a file of that name without content.
void ServicePackets::NextOfMarker(const std::string& strName, std::string& strFrame) {
    if (!bOpened_) {
        strFrame = BuildFrame(OpenPacket('O', strName, 0, DateTime{2015, 5, 22, 11, 0, 0}));
        bOpened_ = true;
        return;
    }
    strFrame = BuildFrame(ClosePacket());
    bOpened_ = false;
    ++nItem_;
}

ServicePackets::Result ServicePackets::NextOfFile(const ServedFile& file, std::string& strFrame) {
    if (!bOpened_) {
        readAt_ = file.open();
        if (!readAt_) {
            nItem_ = items_.size();
            return Result::ReadFailed;
        }
        strFrame = BuildFrame(OpenPacket('O', file.strName, file.lSize, file.modified));
        bOpened_ = true;
        lOffset_ = 0;
        strWindow_.clear();
        return Result::Frame;
    }
    if (lOffset_ < file.lSize) {
        const size_t nData =
            static_cast<size_t>(std::min(file.lSize - lOffset_, static_cast<int64_t>(nBlock_)));
        char* data = StartWriteFrame(strFrame, static_cast<uint32_t>(lOffset_), nData);
        if (!ReadBlock(file, data, nData)) {
            nItem_ = items_.size();
            return Result::ReadFailed;
        }
        FinishWriteFrame(strFrame);
        lOffset_ += static_cast<int64_t>(nData);
        lDataBytes_ += static_cast<int64_t>(nData);
        return Result::Frame;
    }
    strFrame = BuildFrame(ClosePacket());
    readAt_ = nullptr;
    bOpened_ = false;
    ++lFilesClosed_;
    ++nItem_;
    return Result::Frame;
}

bool ServicePackets::ReadBlock(const ServedFile& file, char* buffer, size_t nCount) {
    if (nCount >= kDirectBlock) {
        return readAt_(lOffset_, buffer, nCount) == nCount;
    }
    const int64_t lWindowEnd = lWindowStart_ + static_cast<int64_t>(strWindow_.size());
    if (strWindow_.empty() || lOffset_ + static_cast<int64_t>(nCount) > lWindowEnd) {
        const size_t nWindow =
            static_cast<size_t>(std::min(file.lSize - lOffset_, static_cast<int64_t>(kWindow)));
        strWindow_.resize(nWindow);
        if (readAt_(lOffset_, strWindow_.data(), nWindow) != nWindow) {
            return false;
        }
        lWindowStart_ = lOffset_;
    }
    std::memcpy(buffer, strWindow_.data() + (lOffset_ - lWindowStart_), nCount);
    return true;
}

} // namespace brennik::sim
