// The codec of the session packets: builds those that the system sends and breaks out those that
// it receives. A packet is the payload of one link frame, a byte string in which a zero byte is
// ordinary data. Plain computation; a clock is asked only for the date of an open file packet.
// The fields of the last packet broken out stay readable until the next break-out.
#pragma once

#include "support/Failure.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

/// What the first byte of a packet says it is, as GetPacketType gives it.
enum class BrennikPacketType : int32_t {
    OpenFile = 0,            ///< "O"
    WriteData = 1,           ///< "W" or "B"
    Recognised = 2,          ///< "I": known by its letter, refused by BreakOutPacket
    CloseFile = 3,           ///< "C"
    ConfigVariable = 4,      ///< "L"
    Message = 5,             ///< "M"
    SetPassword = 6,         ///< "P"
    SetTime = 7,             ///< "T"
    SessionSuccessful = 8,   ///< "S"
    SessionUnsuccessful = 9, ///< "U"
    Unknown = 10,            ///< any other byte, or an empty packet
    AppendFile = 11,         ///< "A"
    SetDirectory = 12,       ///< "D"
};

/// Separates name and value of a configuration variable on the wire, where a text has "=".
inline constexpr char kConfigSeparator = '\x1C';

class TBrennikPacket {
  public:
    // What a failed build leaves in strPacket is of no meaning.

    /// The first packet of a client session: one CSV record of 12 fields, or of 10, without the
    /// titles, when bOstrandBrennikService is false. 0 success, 1 failure.
    [[nodiscard]] int32_t BuildDownloadRequestPacket(
        const std::string& strPlatformName, bool bFullDownload, const std::string& strApplicationID,
        const std::string& strTerminalId, const std::string& strEpromID, int32_t lBlockSize,
        const std::string& strPTid, int32_t lMemorySize, const std::string& strConfigTitle,
        const std::string& strReleaseTitle, bool bOstrandBrennikService, std::string& strPacket);

    /// Always 0.
    [[nodiscard]] int32_t BuildSessionSuccessfulPacket(std::string& strPacket);

    /// The position, counted from 1, of the next byte that a device wants of a file that it holds
    /// in part, out of its resume reply with the framing bytes still in it; 0 when the packet is
    /// no such reply. Malformed digits are thrown to the caller as a TypeMismatch, digits beyond 32
    /// bits as an Overflow: this operation has no catch-all, its caller has.
    int32_t ExtractResumePosition(std::string_view strPacket);

    /// The type that the first byte tells, in either case; Unknown for an empty packet.
    BrennikPacketType GetPacketType(std::string_view strPacket) const;

    /// Fills the properties below from the packet. 0 success, 1 failure. The fields of the packet's
    /// kind are cleared first and stay so when the packet is refused.
    [[nodiscard]] int32_t BreakOutPacket(std::string_view strPacket);

    /// Announces a file of lFileSize bytes. bCode chooses "C" over "D"; bFixedDateTime stamps it
    /// 22 May 2015, 11:00:00, otherwise it bears the present moment. 0 or 1.
    [[nodiscard]] int32_t BuildOpenFilePacket(std::string& strPacket,
                                              const std::string& strFilename, bool bCode,
                                              int32_t lFileSize, bool bFixedDateTime);

    /// A configuration variable from a line "name=value"; a line without a name or without "="
    /// gives an empty packet and success. 0 or 1.
    [[nodiscard]] int32_t BuildConfigSysPacket(std::string& strPacket, const std::string& strLine);

    /// A folder name of at most 255 bytes. 0 or 1.
    [[nodiscard]] int32_t BuildSetDirectoryPacket(std::string& strPacket,
                                                  const std::string& strFolder);

    /// 0 or 1.
    [[nodiscard]] int32_t BuildCloseFilePacket(std::string& strPacket);

    /// At most 65,535 bytes of a file, from lOffset on. 0 or 1.
    [[nodiscard]] int32_t BuildWriteDataToFilePacket(std::string& strPacket,
                                                     std::string_view strData, int32_t lOffset);

    const std::string& strErrorMessage() const { return error_.strErrorMessage(); }
    int32_t lErrorCode() const { return error_.lErrorCode(); }

    int32_t lFileType() const { return lFileType_; } ///< 0 code, 1 data
    int32_t lFileChecksum() const { return lFileChecksum_; }
    int32_t lFileSize() const { return lFileSize_; }
    int16_t iYear() const { return iYear_; }
    int16_t iMonth() const { return iMonth_; }
    int16_t iDay() const { return iDay_; }
    int16_t iHour() const { return iHour_; }
    int16_t iMinute() const { return iMinute_; }
    int16_t iSecond() const { return iSecond_; }

    /// The reserved bytes, read as a number: text that is none, the usual "XXXXXXXX" among it, is
    /// thrown to the caller as a TypeMismatch, a number beyond 16 bits as an Overflow. It is meant
    /// so, and nothing in the system reads it.
    int16_t strReserved() const;

    const std::string& strFilename() const { return strFilename_; }
    void strFilename(std::string strFilename) { strFilename_ = std::move(strFilename); }
    const std::string& strData() const { return strData_; }
    int32_t lDataSize() const { return lDataSize_; } ///< as stated; not checked against strData
    int32_t lDataOffset() const { return lDataOffset_; }

  private:
    void ClearDateAndTime();
    void BreakOutDateAndTime(std::string_view strDateAndTime);
    [[noreturn]] void RefuseLength();
    int32_t BreakOutOpenFilePacket(std::string_view strPacket);
    int32_t BreakOutTimePacket(std::string_view strPacket);
    int32_t BreakOutWriteDataPacket(std::string_view strPacket);
    int32_t BreakOutSingleFieldPacket(std::string_view strPacket, BrennikPacketType type);

    ErrorState error_;
    int32_t lFileType_ = 0;
    int32_t lFileChecksum_ = 0;
    int32_t lFileSize_ = 0;
    int16_t iYear_ = 0;
    int16_t iMonth_ = 0;
    int16_t iDay_ = 0;
    int16_t iHour_ = 0;
    int16_t iMinute_ = 0;
    int16_t iSecond_ = 0;
    std::string strReserved_;
    std::string strFilename_;
    std::string strData_;
    int32_t lDataSize_ = 0;
    int32_t lDataOffset_ = 0;
};

} // namespace brennik
