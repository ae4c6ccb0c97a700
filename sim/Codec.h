// The far ends' own codec: block check, frames and packets as they stand on the wire.
// It shares nothing with the client's codec on purpose, so that a mistake can't hide by standing
// on both sides of a connection. Pure functions of bytes: simulated and real far ends use it alike.
#pragma once

#include "platform/DateTime.h"
#include "sim/BlockCheck.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::sim {

inline constexpr char kStx = '\x02';
inline constexpr char kEtx = '\x03';
inline constexpr char kEot = '\x04';
inline constexpr char kEnq = '\x05';
inline constexpr char kAck = '\x06';
inline constexpr char kDle = '\x10';
inline constexpr char kNak = '\x15';
inline constexpr char kSyn = '\x16';
inline constexpr char kSeparator = '\x1C';

/// The most data that one write data packet can carry: its length field has two bytes.
inline constexpr size_t kLargestBlock = 65535;

/// Puts a payload into its frame: start, payload, ETX, check; a payload that begins with "W" goes
/// without ETX, since its length stands in it. The check covers all between start and check.
std::string BuildFrame(std::string_view strPayload);

/// Lays out the frame of a write data packet with room for nData bytes (at most kLargestBlock) in
/// strFrame, whose storage is reused, and gives the place of the data. FinishWriteFrame follows
/// once the data stands there.
char* StartWriteFrame(std::string& strFrame, uint32_t lOffset, size_t nData);

/// Sets the check of a frame begun by StartWriteFrame.
void FinishWriteFrame(std::string& strFrame) noexcept;

/// The check of management messages: one byte, the exclusive or of all.
char LongitudinalCheck(std::string_view strBytes) noexcept;

/// Puts a management message into its frame: start, payload, ETX, and one byte of check over both.
std::string BuildManagementFrame(std::string_view strPayload);

/// A payload has the form of a management message: it begins with a version, which is digits, a
/// point, digits and a comma. Nothing else tells the two kinds of frame apart.
bool HasManagementForm(std::string_view strPayload) noexcept;

/// What answers an open packet in the place of ACK when so many bytes of the file are there
/// already: start, "R", the number in hexadecimal digits, ETX, and no check.
std::string ResumeReply(int64_t lBytes);

/// Cuts frames out of a stream of bytes that arrive in any cutting. Bytes ahead of a start
/// character are dropped, and so are bytes behind the frame: every frame waits for an answer, so
/// nothing of meaning can stand there.
class FrameReader {
  public:
    enum class Result { Incomplete, Good, WrongCheck };

    /// Adds what arrived and says whether a frame is whole now. After Good or WrongCheck the next
    /// call begins a new frame.
    Result Add(std::string_view strBytes);

    /// The payload of the last whole frame, without start, ETX and check.
    const std::string& strPayload() const { return strPayload_; }

  private:
    Result Finish(size_t nCovered, size_t nPayload);

    std::string strBuffer_;
    std::string strPayload_;
    size_t nSearched_ = 0;
};

// Packets: the payloads of frames.

/// Open file. The letter is "O" for a new file and "A" to append; the size goes as 8 hexadecimal
/// digits (its low 32 bits), the type as data ("D"), or as code ("C").
std::string OpenPacket(char letter, std::string_view strName, int64_t lSize,
                       const DateTime& modified, bool bCode = false);
/// Write data; at most kLargestBlock bytes.
std::string WritePacket(uint32_t lOffset, std::string_view strData);
std::string ClosePacket();
/// Configuration variable, from "name=value": the first "=" becomes the separator.
std::string VariablePacket(std::string_view strLine);
std::string MessagePacket(std::string_view strText);
std::string PasswordPacket(std::string_view strPassword);
std::string TimePacket(const DateTime& time);
std::string SuccessPacket();
std::string FailurePacket();
/// Set directory; a name of at most 255 bytes.
std::string DirectoryPacket(std::string_view strName);

/// What an open packet tells, as far as a receiver needs it. Nothing when it is too short for its
/// fixed fields.
struct OpenedFile {
    bool bAppend = false;
    std::string strName;
};
std::optional<OpenedFile> ReadOpenPacket(std::string_view strPacket);

/// The offset of a write data packet that has its whole head.
uint32_t ReadWriteOffset(std::string_view strPacket) noexcept;
/// Bytes of a write data packet ahead of its data.
inline constexpr size_t kWriteHeader = 7;

/// The text of a configuration variable packet as "name=value".
std::string ReadVariablePacket(std::string_view strPacket);

/// The record of fields: one that holds a comma or begins with a double quote goes in double
/// quotes, with its inner quotes doubled.
std::string JoinRecord(const std::vector<std::string>& fields);

/// The fields of a comma separated record; a field in double quotes may hold commas, and its inner
/// quotes are doubled. An empty record has one empty field.
std::vector<std::string> SplitRecord(std::string_view strRecord);

} // namespace brennik::sim
