// What the link and the session engine know of a channel to the far end.
// For real it is a TCP connection (TSocketComms) or a serial port (TSerialComms); tests of the
// link put a scripted channel in its place. A status is 0 for success and anything else for
// failure; text and code of the last failure stay through a success, so look at them only then.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

class TConnectionInfo;
class TFLClientLog;

class TCommsChannel {
  public:
    virtual ~TCommsChannel() = default;

    /// Opens the channel. Already open: success at once, and nothing else is done. May write to
    /// the parameters. The log is borrowed until the channel is destroyed, the parameters of a
    /// serial channel as well.
    [[nodiscard]] virtual int32_t Connect(TConnectionInfo& objConnectionInfo,
                                          TFLClientLog& objLog) = 0;

    /// Closes the channel. Not open: success.
    [[nodiscard]] virtual int32_t Disconnect() = 0;

    /// Sends all bytes.
    [[nodiscard]] virtual int32_t WriteData(std::string_view strData) = 0;

    /// Delivers what is waiting; success with an empty string when nothing is, after a pause of
    /// 10 ms that arriving bytes cut short. A serial channel gives the failure of a read; a TCP
    /// channel doesn't return while its reads fail.
    [[nodiscard]] virtual int32_t ReadData(std::string& strData) = 0;

    /// Delivers at most one byte. With nothing waiting a serial channel succeeds with an empty
    /// string after 10 ms; a TCP channel doesn't return before a byte has arrived.
    [[nodiscard]] virtual int32_t ReadCharacter(std::string& strData) = 0;

    /// Code and text of the last failure.
    virtual int32_t lErrorCode() const = 0;
    virtual const std::string& strErrorMessage() const = 0;

    /// Describes the peer after Connect; a serial channel leaves it empty.
    virtual const std::string& strConnectionData() const = 0;
};

} // namespace brennik
