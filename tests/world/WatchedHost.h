// A host whose clock, sockets and ports tell a watcher what the program reads and sends; all else
// is passed on untouched. Tortures hold it over the simulated host, so that a plain model can be
// fed with the very things that the program saw.
#pragma once

#include "platform/Host.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::world {

/// Told at the moment; what a watcher doesn't care for it leaves out.
class Watcher {
  public:
    virtual ~Watcher() = default;
    virtual void TimeRead(float) {}
    /// A look at a connection that found nothing, and what was received from one.
    virtual void ConnectionSilent() {}
    virtual void ConnectionRead(std::string_view) {}
    virtual void ConnectionWriting(std::string_view) {}
    /// The same of a port. Written comes behind the write, however it went.
    virtual void PortSilent() {}
    virtual void PortRead(std::string_view) {}
    virtual void PortWriting(std::string_view) {}
    virtual void PortWritten() {}
    virtual void PortClosing() {}
};

class WatchedClock final : public Clock {
  public:
    WatchedClock(Clock& clock, Watcher& watcher) : clock_(clock), watcher_(watcher) {}
    float SecondsSinceMidnight() override {
        const float dNow = clock_.SecondsSinceMidnight();
        watcher_.TimeRead(dNow);
        return dNow;
    }
    DateTime LocalNow() override { return clock_.LocalNow(); }
    int32_t LocalOffsetSeconds() override { return clock_.LocalOffsetSeconds(); }
    std::string MonthName(int32_t iMonth) override { return clock_.MonthName(iMonth); }
    void Sleep(int32_t lMilliseconds) override { clock_.Sleep(lMilliseconds); }

  private:
    Clock& clock_;
    Watcher& watcher_;
};

class WatchedSockets final : public Sockets {
  public:
    WatchedSockets(Sockets& sockets, Watcher& watcher) : sockets_(sockets), watcher_(watcher) {}
    int32_t BytesWaiting(int32_t lSocket, int32_t& lBytes) override {
        const int32_t lResult = sockets_.BytesWaiting(lSocket, lBytes);
        if (lResult == 0 && lBytes == 0)
            watcher_.ConnectionSilent();
        return lResult;
    }
    int32_t Receive(int32_t lSocket, char* buffer, int32_t lLength) override {
        const int32_t lResult = sockets_.Receive(lSocket, buffer, lLength);
        if (lResult > 0)
            watcher_.ConnectionRead({buffer, static_cast<size_t>(lResult)});
        return lResult;
    }
    int32_t Send(int32_t lSocket, std::string_view strData) override {
        watcher_.ConnectionWriting(strData);
        return sockets_.Send(lSocket, strData);
    }
    int32_t Startup(int32_t lVersion) override { return sockets_.Startup(lVersion); }
    void Cleanup() override { sockets_.Cleanup(); }
    int32_t LastError() override { return sockets_.LastError(); }
    int32_t Socket() override { return sockets_.Socket(); }
    int32_t Connect(int32_t lSocket, uint32_t lAddress, uint16_t iPort) override {
        return sockets_.Connect(lSocket, lAddress, iPort);
    }
    int32_t SetNonBlocking(int32_t lSocket) override { return sockets_.SetNonBlocking(lSocket); }
    int32_t SelectWritable(int32_t lSocket, int32_t lSeconds) override {
        return sockets_.SelectWritable(lSocket, lSeconds);
    }
    void Shutdown(int32_t lSocket) override { sockets_.Shutdown(lSocket); }
    int32_t CloseSocket(int32_t lSocket) override { return sockets_.CloseSocket(lSocket); }
    std::vector<std::string> GetHostByName(const std::string& strName) override {
        return sockets_.GetHostByName(strName);
    }
    uint32_t InetAddr(const std::string& strAddress) override {
        return sockets_.InetAddr(strAddress);
    }
    uint16_t HostToNetworkPort(uint16_t iPort) override {
        return sockets_.HostToNetworkPort(iPort);
    }
    void WaitReadable(int32_t lSocket, int32_t lMilliseconds) override {
        sockets_.WaitReadable(lSocket, lMilliseconds);
    }

  private:
    Sockets& sockets_;
    Watcher& watcher_;
};

class WatchedComPorts final : public ComPorts {
  public:
    WatchedComPorts(ComPorts& comPorts, Watcher& watcher)
        : comPorts_(comPorts), watcher_(watcher) {}
    bool Read(int32_t hPort, char* buffer, int32_t lCount, int32_t& lRead) override {
        const bool bRead = comPorts_.Read(hPort, buffer, lCount, lRead);
        if (bRead && lRead == 0)
            watcher_.PortSilent();
        else if (bRead)
            watcher_.PortRead({buffer, static_cast<size_t>(lRead)});
        return bRead;
    }
    bool Write(int32_t hPort, std::string_view strData, int32_t& lWritten) override {
        watcher_.PortWriting(strData);
        const bool bWritten = comPorts_.Write(hPort, strData, lWritten);
        watcher_.PortWritten();
        return bWritten;
    }
    bool Close(int32_t hPort) override {
        watcher_.PortClosing();
        return comPorts_.Close(hPort);
    }
    int32_t LastError() override { return comPorts_.LastError(); }
    int32_t Open(const std::string& strPort) override { return comPorts_.Open(strPort); }
    void Purge(int32_t hPort, int32_t lFlags) override { comPorts_.Purge(hPort, lFlags); }
    bool GetState(int32_t hPort, DCB& dcb) override { return comPorts_.GetState(hPort, dcb); }
    bool SetState(int32_t hPort, const DCB& dcb) override { return comPorts_.SetState(hPort, dcb); }
    bool SetTimeouts(int32_t hPort, const CommTimeouts& timeouts) override {
        return comPorts_.SetTimeouts(hPort, timeouts);
    }

  private:
    ComPorts& comPorts_;
    Watcher& watcher_;
};

/// The three over a host that lives longer, as does the watcher. Its events are not pumped.
class WatchedHost {
  public:
    WatchedHost(Host& host, Watcher& watcher)
        : clock_(host.clock, watcher),
          sockets_(host.sockets, watcher),
          comPorts_(host.comPorts, watcher),
          host_{clock_,         sockets_,    comPorts_, host.files, host.profileStrings,
                host.processes, host.ostRtl, [] {}} {}
    WatchedHost(const WatchedHost&) = delete;
    WatchedHost& operator=(const WatchedHost&) = delete;

    Host& TheHost() { return host_; }

  private:
    WatchedClock clock_;
    WatchedSockets sockets_;
    WatchedComPorts comPorts_;
    Host host_;
};

} // namespace brennik::world
