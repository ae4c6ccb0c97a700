#include "session/TBrennikPacket.h"

#include "link/CommsErrors.h"
#include "platform/Clock.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/CSVRecord.h"
#include "support/OstrandString.h"
#include "support/PadExtract.h"
#include "support/WireNumbers.h"

#include <charconv>
#include <limits>
#include <vector>

namespace brennik {

namespace {

constexpr size_t kOpenFileHeader = 40; // letter, type, size, checksum, date, time, reserved bytes
constexpr size_t kWriteDataHeader = 7; // letter, two bytes of length, four of offset
constexpr size_t kTimePacket = 15;
constexpr int32_t kZerosOnTheLeft = 2;

// The key file of every run and device bears the same stamp.
constexpr const char* kFixedDateAndTime = "20150522110000";

std::string Hexadecimal(int32_t lValue) {
    char digits[8];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, static_cast<uint32_t>(lValue), 16);
    return UpperCase(std::string_view(digits, static_cast<size_t>(end.ptr - digits)));
}

std::string PresentDateAndTime() {
    const DateTime now = LocalNow();
    PadExtract padding;
    std::string strText = padding.PadString(ToDecimal(now.iYear), kZerosOnTheLeft, 4);
    for (int32_t lPart : {now.iMonth, now.iDay, now.iHour, now.iMinute, now.iSecond})
        strText += padding.PadString(ToDecimal(lPart), kZerosOnTheLeft, 2);
    return strText;
}

// A number that must fit in one byte of the wire.
char WireByte(int64_t lValue) {
    if (lValue < 0 || lValue > 255)
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    return static_cast<char>(lValue);
}

} // namespace

int32_t TBrennikPacket::BuildDownloadRequestPacket(
    const std::string& strPlatformName, bool bFullDownload, const std::string& strApplicationID,
    const std::string& strTerminalId, const std::string& strEpromID, int32_t lBlockSize,
    const std::string& strPTid, int32_t lMemorySize, const std::string& strConfigTitle,
    const std::string& strReleaseTitle, bool bOstrandBrennikService, std::string& strPacket) {
    // The misspelling stands in logs that people search, and stays.
    return GuardedWithCode(
        error_, "TBrennikPacket.BuildDownloadResquestPacket() Failed - ", 1, [&] {
            std::vector<std::string> strFields{"VFI",
                                               strPlatformName,
                                               "XDL",
                                               bFullDownload ? "F" : "P",
                                               strApplicationID,
                                               strTerminalId,
                                               strEpromID,
                                               ToDecimal(lBlockSize),
                                               ToDecimal(lMemorySize),
                                               strPTid,
                                               strReleaseTitle,
                                               strConfigTitle};
            // A device knows no titles: they don't go on its wire, not even as empty fields.
            const int16_t iNoOfFields = bOstrandBrennikService ? 12 : 10;
            strPacket.clear();
            CSVRecord oRecord;
            // Its status is not looked at; what it built, or didn't, is the packet.
            static_cast<void>(oRecord.BuildPacket(strFields, iNoOfFields, strPacket));
            return 0;
        });
}

int32_t TBrennikPacket::BuildSessionSuccessfulPacket(std::string& strPacket) {
    strPacket = "S";
    return 0;
}

int32_t TBrennikPacket::ExtractResumePosition(std::string_view strPacket) {
    if (strPacket.size() <= 3)
        return 0;
    const size_t nEnd = strPacket.find('\x03');
    if (nEnd == std::string_view::npos)
        return 0;
    std::string strReply;
    for (char c : strPacket.substr(0, nEnd)) {
        if (c != '\x02')
            strReply += c;
    }
    if (strReply.empty() || strReply.front() != 'R')
        return 0;
    int32_t lHeld = 0;
    const char* end = strReply.data() + strReply.size();
    const auto parsed = std::from_chars(strReply.data() + 1, end, lHeld, 16);
    if (parsed.ec == std::errc::result_out_of_range)
        throw RuntimeFailure(FailureKind::Overflow);
    if (parsed.ec != std::errc{} || parsed.ptr != end || lHeld < 0 || strReply[1] == '-')
        throw RuntimeFailure(FailureKind::TypeMismatch);
    if (lHeld == std::numeric_limits<int32_t>::max())
        throw RuntimeFailure(FailureKind::Overflow);
    return lHeld + 1;
}

BrennikPacketType TBrennikPacket::GetPacketType(std::string_view strPacket) const {
    if (strPacket.empty())
        return BrennikPacketType::Unknown;
    switch (strPacket.front()) {
    case 'O':
    case 'o':
        return BrennikPacketType::OpenFile;
    case 'W':
    case 'w':
    case 'B':
    case 'b':
        return BrennikPacketType::WriteData;
    case 'I':
    case 'i':
        return BrennikPacketType::Recognised;
    case 'C':
    case 'c':
        return BrennikPacketType::CloseFile;
    case 'L':
    case 'l':
        return BrennikPacketType::ConfigVariable;
    case 'M':
    case 'm':
        return BrennikPacketType::Message;
    case 'P':
    case 'p':
        return BrennikPacketType::SetPassword;
    case 'T':
    case 't':
        return BrennikPacketType::SetTime;
    case 'S':
    case 's':
        return BrennikPacketType::SessionSuccessful;
    case 'U':
    case 'u':
        return BrennikPacketType::SessionUnsuccessful;
    case 'A':
    case 'a':
        return BrennikPacketType::AppendFile;
    case 'D':
    case 'd':
        return BrennikPacketType::SetDirectory;
    default:
        return BrennikPacketType::Unknown;
    }
}

int32_t TBrennikPacket::BreakOutPacket(std::string_view strPacket) {
    return GuardedWithCode(error_, "TBrennikPacket.BreakOutPacket() Failed - ", 1,
                           [&]() -> int32_t {
                               const BrennikPacketType type = GetPacketType(strPacket);
                               switch (type) {
                               case BrennikPacketType::OpenFile:
                               case BrennikPacketType::AppendFile:
                                   return BreakOutOpenFilePacket(strPacket);
                               case BrennikPacketType::WriteData:
                                   return BreakOutWriteDataPacket(strPacket);
                               case BrennikPacketType::CloseFile:
                               case BrennikPacketType::SessionSuccessful:
                               case BrennikPacketType::SessionUnsuccessful:
                               case BrennikPacketType::SetDirectory:
                                   return 0;
                               case BrennikPacketType::ConfigVariable:
                               case BrennikPacketType::Message:
                               case BrennikPacketType::SetPassword:
                                   return BreakOutSingleFieldPacket(strPacket, type);
                               case BrennikPacketType::SetTime:
                                   return BreakOutTimePacket(strPacket);
                               case BrennikPacketType::Recognised:
                               case BrennikPacketType::Unknown:
                                   break;
                               }
                               SetError(error_, CommsErrors::kUnknownPacketType);
                               return 1;
                           });
}

int32_t TBrennikPacket::BuildOpenFilePacket(std::string& strPacket, const std::string& strFilename,
                                            bool bCode, int32_t lFileSize, bool bFixedDateTime) {
    return GuardedWithCode(error_, "TBrennikPacket.BuildOpenFilePacket() Failed - ", 1, [&] {
        PadExtract padding;
        strPacket = bCode ? "OC" : "OD";
        strPacket += padding.PadString(Hexadecimal(lFileSize), kZerosOnTheLeft, 8);
        strPacket += "00000000";
        strPacket += bFixedDateTime ? kFixedDateAndTime : PresentDateAndTime();
        strPacket += "XXXXXXXX";
        strPacket += strFilename;
        return 0;
    });
}

int32_t TBrennikPacket::BuildConfigSysPacket(std::string& strPacket, const std::string& strLine) {
    return GuardedWithCode(error_, "TBrennikPacket.BuildConfigSysPacket() Failed - ", 1, [&] {
        const std::string strTrimmed = Trim(strLine);
        const size_t nEquals = strTrimmed.find('=');
        strPacket.clear();
        if (nEquals != std::string::npos && nEquals > 0) {
            strPacket = "L" + strTrimmed;
            strPacket[1 + nEquals] = kConfigSeparator;
        }
        return 0;
    });
}

int32_t TBrennikPacket::BuildSetDirectoryPacket(std::string& strPacket,
                                                const std::string& strFolder) {
    return GuardedWithCode(error_, "TBrennikPacket.BuildSetDirectoryPacket() Failed - ", 1, [&] {
        strPacket = std::string("D") + WireByte(static_cast<int64_t>(strFolder.size())) + strFolder;
        return 0;
    });
}

int32_t TBrennikPacket::BuildCloseFilePacket(std::string& strPacket) {
    return GuardedWithCode(error_, "TBrennikPacket.BuildCloseFilePacket() Failed - ", 1, [&] {
        strPacket = "C";
        return 0;
    });
}

int32_t TBrennikPacket::BuildWriteDataToFilePacket(std::string& strPacket, std::string_view strData,
                                                   int32_t lOffset) {
    // The prefix is that of BuildCloseFilePacket: it is meant so, logs are read by it.
    return GuardedWithCode(error_, "TBrennikPacket.BuildCloseFilePacket() Failed - ", 1, [&] {
        const auto lLength = static_cast<int64_t>(strData.size());
        std::string strHeader = "W";
        strHeader += WireByte(lLength / 256);
        strHeader += WireByte(lLength & 255);
        strHeader += WireByte(lOffset >> 24); // an offset below 0 has no byte here and is refused
        strHeader += WireByte((lOffset & 0xFF0000) >> 16);
        strHeader += WireByte((lOffset & 0xFF00) >> 8);
        strHeader += WireByte(lOffset & 0xFF);
        strPacket.clear();
        strPacket.reserve(strHeader.size() + strData.size());
        strPacket.append(strHeader).append(strData);
        return 0;
    });
}

int16_t TBrennikPacket::strReserved() const {
    return ParseNumber<int16_t>(strReserved_);
}

void TBrennikPacket::ClearDateAndTime() {
    iYear_ = iMonth_ = iDay_ = iHour_ = iMinute_ = iSecond_ = 0;
}

void TBrennikPacket::BreakOutDateAndTime(std::string_view strDateAndTime) {
    const auto part = [&](size_t nStart, size_t nWidth) {
        return OstrandString::StrToInt(std::string(strDateAndTime.substr(nStart, nWidth)));
    };
    iYear_ = part(0, 4);
    iMonth_ = part(4, 2);
    iDay_ = part(6, 2);
    iHour_ = part(8, 2);
    iMinute_ = part(10, 2);
    iSecond_ = part(12, 2);
}

// Number and text of this failure are meant to be assigned crosswise: the number becomes the text,
// and the text is to become the number, which it can't. What callers and logs know is therefore
// the catch-all of the operation with a type mismatch, and never the number itself.
void TBrennikPacket::RefuseLength() {
    throw RuntimeFailure(FailureKind::TypeMismatch);
}

int32_t TBrennikPacket::BreakOutOpenFilePacket(std::string_view strPacket) {
    return GuardedWithCode(error_, "TBrennikPacket.BreakOutOpenFilePacket() Failed - ", 1, [&] {
        lFileType_ = lFileChecksum_ = lFileSize_ = 0;
        ClearDateAndTime();
        strReserved_.clear();
        strFilename_.clear();
        if (strPacket.size() < kOpenFileHeader)
            RefuseLength();
        lFileType_ = strPacket[1] == 'C' ? 0 : 1;
        lFileSize_ = HexStringToLong(strPacket.substr(2, 8));
        lFileChecksum_ = HexStringToLong(strPacket.substr(10, 8));
        BreakOutDateAndTime(strPacket.substr(18, 14));
        strReserved_ = strPacket.substr(32, 8);
        strFilename_ = strPacket.substr(kOpenFileHeader);
        return 0;
    });
}

int32_t TBrennikPacket::BreakOutTimePacket(std::string_view strPacket) {
    return GuardedWithCode(error_, "TBrennikPacket.BreakOutTimePacket() Failed - ", 1, [&] {
        ClearDateAndTime();
        if (strPacket.size() < kTimePacket)
            RefuseLength();
        BreakOutDateAndTime(strPacket.substr(1, 14));
        return 0;
    });
}

int32_t TBrennikPacket::BreakOutWriteDataPacket(std::string_view strPacket) {
    return GuardedWithCode(error_, "TBrennikPacket.BreakOutWriteDataPacket() Failed - ", 1, [&] {
        strData_.clear();
        lDataSize_ = lDataOffset_ = 0;
        if (strPacket.size() < kWriteDataHeader)
            RefuseLength();
        lDataSize_ = BinaryStringToLong(strPacket.substr(1, 2));
        lDataOffset_ = BinaryStringToLong(strPacket.substr(3, 4));
        strData_ = strPacket.substr(kWriteDataHeader);
        return 0;
    });
}

int32_t TBrennikPacket::BreakOutSingleFieldPacket(std::string_view strPacket,
                                                  BrennikPacketType type) {
    return GuardedWithCode(error_, "TBrennikPacket.BreakOutSingleFieldPacket() Failed - ", 1, [&] {
        strData_ = strPacket.substr(1);
        if (type == BrennikPacketType::ConfigVariable) {
            for (char& c : strData_) {
                if (c == kConfigSeparator)
                    c = '=';
            }
        }
        return 0;
    });
}

} // namespace brennik
