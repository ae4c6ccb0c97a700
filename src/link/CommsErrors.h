// The one table of error codes and texts that all classes of the system share.
// A code goes to lErrorCode and its text to strErrorMessage of the raising object, by one call of
// SetError. Some codes stand for more than one text: the table has grown that way, and a reader
// who must tell such failures apart compares the text.
#pragma once

#include "support/Failure.h"

#include <cstdint>
#include <string_view>

namespace brennik {

/// A code of the table with the text that comes with it.
struct CommsError {
    int32_t lErrorCode;
    std::string_view strText;
};

/// Sets code and text of an object together, with a suffix behind the text where there is one.
void SetError(ErrorState& error, const CommsError& commsError, std::string_view strSuffix = {});

namespace CommsErrors {

// The TCP wrapper and the TCP channel.
inline constexpr CommsError kWinsockStart{1000001, "Windows sockets failed to start (WSAStartUp() "
                                                   "Failed)"};
inline constexpr CommsError kCreateSocket{1000002, "Failed to create socket"};
inline constexpr CommsError kResolvePort{1000003, "Failed to resolve to remote port number"};
inline constexpr CommsError kConnectTimeout{1000004,
                                            "Timed out waiting for connection to remote machine"};
inline constexpr CommsError kCloseSocket{1000005, "Failed closing socket"};
inline constexpr CommsError kReadSocket{1000006, "Failed reading from socket"};
inline constexpr CommsError kReadNumBytes{1000008, "Failed reading n bytes from socket"};
inline constexpr CommsError kResolveHost{1000009, "Unable to resolve host name"};
inline constexpr CommsError kConnectionAttempts{
    1000010, "Connection Attempts configuration value is invalid"};
inline constexpr CommsError kReadOneByte{1000010, "Failed reading 1 byte from socket"};

/// A failed send carries the result of the send call as its code, so its text stands alone.
inline constexpr std::string_view kSendSocketText = "Failed sending data to socket";

// The link.
inline constexpr CommsError kIsoPacketTimeout{1000011, "Timed out reading ISO packet"};
inline constexpr CommsError kReadEnq{1000012, "Failed reading ENQ character"};

// The serial channel. Its connecting and closing failures carry the text of the port wrapper.
inline constexpr int32_t kComPortCloseCode = 1000013;
inline constexpr CommsError kComPortWrite{1000014, "Failed writing packet to com port"};
inline constexpr int32_t kComPortOpenCode = 1000018;

// Packets, sessions and their files.
inline constexpr CommsError kUnknownPacketType{1000022, "Unknown brennik packet type"};
inline constexpr CommsError kInvalidPacketLength{1000023, "Invalid brennik pakcet length"};
inline constexpr CommsError kConfigSystemOpen{1000024, "Failed opening config system file"};
inline constexpr CommsError kConfigSystemWrite{1000025, "Failed writing to config system file"};
inline constexpr CommsError kCreateFolder{1000026, "Failed creating folder"};
inline constexpr CommsError kOpenFile{1000027, "Failed opening file"};
inline constexpr CommsError kWriteFile{1000028, "Failed writing to file."};
inline constexpr CommsError kDeleteFolder{1000029, "Failed deleting folder."};
inline constexpr CommsError kDownloadFailed{1000030, "Brennik download failed."};
inline constexpr CommsError kUploadFailed{1000030, "Brennik upload failed."};
inline constexpr CommsError kAbortedByUser{1000031, "Communications aborted by user"};
inline constexpr CommsError kTmsListOpen{1000031, "Failed opening TMS application list file"};
inline constexpr CommsError kTmsFileOpen{1000031, "Failed opening TMS file for download"};
inline constexpr CommsError kUploadNotAuthorised{1000032,
                                                 "Quayminder does not authorise upload of files"};
inline constexpr CommsError kTmsListEmpty{1000032, "No files found from list file"};

// Texts that belong to the table and that no operation raises.
inline constexpr std::string_view kOpenPortText = "Error opening port";
inline constexpr std::string_view kComPortReadText = "Failed reading packet from com port";
inline constexpr std::string_view kInitialisePortText = "Error initialising port";
inline constexpr std::string_view kSerialProtocolText = "Serial protocol failure";
inline constexpr std::string_view kPacketStructureText = "Invalid packet structure received";

} // namespace CommsErrors
} // namespace brennik
