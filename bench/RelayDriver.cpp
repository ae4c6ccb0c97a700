// Measures the pass-through between brenniksim as a service on the loopback and brenniksim as a
// device on a pseudo-terminal: downloads with logging off and on, an upload, and a download at the
// pace of a line. The bare relay loop that only polls, reads and writes both ways sets the limit. A
// run with many frames and one with a single frame differ by the frames alone. With --peers other
// programs that join a socket and a line, and understand nothing of what they pass, take its place.

#include "bench/Options.h"
#include "bench/Processes.h"
#include "bench/SimProcess.h"
#include "bench/Workplace.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace brennik::bench {

namespace {

namespace fs = std::filesystem;

/// A write data frame is this much longer than its data.
constexpr size_t kFrameOverhead = 10;

struct Size {
    size_t nFrame;
    int64_t lFrames; ///< that make a run of about a second
};
// Frames above 1000 bytes are written in blocks with 10 ms between them.
constexpr std::array<Size, 4> kSizes{{{256, 8000}, {900, 8000}, {1034, 60}, {4106, 20}}};
constexpr int64_t kQuickFrames = 3;
constexpr int64_t kFramesOfUpload = 60;
constexpr int64_t kFramesAtPace = 40;
constexpr int64_t kFramesOfGrowth = 100000;
constexpr int kMostRoundsOfSlow = 3;
constexpr int64_t kFramesOfUntuned = 400; ///< a delay of its own in each

/// Opens the line for a relay that neither checks nor understands a frame.
int OpenLine(const std::string& strLine) {
    const int nLine = ::open(strLine.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios settings{};
    if (nLine < 0 || ::tcgetattr(nLine, &settings) != 0)
        Fail(strLine + " can't be opened");
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, B115200);
    ::tcsetattr(nLine, TCSANOW, &settings);
    return nLine;
}

int ConnectTo(uint16_t iPort) {
    const int nSocket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(iPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int nOn = 1;
    ::setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
    if (::connect(nSocket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        Fail("no connection to the service");
    return nSocket;
}

bool Copy(int nFrom, int nTo) {
    static std::array<char, 65536> buffer;
    const ssize_t nRead = ::read(nFrom, buffer.data(), buffer.size());
    if (nRead <= 0)
        return false;
    for (ssize_t nDone = 0; nDone < nRead;) {
        const ssize_t nWritten =
            ::write(nTo, buffer.data() + nDone, static_cast<size_t>(nRead - nDone));
        if (nWritten < 0) {
            pollfd room{nTo, POLLOUT, 0};
            ::poll(&room, 1, -1);
        } else {
            nDone += nWritten;
        }
    }
    return true;
}

/// Poll, read, write both ways until the service closes. The service's ENQ polls the device, so
/// that nothing has to be understood.
int RelayBare(uint16_t iPort, const std::string& strLine) {
    const int nLine = OpenLine(strLine);
    const int nSocket = ConnectTo(iPort);
    for (;;) {
        std::array<pollfd, 2> watched{{{nSocket, POLLIN, 0}, {nLine, POLLIN, 0}}};
        ::poll(watched.data(), watched.size(), -1);
        if (watched[1].revents != 0 && !Copy(nLine, nSocket))
            return 1;
        if (watched[0].revents != 0 && !Copy(nSocket, nLine))
            return 0;
    }
}

/// Takes an upload: ACK for each delivery, of which each is one frame.
int TakeUpload(int nListener) {
    const int nSocket = ::accept(nListener, nullptr, nullptr);
    const auto say = [&](char c) { return ::send(nSocket, &c, 1, MSG_NOSIGNAL) == 1; };
    std::array<char, 65536> buffer;
    bool bGood = say(0x05);
    while (bGood && ::recv(nSocket, buffer.data(), buffer.size(), 0) > 0)
        bGood = say(0x06);
    return 0;
}

class RelayDriver {
  public:
    explicit RelayDriver(const Options& options)
        : options_(options),
          workplace_(options.strParent),
          strHome_(workplace_.Folder()),
          strLine_(strHome_ + "/line") {
        ::setenv("BRENNIK_HOME", strHome_.c_str(), 1);
        std::ofstream(strHome_ + "/BrennikHost.ini") << "[PORTS]\nCOM1=" << strLine_ << "\n";
        std::ofstream(strHome_ + "/device.script") << "call\nrequest XDL P\nreboot 0\n";
        // The bare loop doesn't know the end of a session: the service closes at once.
        std::ofstream(strHome_ + "/service.script") << "timeout close 0\n";
        fs::create_directory(strHome_ + "/upload");
    }

    void Measure() {
        for (const Size& size : kSizes) {
            const int64_t lMany = options_.bQuick ? kQuickFrames : size.lFrames;
            for (int lRound = 0; lRound < options_.lRounds; ++lRound) {
                for (const int64_t lFrames : {lMany, int64_t{1}}) {
                    const std::string strEnd = lFrames == 1 ? "-one" : "-many";
                    MeasureDownload(size.nFrame, lFrames, "bare" + strEnd, lRound);
                    MeasureDownload(size.nFrame, lFrames, "off" + strEnd, lRound);
                    MeasureDownload(size.nFrame, lFrames, "log" + strEnd, lRound);
                }
            }
        }
        for (int lRound = 0; lRound < std::min(options_.lRounds, kMostRoundsOfSlow); ++lRound) {
            for (const bool bMany : {true, false}) {
                const std::string strEnd = bMany ? "-many" : "-one";
                MeasureUpload(bMany ? Quick(kFramesOfUpload) : 1, "upload" + strEnd, lRound);
                MeasureDownload(1034, bMany ? Quick(kFramesAtPace) : 1, "paced" + strEnd, lRound);
            }
        }
        MeasureDownload(256, Quick(kFramesOfGrowth), "growth-many", 0);
        MeasureDownload(256, Quick(kFramesOfGrowth / 100), "growth-one", 0);
    }

    /// The frames below the pauses only. The clock stops when the service ends, since a peer
    /// doesn't know the end of a session.
    void MeasurePeers() {
        for (const Size& size : {kSizes[0], kSizes[1]}) {
            for (int lRound = 0; lRound < options_.lRounds; ++lRound) {
                for (const bool bMany : {true, false}) {
                    const std::string strEnd = bMany ? "-many" : "-one";
                    const auto frames = [&](int64_t lMany) {
                        return bMany ? (options_.bQuick ? kQuickFrames : lMany) : 1;
                    };
                    for (const char* strPeer : {"bare", "off", "socat", "ser2net"})
                        MeasurePeer(size.nFrame, frames(size.lFrames), strPeer, strEnd, lRound);
                    MeasurePeer(size.nFrame, frames(kFramesOfUntuned), "ser2net-untuned", strEnd,
                                lRound);
                }
            }
        }
    }

  private:
    int64_t Quick(int64_t lFrames) const { return options_.bQuick ? kQuickFrames : lFrames; }

    void WriteProfile(uint16_t iPort, bool bLogAll, int32_t lPassThruType) {
        ProfileValues profile = workplace_.Profile(iPort, 1024, bLogAll);
        profile.lOperatingMode = 2;
        profile.lPassThruType = lPassThruType;
        profile.iClientComPort = 1;
        profile.lClientBaudRate = 115200;
        profile.strClientParity = "NONE";
        profile.iClientDatabits = 8;
        profile.dClientStopBit = 1;
        workplace_.WriteProfiles(profile, 1);
    }

    std::vector<std::string> DeviceCommand(bool bPaced) const {
        std::vector<std::string> command{"device", "--serial", strLine_, "--script",
                                         strHome_ + "/device.script"};
        if (bPaced)
            command.emplace_back("--pace");
        return command;
    }

    ChildEnd RunClient() {
        return WaitFor(StartProgram({options_.strPrograms + "/brennikclient", "-configfiledir",
                                     strHome_, "-profileid", "1"}));
    }

    /// Runs until it is stopped, or ends by itself a little behind the service.
    pid_t StartPeer(const std::string& strPeer, uint16_t iPort) {
        const std::string strAddress = "127.0.0.1:" + std::to_string(iPort);
        if (strPeer == "bare")
            return StartChild([&] { return RelayBare(iPort, strLine_); });
        if (strPeer == "off")
            return StartProgram({options_.strPrograms + "/brennikclient", "-configfiledir",
                                 strHome_, "-profileid", "1"});
        if (strPeer == "socat")
            return StartProgram({"/usr/bin/socat", "-t0", "-b65536",
                                 strLine_ + ",raw,echo=0,b115200",
                                 "TCP:" + strAddress + ",nodelay"});
        std::ofstream(strHome_ + "/ser2net.yaml")
            << "connection: &relay\n  accepter: conacc,tcp(nodelay=true),127.0.0.1," << iPort
            << "\n  connector: serialdev(nouucplock=true)," << strLine_ << ",115200n81,local\n"
            << (strPeer == "ser2net" ? "  options:\n    chardelay: false\n" : "");
        // It complains of a service of the network that it doesn't need.
        return StartProgram(
            {"/bin/sh", "-c", "exec ser2net -n -c \"$0\" 2>/dev/null", strHome_ + "/ser2net.yaml"});
    }

    void MeasurePeer(size_t nFrame, int64_t lFrames, const std::string& strPeer,
                     const std::string& strEnd, int lRound) {
        const std::string strServed = Serve(nFrame, lFrames);
        SimProcess service(options_, ServiceCommand(strServed, nFrame, true));
        const SimProcess device(options_, DeviceCommand(false));
        WriteProfile(service.Port(), false, 0);
        const int64_t lBegun = Now();
        const pid_t peer = StartPeer(strPeer, service.Port());
        const int64_t lEndedAt = service.AwaitEnd();
        StopChild(peer);
        Print({"relay", nFrame, strPeer + strEnd, lRound, lFrames, lEndedAt - lBegun, 0, 0});
    }

    /// A folder with one file of so many frames.
    std::string Serve(size_t nFrame, int64_t lFrames) {
        const std::string strServed = strHome_ + "/served";
        fs::create_directories(strServed);
        std::ofstream(strServed + "/file.bin", std::ios::binary)
            << std::string((nFrame - kFrameOverhead) * static_cast<size_t>(lFrames), 'x');
        workplace_.Clear();
        return strServed;
    }

    std::vector<std::string> ServiceCommand(const std::string& strServed, size_t nFrame,
                                            bool bOnce) const {
        std::vector<std::string> command{"service",
                                         "--listen",
                                         "127.0.0.1:0",
                                         "--serve",
                                         strServed,
                                         "--block",
                                         std::to_string(nFrame - kFrameOverhead),
                                         "--script",
                                         strHome_ + "/service.script"};
        if (bOnce)
            command.emplace_back("--once");
        return command;
    }

    void MeasureDownload(size_t nFrame, int64_t lFrames, const std::string& strVariant,
                         int lRound) {
        const std::string strServed = Serve(nFrame, lFrames);
        const SimProcess service(options_, ServiceCommand(strServed, nFrame, false));
        const SimProcess device(options_, DeviceCommand(strVariant.rfind("paced", 0) == 0));
        const bool bBare = strVariant.rfind("bare", 0) == 0;
        WriteProfile(service.Port(), strVariant.rfind("log", 0) == 0, 0);
        const int64_t lBegun = Now();
        const ChildEnd ended =
            bBare ? WaitFor(StartChild([&] { return RelayBare(service.Port(), strLine_); }))
                  : RunClient();
        Tell(ended, nFrame, lFrames, strVariant, lRound, lBegun);
    }

    void MeasureUpload(int64_t lFrames, const std::string& strVariant, int lRound) {
        std::ofstream(strHome_ + "/upload/file.bin", std::ios::binary)
            << std::string(1024 * static_cast<size_t>(lFrames), 'x');
        const int nListener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (::bind(nListener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(nListener, 1) != 0 ||
            ::getsockname(nListener, reinterpret_cast<sockaddr*>(&address), &length) != 0)
            Fail("no place to listen at");
        const pid_t server = StartChild([&] { return TakeUpload(nListener); });
        ::close(nListener);
        std::vector<std::string> command = DeviceCommand(false);
        command.insert(command.end(), {"--files", strHome_ + "/upload"});
        const SimProcess device(options_, command);
        WriteProfile(ntohs(address.sin_port), false, 1);
        const int64_t lBegun = Now();
        const ChildEnd ended = RunClient();
        Tell(ended, 1034, lFrames, strVariant, lRound, lBegun);
        static_cast<void>(WaitFor(server));
    }

    void Tell(const ChildEnd& ended, size_t nFrame, int64_t lFrames, const std::string& strVariant,
              int lRound, int64_t lBegun) {
        if (!ended.bGood)
            Fail("a relay did not come to its good end");
        Print({"relay", nFrame, strVariant, lRound, lFrames, ended.lEndedAt - lBegun,
               ended.lPeakKiB, 0});
    }

    const Options& options_;
    Workplace workplace_;
    std::string strHome_;
    std::string strLine_;
};

} // namespace

} // namespace brennik::bench

int main(int argc, char** argv) {
    const auto options = brennik::bench::Options::Read(argc, argv);
    brennik::bench::RelayDriver driver(options);
    if (options.bPeers)
        driver.MeasurePeers();
    else
        driver.Measure();
    return 0;
}
