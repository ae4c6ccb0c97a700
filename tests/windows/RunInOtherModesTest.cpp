// Runs in windows of the modes with a serial line, and runs that fail where nothing may.
#include "sim/DeviceBehaviour.h"
#include "sim/ServiceBehaviour.h"
#include "tests/session/Contents.h"
#include "tests/windows/WindowsWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace brennik {
namespace {

using session::Open;
using session::Write;
using testing::HasSubstr;
using testing::Not;

const std::string kSuccess = "Communications with Brennik Server completed successfully";

class RunInOtherModes : public windows::WindowsTest {
  protected:
    /// The first profile, in that mode, with a line to COM7 and a script that stands in its folder.
    void UseMode(int nMode, const std::vector<std::string>& settings = {}) {
        std::vector<std::string> all = {"ExecuteScriptFile=TRUE", "ScriptFileName=go.sh"};
        for (const std::string strSide : {"Client", "Server"}) {
            for (const char* setting : {"ComPort=7", "BaudRate=19200", "Parity=NONE", "Databits=8",
                                        "Stopbit=1", "FlowControl=0"})
                all.push_back(strSide + setting);
        }
        all.insert(all.end(), settings.begin(), settings.end());
        WriteProfiles({all});
        std::string strIni = Ini();
        strIni.replace(strIni.find("Mode=0"), 6, "Mode=" + std::to_string(nMode));
        host.files.Put("/config/BrennikClient.ini", strIni);
        host.files.Put("/srv/pos/go.sh", "#!/bin/sh\n");
        host.comPorts.AddLine("COM7").SetFarRate(19200);
    }
    world::SimLine& Line() { return host.comPorts.Line("COM7"); }

    /// A device on the line that asks for a partial download once; the service has a file for it.
    void PlugDevice() {
        std::string strError;
        sim::DeviceOptions device;
        device.script =
            sim::DeviceScript::Parse("rate 19200\ncall\nrequest XDL P\nreboot 200\n", strError)
                .value();
        Line().Plug(std::make_unique<sim::DeviceBehaviour>(std::move(device)));
        Serve({Open("a.bin", 4), Write("data"), "C", "S"});
    }

    void ExpectNoScript() {
        EXPECT_TRUE(host.processes.calls.empty());
        for (const std::string& strLine : Log())
            EXPECT_THAT(strLine, Not(HasSubstr("cript")));
    }
};

TEST_F(RunInOtherModes, OfAPassThruShowsTheSuccessAndStartsNoScript) {
    UseMode(2);
    PlugDevice();
    RunFromMenu();
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
    EXPECT_THAT(peer.Received(), HasSubstr(",XDL,P,"));
    ExpectNoScript();
}

TEST_F(RunInOtherModes, OfAClientOnALineShowsTheSuccessAndStartsNoScript) {
    UseMode(1);
    Line().ServeEachOpening([] {
        // A line is set a moment after it was opened; until then it would hear noise.
        std::string strError;
        sim::ServiceOptions options;
        options.script = sim::ServiceScript::Parse("at start pause 1\n", strError).value();
        return std::make_unique<sim::ServiceBehaviour>(std::make_shared<sim::ServedTree>(),
                                                       std::move(options));
    });
    RunFromMenu();
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
    EXPECT_TRUE(host.files.Exists("/srv/pos/I/1"));
    ExpectNoScript();
}

// The engine writes what it learns of a device to the profile that was picked, in the program's own
// folder: here the rate at which the device was found.
TEST_F(RunInOtherModes, GiveTheEngineTheProgramsFolderAndTheProfile) {
    UseMode(2, {"Autobaud=TRUE"});
    std::string strIni = Ini();
    strIni.replace(strIni.find("ClientBaudRate=19200"), 20, "ClientBaudRate=9600");
    host.files.Put("/config/BrennikClient.ini", strIni);
    PlugDevice();
    RunFromMenu();
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
    EXPECT_TRUE(IniHolds("ClientBaudRate=19200"));
}

// Nothing is told of a failure that no operation of the run has turned into a text.
TEST_F(RunInOtherModes, CloseWithoutAWordWhenTheRunItselfFails) {
    UseMode(2);
    const std::string strCaption = Caption();
    std::unique_ptr<world::AllocationLimit> limit;
    ExpectPick();
    ExpectStatus([&](QWidget&) {
        host.processes.SetProgramFolder("/" + std::string(300000, 'f'));
        limit = std::make_unique<world::AllocationLimit>(1 << 18);
    });
    Item(1).trigger();
    limit.reset();
    EXPECT_EQ(user.met, (std::vector<std::string>{"frmSelectProfile", "frmBrennikStatus"}));
    EXPECT_TRUE(user.boxes.empty());
    EXPECT_EQ(Caption(), strCaption);
    EXPECT_FALSE(Ran());
    MainWindow().close();
    EXPECT_FALSE(MainWindow().isVisible()) << "nothing is busy any more";
}

} // namespace
} // namespace brennik
