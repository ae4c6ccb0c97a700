// One serial port: open and close, set its line from the connection parameters, read and write.
// It stands on the serial ports of the current host; tests put the lines in memory there. All
// access to ports passes through here. A status is 0 for success and 1 for failure.
#pragma once

#include "platform/ComPorts.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

class TConnectionInfo;

/// lErrorCode is the operating system's number of the last failing call. A failure that no such
/// call has caused sets its text alone and leaves the number of an earlier one: it is meant so. The
/// prefixes of unexpected failures carry the name of the channel class, as readers of the log know
/// them.
class TSerial {
  public:
    TSerial() = default;

    /// Closes a port that is still open.
    ~TSerial();
    TSerial(const TSerial&) = delete;
    TSerial& operator=(const TSerial&) = delete;

    /// Keeps the parameters, which are borrowed until the object is destroyed or initialised anew.
    /// bResetHandle forgets an open port without closing it; without it a running link goes on
    /// under the new parameters as soon as Configure is called.
    [[nodiscard]] int32_t Initialise(const TConnectionInfo& objConnectionInfo, bool bResetHandle);

    /// Opens strComPort, for this process alone. A port that is open already is a failure.
    [[nodiscard]] int32_t Connect();

    /// A closed port is a failure without a text.
    [[nodiscard]] int32_t Disconnect();

    /// Sets the line and then the time limits: 10 ms for a read, 1000 ms for a write.
    [[nodiscard]] int32_t Configure();

    /// Writes in blocks of lBlockSize bytes with lDelayMs milliseconds between them, or without
    /// bSplit in one. The bytes written, which are fewer when a block wasn't taken whole, or -1.
    [[nodiscard]] int32_t WriteData(std::string_view strData, bool bSplit, int32_t lBlockSize,
                                    int32_t lDelayMs);

    /// Reads at most vNumBytes bytes, as many as come within 10 ms: their number, which may be 0,
    /// or -1.
    [[nodiscard]] int32_t ReadData(std::string& strData, int32_t vNumBytes);

    /// Throws away what waits to be read. Nothing on a closed port; reports nothing.
    void ClearInputBuffer();

    /// Throws away what waits to be sent. Nothing on a closed port; reports nothing.
    void ClearOutputBuffer();

    /// Sets the line anew. The rate in force afterwards is that of the parameters, whatever
    /// lBaudRate is: change it there first. A failure shows in text and number alone.
    void SetBaudRate(int32_t lBaudRate);

    const std::string& strErrorMessage() const { return strErrorMessage_; }
    int32_t lErrorCode() const { return lErrorCode_; }

  private:
    friend class TSerialTestAccess;

    static std::vector<std::string_view> SplitIntoBlocks(std::string_view strData,
                                                         int32_t lBlockSize);
    int32_t SetPortInfoSettings();
    int32_t SetSerialTimeouts();
    void SetFlowControl();
    static void SetDcbFlag(int32_t& lFlags, int32_t lField, int32_t lValue);
    std::string ConvNullTerminatedByteArray2String(const std::vector<uint8_t>& bytes);
    std::string GetDevicePortName() const;

    const TConnectionInfo& Parameters() const;
    int32_t FailWithSystemError(std::string strText, int32_t lResult);

    std::string strErrorMessage_;
    int32_t lErrorCode_ = 0;
    DCB dcb_;
    const TConnectionInfo* connectionInfo_ = nullptr;
    int32_t hComPort_ = kNoComPort;
};

} // namespace brennik
