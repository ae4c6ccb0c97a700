// The parameters of one channel: a plain object with a getter and a setter per value.
// The session engine fills it from a profile; a channel reads it in Connect, and the serial port
// wrapper keeps a reference to it. It checks nothing.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace brennik {

class TConnectionInfo {
  public:
    /// Port name, "COM" followed by the number.
    const std::string& strComPort() const { return strComPort_; }
    void strComPort(std::string strValue) { strComPort_ = std::move(strValue); }

    /// Bits per second.
    int32_t lBaudRate() const { return lBaudRate_; }
    void lBaudRate(int32_t lValue) { lBaudRate_ = lValue; }

    /// 0 even, 1 odd, 2 none, 3 space, 4 mark.
    int32_t lParity() const { return lParity_; }
    void lParity(int32_t lValue) { lParity_ = lValue; }

    /// 0 four bits, 1 five, 2 six, 3 seven, 4 or more eight.
    int32_t lDatabits() const { return lDatabits_; }
    void lDatabits(int32_t lValue) { lDatabits_ = lValue; }

    /// 0 one stop bit, 1 one and a half, other two.
    int32_t lStopbit() const { return lStopbit_; }
    void lStopbit(int32_t lValue) { lStopbit_ = lValue; }

    /// 0 none, 1 RTS/CTS, 2 DTR/DSR, 3 XON/XOFF.
    int32_t lFlowControl() const { return lFlowControl_; }
    void lFlowControl(int32_t lValue) { lFlowControl_ = lValue; }

    /// First address, dotted or a host name.
    const std::string& strIPAddress1() const { return strIPAddress1_; }
    void strIPAddress1(std::string strValue) { strIPAddress1_ = std::move(strValue); }

    /// Second address; a TCP connect fills an empty one in.
    const std::string& strIPAddress2() const { return strIPAddress2_; }
    void strIPAddress2(std::string strValue) { strIPAddress2_ = std::move(strValue); }

    /// Third address; a TCP connect fills an empty one in.
    const std::string& strIPAddress3() const { return strIPAddress3_; }
    void strIPAddress3(std::string strValue) { strIPAddress3_ = std::move(strValue); }

    /// Port of the first address.
    int32_t lIPPortNo1() const { return lIPPortNo1_; }
    void lIPPortNo1(int32_t lValue) { lIPPortNo1_ = lValue; }

    /// Port of the second address.
    int32_t lIPPortNo2() const { return lIPPortNo2_; }
    void lIPPortNo2(int32_t lValue) { lIPPortNo2_ = lValue; }

    /// Port of the third address.
    int32_t lIPPortNo3() const { return lIPPortNo3_; }
    void lIPPortNo3(int32_t lValue) { lIPPortNo3_ = lValue; }

    /// Connection attempts, at least 1.
    int32_t lConnectionAttempts() const { return lConnectionAttempts_; }
    void lConnectionAttempts(int32_t lValue) { lConnectionAttempts_ = lValue; }

    /// Seconds to wait for a non-blocking connect.
    int32_t lConnectTimeout() const { return lConnectTimeout_; }
    void lConnectTimeout(int32_t lValue) { lConnectTimeout_ = lValue; }

    /// Carried, read by nobody.
    int32_t lSendAttempts() const { return lSendAttempts_; }
    void lSendAttempts(int32_t lValue) { lSendAttempts_ = lValue; }

    /// Carried, read by nobody.
    int32_t lReadAttempts() const { return lReadAttempts_; }
    void lReadAttempts(int32_t lValue) { lReadAttempts_ = lValue; }

    /// Carried, read by nobody.
    bool bDelayPackets() const { return bDelayPackets_; }
    void bDelayPackets(bool bValue) { bDelayPackets_ = bValue; }

    /// Carried, read by nobody.
    int32_t lAckTimeout() const { return lAckTimeout_; }
    void lAckTimeout(int32_t lValue) { lAckTimeout_ = lValue; }

    /// Blocking connect when true.
    bool bBlockedSocket() const { return bBlockedSocket_; }
    void bBlockedSocket(bool bValue) { bBlockedSocket_ = bValue; }

    /// Carried, read by nobody.
    int32_t lMaxReadTimeout() const { return lMaxReadTimeout_; }
    void lMaxReadTimeout(int32_t lValue) { lMaxReadTimeout_ = lValue; }

    /// Carried, read by nobody.
    bool bIpToSerial() const { return bIpToSerial_; }
    void bIpToSerial(bool bValue) { bIpToSerial_ = bValue; }

  private:
    std::string strComPort_;
    int32_t lBaudRate_ = 0;
    int32_t lParity_ = 0;
    int32_t lDatabits_ = 0;
    int32_t lStopbit_ = 0;
    int32_t lFlowControl_ = 0;
    std::string strIPAddress1_;
    std::string strIPAddress2_;
    std::string strIPAddress3_;
    int32_t lIPPortNo1_ = 0;
    int32_t lIPPortNo2_ = 0;
    int32_t lIPPortNo3_ = 0;
    int32_t lConnectionAttempts_ = 0;
    int32_t lConnectTimeout_ = 0;
    int32_t lSendAttempts_ = 0;
    int32_t lReadAttempts_ = 0;
    bool bDelayPackets_ = false;
    int32_t lAckTimeout_ = 0;
    bool bBlockedSocket_ = false;
    int32_t lMaxReadTimeout_ = 0;
    bool bIpToSerial_ = false;
};

} // namespace brennik
