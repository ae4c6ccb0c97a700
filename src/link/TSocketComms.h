// The TCP channel: up to three addresses in rotation, the state of the connection, and its course
// in the log. It stands on TSocket, and so on the sockets of the current host; tests put the
// network in memory there. Its reads pump events on every turn and repeat on failure without end.
#pragma once

#include "link/TCommsChannel.h"
#include "link/TSocket.h"

#include <memory>

namespace brennik {

class TSocketComms final : public TCommsChannel {
  public:
    TSocketComms() = default;

    /// Closes a connection that is still open.
    ~TSocketComms() override;
    TSocketComms(const TSocketComms&) = delete;
    TSocketComms& operator=(const TSocketComms&) = delete;

    /// Tries the addresses 1, 2, 3, 1, ... until one connects or lConnectionAttempts are used up,
    /// without a pause between. An empty second or third address becomes the first, in
    /// objConnectionInfo itself. A port outside 0 to 65535 is an overflow. The log is borrowed
    /// until the channel is destroyed.
    [[nodiscard]] int32_t Connect(TConnectionInfo& objConnectionInfo,
                                  TFLClientLog& objLog) override;

    /// A socket that can't be closed is a failure that changes nothing: the channel stays
    /// connected, and another Disconnect tries again.
    [[nodiscard]] int32_t Disconnect() override;

    /// A failure shows the bytes behind its text.
    [[nodiscard]] int32_t WriteData(std::string_view strData) override;

    /// Repeats until a read succeeds, also on a connection lost for good.
    [[nodiscard]] int32_t ReadData(std::string& strData) override;

    /// Repeats until a byte has arrived. The code and text of reads that found none stay.
    [[nodiscard]] int32_t ReadCharacter(std::string& strData) override;

    int32_t lErrorCode() const override { return error_.lErrorCode(); }
    const std::string& strErrorMessage() const override { return error_.strErrorMessage(); }

    /// The address as it was configured, not resolved, of the connected peer.
    const std::string& strConnectionData() const override { return strConnectionData_; }

  private:
    bool TryConnect(const TConnectionInfo& objConnectionInfo, int64_t lAttempt);
    void LogSocketError();
    TSocket& Socket();

    ErrorState error_;
    std::unique_ptr<TSocket> oSocket_;
    int32_t lSocket_ = kNoSocket;
    bool bConnected_ = false;
    std::string strConnectionData_;
    TFLClientLog* oLog_ = nullptr;
};

} // namespace brennik
