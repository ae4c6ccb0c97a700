#include "tests/system/RealRun.h"

#include <cstdlib>
#include <filesystem>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace brennik::system_tests {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// The program between brenniksim as a service on the loopback and brenniksim as a device on a
// pseudo-terminal: three real processes.
class RealPassThru : public RealRun {
  protected:
    RealPassThru() {
        for (const char* folder : {"home", "store", "upload"})
            fs::create_directory(folder_ / folder);
        WriteFile(folder_ / "home/BrennikHost.ini", "[PORTS]\nCOM1=" + (folder_ / "line") + "\n");
    }

    void Serve(const Lines& options = {}) { StartService({"--listen", "127.0.0.1:0"}, options); }

    void StartDevice(const std::string& strScript, const Lines& options = {}) {
        WriteFile(folder_ / "device.script", strScript);
        Lines arguments{"--serial", folder_ / "line",          "--store", folder_ / "store",
                        "--script", folder_ / "device.script", "--once"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        device_ = std::make_unique<SimProgram>("device", arguments);
    }

    void RunBetween(uint16_t iPort, const Lines& settings = {}) {
        Lines all{"Mode=2",
                  "PassThruType=0",
                  "PlatformName=VX520",
                  "ServerIPAddress1=127.0.0.1",
                  "ServerPortNo1=" + std::to_string(iPort),
                  "ServerConnectTimeout=5",
                  "ClientComPort=1",
                  "ClientBaudRate=115200",
                  "ClientParity=N",
                  "ClientDatabits=8",
                  "ClientStopbit=1",
                  "ClientFlowControl=0"};
        // The first key of a name counts.
        all.insert(all.begin(), settings.begin(), settings.end());
        WriteProfile(all);
        RunClient([strHome = folder_ / "home"] { setenv("BRENNIK_HOME", strHome.c_str(), 1); });
    }

    std::string Stored(const std::string& strName) const {
        return ReadFile(folder_ / ("store/" + strName));
    }

    std::unique_ptr<SimProgram> device_;
};

TEST_F(RealPassThru, BringsAPartialDownloadOntoTheDevice) {
    fs::create_directories(folder_ / "served/F/2");
    WriteFile(folder_ / "served/a.bin", SomeBytes(5000));
    WriteFile(folder_ / "served/F/2/b.bin", SomeBytes(1));
    Serve({"--verbose"});
    StartDevice("call\nrequest XDL P\nreboot 0\n");
    RunBetween(service_->iPort());
    EXPECT_TRUE(Stored("I/1/a.bin") == Served("a.bin"));
    EXPECT_TRUE(Stored("F/2/b.bin") == Served("F/2/b.bin"));
    EXPECT_TRUE(
        Logged("[B] State=PASSTHRU_ST_PARTIALDOWNLOAD, Exiting now as session is complete"));
    EXPECT_FALSE(fs::exists(folder_ / "received")) << "a relay stores nothing";
    EXPECT_EQ(device_->Program().Wait(), 0);
    // The terminal id is the profile's, the application of a partial request the device's.
    EXPECT_NE(service_->strReport().find("request: VFI,VX520,XDL,P,APP1,T1,"), std::string::npos);
    EXPECT_EQ(ReadFile(folder_ / "home/vfi.txt").substr(0, 14), "VFI,VX520,XDL,");
}

TEST_F(RealPassThru, PutsAKeyIntoADeviceAheadOfAFullDownload) {
    WriteFile(folder_ / "served/a.bin", SomeBytes(100));
    WriteFile(folder_ / "home/flkeyfile.txt",
              "[ENCRYPTION]\nRsaKey=KEY\nRsaKeyIndex=5\nRsaKeyExpiryDate=20301231\n");
    Serve();
    StartDevice("call\nfield 9 \"PT7\"\nreboot 0\n");
    RunBetween(service_->iPort(),
               {"InjectPublicKeyFile=TRUE", "PublicKeyFileLocation=" + (folder_ / "home")});
    EXPECT_TRUE(Logged("Successfully injected key file"));
    // The hash is SHA-1 over "KEY,5,20301231,PT7". The group that the key went to stays.
    EXPECT_EQ(Stored("I/15/flpkey.csv"), "KEY,5,20301231,2dd6a3392e4c6783fe4586a0ffce9f2878c5db3b");
    EXPECT_TRUE(Stored("I/15/a.bin") == Served("a.bin"));
    EXPECT_TRUE(Logged("[B] State=PASSTHRU_ST_FULLDOWNLOAD"));
}

TEST_F(RealPassThru, FindsTheSpeedOfADeviceAndKeepsIt) {
    WriteFile(folder_ / "served/a.bin", SomeBytes(100));
    Serve();
    // What it answers to noise is noise to the program, which tries the next rate at once.
    StartDevice("rate 19200\nnoise 55\ncall\nrequest XDL P\nreboot 0\n");
    RunBetween(service_->iPort(), {"ClientBaudRate=115200", "Autobaud=TRUE"});
    EXPECT_TRUE(Stored("I/1/a.bin") == Served("a.bin"));
    EXPECT_NE(ReadFile(folder_ / "config/BrennikClient.ini").find("ClientBaudRate=19200"),
              std::string::npos);
}

TEST_F(RealPassThru, PassesAnEnquiryAndTheRequestBehindIt) {
    Serve({"--message", "reply"});
    StartDevice("call\nenquiry\ncall\nrequest XDL P\nreboot 0\n");
    RunBetween(service_->iPort());
    EXPECT_TRUE(Logged("STATE=TMSENQUIRY"));
    EXPECT_TRUE(Logged("[C] State=PASSTHRU_ST_TMSENQUIRY, lTries=1"));
    EXPECT_TRUE(Logged("[B] State=PASSTHRU_ST_PARTIALDOWNLOAD"));
    EXPECT_EQ(device_->Program().Wait(), 0);
}

/// A server that takes an upload: ENQ, then ACK for each frame, which it notes by its first byte.
class UploadServer {
  public:
    UploadServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(listener_, 1) != 0 ||
            ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
            throw std::runtime_error("no listening socket");
        iPort_ = ntohs(address.sin_port);
    }
    ~UploadServer() {
        ::close(listener_);
        if (connection_ >= 0)
            ::close(connection_);
    }
    uint16_t iPort() const { return iPort_; }

    /// Serves one connection until it ends, each wait being for an event.
    void Serve() {
        if (!bReadable(listener_))
            return;
        connection_ = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        Send("\x05");
        char buffer[4096];
        ssize_t nRead = 0;
        while (bReadable(connection_) &&
               (nRead = ::recv(connection_, buffer, sizeof buffer, 0)) > 0) {
            strBytes.append(buffer, static_cast<size_t>(nRead));
            strKinds += buffer[1]; // each frame waits for its answer, so it begins a delivery
            Send("\x06");
        }
    }
    std::string strBytes;
    std::string strKinds;

  private:
    static bool bReadable(int fd) {
        pollfd watched{fd, POLLIN, 0};
        return ::poll(&watched, 1, 10000) == 1;
    }
    void Send(const char* strByte) const { ::send(connection_, strByte, 1, MSG_NOSIGNAL); }

    int listener_;
    int connection_ = -1;
    uint16_t iPort_ = 0;
};

TEST_F(RealPassThru, BringsAnUploadOntoTheServer) {
    WriteFile(folder_ / "upload/log.txt", "what the device has");
    UploadServer server;
    StartDevice("call\nrequest XUL F\nreboot 0\n", {"--files", folder_ / "upload"});
    WriteProfile({"Mode=2", "PassThruType=1", "UploadFileTypes=1", "PlatformName=VX520",
                  "ServerIPAddress1=127.0.0.1", "ServerPortNo1=" + std::to_string(server.iPort()),
                  "ServerConnectTimeout=5", "ClientComPort=1", "ClientBaudRate=115200",
                  "ClientParity=N", "ClientDatabits=8", "ClientStopbit=1", "ClientFlowControl=0"});
    ProgramRun client(ClientArguments(),
                      [strHome = folder_ / "home"] { setenv("BRENNIK_HOME", strHome.c_str(), 1); });
    server.Serve();
    EXPECT_EQ(client.Wait(), 0);
    EXPECT_EQ(server.strKinds, "VOWCS");
    EXPECT_NE(server.strBytes.find("what the device has"), std::string::npos);
    EXPECT_TRUE(Logged("[B] State=PASSTHRU_ST_UPLOADFILES"));
    EXPECT_FALSE(Logged("ERROR"));
}

} // namespace
} // namespace brennik::system_tests
