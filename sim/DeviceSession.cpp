#include "sim/DeviceSession.h"

#include "platform/PlainText.h"
#include "sim/Codec.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace brennik::sim {

namespace {

constexpr size_t kMarker = 8;       ///< letters of SETDRIVE and SETGROUP
constexpr size_t kBehindMarker = 9; ///< where the name of the folder begins, behind the dot

std::string_view DirectoryOf(std::string_view strPayload) {
    return strPayload.size() < 2 ? std::string_view()
                                 : strPayload.substr(2, static_cast<unsigned char>(strPayload[1]));
}

} // namespace

DeviceSession::DeviceSession(std::shared_ptr<DeviceStore> store,
                             const std::map<std::string, int64_t>& resume)
    : store_(std::move(store)), resume_(resume) {
}

DeviceSession::~DeviceSession() {
    if (store_) {
        store_->Close();
    }
}

std::string DeviceSession::strFolder() const {
    return strDirectory_.empty() ? strDrive_ + "/" + strGroup_ : strDirectory_;
}

DeviceSession::Result DeviceSession::Take(std::string_view strPayload) {
    switch (strPayload.empty() ? '\0' : UpperAscii(strPayload.front())) {
    case 'O':
    case 'A':
        return TakeOpen(strPayload);
    case 'W':
    case 'B':
        return TakeWrite(strPayload);
    case 'L':
        return TakeVariable(strPayload);
    case 'C':
        counts_.lFiles += bFileOpen_ ? 1 : 0;
        CloseFile();
        return Result::Taken;
    case 'D':
        strDirectory_ = DirectoryOf(strPayload);
        return Result::Taken;
    case 'M':
    case 'P':
    case 'T':
        return Result::Taken;
    case 'S':
        CloseFile();
        return Result::EndedWell;
    case 'U':
        CloseFile();
        return Result::EndedBadly;
    default:
        ++counts_.lUnknown;
        return Result::Taken;
    }
}

DeviceSession::Result DeviceSession::TakeOpen(std::string_view strPayload) {
    CloseFile();
    const auto file = ReadOpenPacket(strPayload);
    if (!file) {
        ++counts_.lUnknown;
        return Result::Taken;
    }
    const std::string strMarker = UpperAscii(file->strName).substr(0, kMarker);
    if (strMarker == "SETDRIVE" || strMarker == "SETGROUP") {
        std::string& strPart = strMarker == "SETDRIVE" ? strDrive_ : strGroup_;
        strPart = file->strName.substr(std::min(kBehindMarker, file->strName.size()));
        strDirectory_.clear();
        return Result::Taken;
    }
    const auto resume = resume_.find(file->strName);
    const bool bResumes = resume != resume_.end();
    std::optional<size_t> nKeep;
    if (bResumes) {
        nKeep = static_cast<size_t>(resume->second);
    } else if (!file->bAppend) {
        nKeep = 0;
    }
    if (store_ && !store_->Open(StoredPath(strFolder(), file->strName), nKeep)) {
        return Result::NotStored;
    }
    bFileOpen_ = true;
    lFileBytes_ = 0;
    lResume_ = bResumes ? resume->second : 0;
    return bResumes ? Result::Resume : Result::Taken;
}

DeviceSession::Result DeviceSession::TakeWrite(std::string_view strPayload) {
    if (!bFileOpen_ || strPayload.size() < kWriteHeader) {
        ++counts_.lUnknown;
        return Result::Taken;
    }
    const std::string_view strData = strPayload.substr(kWriteHeader);
    if (store_ && !store_->Write(strData)) {
        return Result::NotStored;
    }
    counts_.lOddOffsets += bOddOffset(ReadWriteOffset(strPayload)) ? 1 : 0;
    lFileBytes_ += static_cast<int64_t>(strData.size());
    counts_.lDataBytes += static_cast<int64_t>(strData.size());
    return Result::Taken;
}

DeviceSession::Result DeviceSession::TakeVariable(std::string_view strPayload) {
    const std::string strLine = ReadVariablePacket(strPayload) + "\r\n";
    if (store_ && !store_->Append(StoredPath(strFolder(), "config.sys"), strLine)) {
        return Result::NotStored;
    }
    ++counts_.lVariables;
    return Result::Taken;
}

// Data goes to the end of the file whatever its offset says. A sender that goes on behind what the
// device has may count from there, or from the place at which it goes on.
bool DeviceSession::bOddOffset(int64_t lOffset) const {
    return lOffset != lFileBytes_ && lOffset != lResume_ + lFileBytes_;
}

void DeviceSession::CloseFile() {
    if (store_) {
        store_->Close();
    }
    bFileOpen_ = false;
}

} // namespace brennik::sim
