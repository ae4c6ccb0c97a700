#include "session/TVFIPacket.h"

#include "platform/Host.h"
#include "session/RequestRecord.h"
#include "support/AsciiText.h"
#include "support/FileSystem.h"
#include "support/OstrandString.h"

#include <algorithm>

namespace brennik {

namespace {

// Places of the fields.
constexpr size_t kKeyword = 2;
constexpr size_t kDownload = 3; // "F" full, "P" partial
constexpr size_t kApplicationId = 4;
constexpr size_t kTerminalId = 5;
constexpr size_t kBlockSize = 7;
constexpr size_t kPTid = 9;
constexpr size_t kReleaseTitle = 10;
constexpr size_t kConfigTitle = 11;

constexpr const char* kLastKeyword = "XCDLF";

VfiPacketType TypeOf(const std::vector<std::string>& strFields, bool& bLastOfSeries) {
    bLastOfSeries = false;
    if (strFields.size() <= kDownload || strFields[kDownload] == "P")
        return VfiPacketType::Partial;
    if (strFields[kKeyword] == "XDL")
        return VfiPacketType::Download;
    bLastOfSeries = strFields[kKeyword] == kLastKeyword;
    return bLastOfSeries || strFields[kKeyword] == "XCDL" ? VfiPacketType::XcdlDownload
                                                          : VfiPacketType::Other;
}

} // namespace

bool TVFIPacket::IsVfiPacket(const std::string& strPacket) {
    if (strPacket.find("VFI") == std::string::npos)
        return false;
    const std::string strFolder = WithTrailingBackslash(CurrentHost().processes.ProgramFolder());
    FileSystem oFileSystem;
    const int32_t lHandle = oFileSystem.OpenFile(strFolder + "vfi.txt", 1);
    // The copy is for people who look for a fault; a run goes on without it.
    static_cast<void>(oFileSystem.WriteData(lHandle, strPacket, true));
    oFileSystem.CloseFile(lHandle);
    return true;
}

VfiPacketType TVFIPacket::GetPacketType(const std::string& strPacket, bool& bLastOfSeries) {
    bLastOfSeries = false;
    return Guarded([&] { return TypeOf(FieldsOf(strPacket), bLastOfSeries); },
                   [](const std::string&) { return VfiPacketType::Partial; });
}

bool TVFIPacket::IsFullDownload(const std::string& strPacket) {
    return Guarded(
        [&] {
            const auto strFields = FieldsOf(strPacket);
            return strFields.size() > kDownload && UpperCase(strFields[kDownload]) == "F";
        },
        [](const std::string&) { return false; });
}

int32_t TVFIPacket::GetBlockSize(const std::string& strPacket) {
    return Guarded(
        [&] {
            const auto strFields = FieldsOf(strPacket);
            return strFields.size() > kBlockSize ? OstrandString::StrToLong(strFields[kBlockSize])
                                                 : 0;
        },
        [](const std::string&) { return 0; });
}

void TVFIPacket::SubstituteDownloadType(std::string& strPacket) {
    EditRecord(strPacket, kKeyword + 1, [](std::vector<std::string>& strFields) {
        if (strFields[kKeyword] == kLastKeyword)
            strFields[kKeyword] = "XCDL";
    });
}

void TVFIPacket::SubstituteTerminalId(const std::string& strTerminalId, std::string& strPacket) {
    EditRecord(strPacket, kTerminalId + 1, [&](std::vector<std::string>& strFields) {
        strFields[kTerminalId] = strTerminalId;
    });
}

void TVFIPacket::SubsituteRelConfigTitle(const std::string& strReleaseTitle,
                                         const std::string& strConfigTitle,
                                         std::string& strPacket) {
    // The record is rebuilt with the number of fields that came, so that a title field that the
    // device didn't send is never seen on the wire.
    EditRecord(strPacket, 1, [&](std::vector<std::string>& strFields) {
        const size_t nFields = strFields.size();
        strFields.resize(std::max(nFields, kConfigTitle + 1));
        if (strFields[kReleaseTitle].empty())
            strFields[kReleaseTitle] = strReleaseTitle;
        if (strFields[kConfigTitle].empty())
            strFields[kConfigTitle] = strConfigTitle;
        strFields.resize(nFields);
    });
}

void TVFIPacket::SubstituteApplicationId(const std::string& strApplicationID,
                                         std::string& strPacket,
                                         bool bSubstituteApplicationOnPartial) {
    bool bLastOfSeries = false;
    const VfiPacketType type = GetPacketType(strPacket, bLastOfSeries);
    if (type == VfiPacketType::Other ||
        (type == VfiPacketType::Partial && !bSubstituteApplicationOnPartial))
        return;
    EditRecord(strPacket, kApplicationId + 1, [&](std::vector<std::string>& strFields) {
        strFields[kApplicationId] = strApplicationID;
    });
}

std::string TVFIPacket::GetPTid(const std::string& strPacket) {
    return Guarded(
        [&] {
            const auto strFields = FieldsOf(strPacket);
            return strFields.size() > kPTid ? strFields[kPTid] : std::string();
        },
        [](const std::string&) { return std::string(); });
}

} // namespace brennik
