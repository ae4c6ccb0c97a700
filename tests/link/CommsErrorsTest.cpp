#include "link/CommsErrors.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

TEST(CommsErrors, EveryCodeComesWithItsText) {
    struct Row {
        const CommsError& error;
        int32_t lErrorCode;
        const char* strText;
    };
    const std::vector<Row> rows = {
        {CommsErrors::kWinsockStart, 1000001,
         "Windows sockets failed to start (WSAStartUp() Failed)"},
        {CommsErrors::kCreateSocket, 1000002, "Failed to create socket"},
        {CommsErrors::kResolvePort, 1000003, "Failed to resolve to remote port number"},
        {CommsErrors::kConnectTimeout, 1000004,
         "Timed out waiting for connection to remote machine"},
        {CommsErrors::kCloseSocket, 1000005, "Failed closing socket"},
        {CommsErrors::kReadSocket, 1000006, "Failed reading from socket"},
        {CommsErrors::kReadNumBytes, 1000008, "Failed reading n bytes from socket"},
        {CommsErrors::kResolveHost, 1000009, "Unable to resolve host name"},
        {CommsErrors::kConnectionAttempts, 1000010,
         "Connection Attempts configuration value is invalid"},
        {CommsErrors::kReadOneByte, 1000010, "Failed reading 1 byte from socket"},
        {CommsErrors::kIsoPacketTimeout, 1000011, "Timed out reading ISO packet"},
        {CommsErrors::kReadEnq, 1000012, "Failed reading ENQ character"},
        {CommsErrors::kComPortWrite, 1000014, "Failed writing packet to com port"},
        {CommsErrors::kUnknownPacketType, 1000022, "Unknown brennik packet type"},
        {CommsErrors::kInvalidPacketLength, 1000023, "Invalid brennik pakcet length"},
        {CommsErrors::kConfigSystemOpen, 1000024, "Failed opening config system file"},
        {CommsErrors::kConfigSystemWrite, 1000025, "Failed writing to config system file"},
        {CommsErrors::kCreateFolder, 1000026, "Failed creating folder"},
        {CommsErrors::kOpenFile, 1000027, "Failed opening file"},
        {CommsErrors::kWriteFile, 1000028, "Failed writing to file."},
        {CommsErrors::kDeleteFolder, 1000029, "Failed deleting folder."},
        {CommsErrors::kDownloadFailed, 1000030, "Brennik download failed."},
        {CommsErrors::kUploadFailed, 1000030, "Brennik upload failed."},
        {CommsErrors::kAbortedByUser, 1000031, "Communications aborted by user"},
        {CommsErrors::kTmsListOpen, 1000031, "Failed opening TMS application list file"},
        {CommsErrors::kTmsFileOpen, 1000031, "Failed opening TMS file for download"},
        {CommsErrors::kUploadNotAuthorised, 1000032,
         "Quayminder does not authorise upload of files"},
        {CommsErrors::kTmsListEmpty, 1000032, "No files found from list file"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.error.lErrorCode, row.lErrorCode) << row.strText;
        EXPECT_EQ(row.error.strText, row.strText);
    }
}

TEST(CommsErrors, CodesWhoseTextComesFromElsewhere) {
    EXPECT_EQ(kUnexpectedFailure, 1000000);
    EXPECT_EQ(CommsErrors::kComPortCloseCode, 1000013);
    EXPECT_EQ(CommsErrors::kComPortOpenCode, 1000018);
}

TEST(CommsErrors, TextsWithoutACode) {
    EXPECT_EQ(CommsErrors::kSendSocketText, "Failed sending data to socket");
    EXPECT_EQ(CommsErrors::kOpenPortText, "Error opening port");
    EXPECT_EQ(CommsErrors::kComPortReadText, "Failed reading packet from com port");
    EXPECT_EQ(CommsErrors::kInitialisePortText, "Error initialising port");
    EXPECT_EQ(CommsErrors::kSerialProtocolText, "Serial protocol failure");
    EXPECT_EQ(CommsErrors::kPacketStructureText, "Invalid packet structure received");
}

TEST(CommsErrors, SetErrorSetsCodeAndTextTogether) {
    ErrorState error;
    SetError(error, CommsErrors::kReadEnq);
    EXPECT_EQ(error.lErrorCode(), 1000012);
    EXPECT_EQ(error.strErrorMessage(), "Failed reading ENQ character");
    SetError(error, CommsErrors::kResolveHost, " - pos.example");
    EXPECT_EQ(error.lErrorCode(), 1000009);
    EXPECT_EQ(error.strErrorMessage(), "Unable to resolve host name - pos.example");
}

} // namespace
} // namespace brennik
