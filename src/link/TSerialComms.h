// The serial channel: opens a port with retries and a pause, sets its line, writes in blocks, and
// reads byte by byte. It stands on TSerial, and so on the serial ports of the current host; tests
// put lines in memory there. Its reads pump events before each byte and give every failure up.
#pragma once

#include "link/TCommsChannel.h"
#include "link/TSerial.h"
#include "support/Failure.h"

#include <memory>

namespace brennik {

class TSerialComms final : public TCommsChannel {
  public:
    TSerialComms() = default;

    /// Closes a port that is still open.
    ~TSerialComms() override;
    TSerialComms(const TSerialComms&) = delete;
    TSerialComms& operator=(const TSerialComms&) = delete;

    /// Opens the port in at most lConnectionAttempts attempts, each failed one followed by a pause
    /// of 250 ms that doesn't pump, and sets its line. A line that can't be set is a failure that
    /// leaves the port open and the channel connected. The parameters and the log are borrowed
    /// until the channel is destroyed.
    [[nodiscard]] int32_t Connect(TConnectionInfo& objConnectionInfo,
                                  TFLClientLog& objLog) override;

    /// A port that can't be closed is a failure that changes nothing.
    [[nodiscard]] int32_t Disconnect() override;

    /// Sends in blocks of 1000 bytes with 10 ms between them.
    [[nodiscard]] int32_t WriteData(std::string_view strData) override;

    /// Delivers what comes until 10 ms pass without a byte, at most 128 KiB. A failure behind the
    /// first byte shows at the next read.
    [[nodiscard]] int32_t ReadData(std::string& strData) override;

    /// One byte, or none after 10 ms.
    [[nodiscard]] int32_t ReadCharacter(std::string& strData) override;

    /// Sets the line of the open port anew by other parameters, which are borrowed from then on.
    /// Failures are dropped.
    void ConfigureComPort(const TConnectionInfo& objConnectionInfo);

    /// Brings a changed lBaudRate of the parameters that the channel holds into force. Failures
    /// are dropped.
    void SetBaudRate(const TConnectionInfo& objConnectionInfo);

    int32_t lErrorCode() const override { return error_.lErrorCode(); }
    const std::string& strErrorMessage() const override { return error_.strErrorMessage(); }

    /// Always empty: nothing describes the peer of a serial line.
    const std::string& strConnectionData() const override { return strConnectionData_; }

  private:
    static std::string GetConnectionDescription(const TConnectionInfo& objConnectionInfo);
    int32_t OpenPort(const TConnectionInfo& objConnectionInfo);
    int32_t FailAsUnopened();
    TSerial& Port();

    ErrorState error_;
    std::unique_ptr<TSerial> oSerial_;
    bool bConnected_ = false;
    std::string strConnectionData_;
    TFLClientLog* oLog_ = nullptr;
};

} // namespace brennik
