// The shell in the simulated host: a configuration file with one profile, a service that is a
// scripted peer, and Main as a user's command line starts it.
#pragma once

#include "config/TBrennikClientConfig.h"
#include "session/TBrennikProtocol.h"
#include "shell/BrennikClnt.h"
#include "shell/Windows.h"
#include "tests/session/Packets.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace brennik::shell {

/// Windows that only note what they were asked for.
class NotedWindows : public Windows {
  public:
    void ShowMainWindow() override { calls.emplace_back("main window"); }
    void ShowUsageBox(const std::string& strText) override { calls.push_back(strText); }

    std::vector<std::string> calls;
};

class ShellTest : public world::WorldTest {
  protected:
    ShellTest() : peer(host.network.AddPeer("10.0.0.1", 5000)) {
        host.files.MakeFolder("/srv");
        host.files.MakeFolder("/log");
        WriteProfile(1);
        Serve({"S"});
    }

    ~ShellTest() override {
        oProtocol.reset();
        oConfig.reset();
        lProfileId = -1;
    }

    /// Main, as a user's command line starts it.
    void RunMain(const std::string& strCommandLine) { Main(strCommandLine, windows); }

    /// Writes a working profile with some settings changed or added, "Key=value" each.
    void WriteProfile(int32_t lNumber, const std::vector<std::string>& settings = {}) {
        std::string strText = "[PROFILE_" + std::to_string(lNumber) +
                              "]\r\n"
                              "Mode=0\r\nWorkingFolder=C:\\srv\\pos\r\nTerminalID=T1\r\n"
                              "ApplicationID=APP\r\nPlatformName=VX520\r\n"
                              "LogFilePath=/log\r\nLogFileName=session.log\r\n"
                              "LoggingEnabled=TRUE\r\nServerIPAddress1=10.0.0.1\r\n"
                              "ServerPortNo1=5000\r\nServerConnectTimeout=5\r\n"
                              "ConnectAttempts=1\r\nReadPacketAttempts=1\r\n"
                              "SendPacketAttempts=3\r\nCharTimeout=2\r\nReadPacketTimeout=3\r\n";
        for (const std::string& strSetting : settings)
            strText += strSetting + "\r\n";
        host.files.Put("/config/BrennikClient.ini", strText);
    }

    /// Lets the service send the payloads.
    void Serve(std::vector<std::string> payloads) {
        peer.OnConnect = [this] { peer.Push(session::kEnq); };
        peer.OnBytes = [this, payloads, nNext = size_t{0}](std::string_view strBytes) mutable {
            if (strBytes != session::kAck)
                peer.Push(session::kAck);
            if (nNext < payloads.size())
                peer.Push(session::Frame(payloads[nNext++]));
        };
    }

    std::string Ini() const { return host.files.Get("/config/BrennikClient.ini").value(); }
    bool IniHolds(const std::string& strLine) const {
        return Ini().find("\n" + strLine + "\r\n") != std::string::npos;
    }
    /// The lines of the session log from the tag on.
    std::vector<std::string> Log() const {
        std::vector<std::string> lines;
        for (const std::string& strLine : host.files.Lines("/log/session.log"))
            lines.push_back(strLine.substr(strLine.find("] ") + 2));
        return lines;
    }
    /// Did a session run?
    bool Ran() const { return peer.nConnections() > 0; }

    world::ScriptedPeer& peer;
    NotedWindows windows;
};

} // namespace brennik::shell
