// The real program with its module on a real display: keys from menu to message box, and what
// becomes of it where there is no display or no module that fits.
#include "tests/system/RealRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik::system_tests {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kEnv = "/usr/bin/env";
const std::string kNoWindow = "brennikclient: no window can be opened: ";
const std::string kEditor = "Ostrand Brennik Client Configuration";
const std::string kRunAProfile = "; run a profile with -configfiledir and -profileid\n";

std::vector<std::string> Environment(const std::vector<std::string>& settings) {
    std::vector<std::string> arguments = {
        kEnv, "-u", "QT_QPA_PLATFORM", "-u", "WAYLAND_DISPLAY", "-u", "DISPLAY",
        // Under a leak checker, what the toolkit's own libraries keep is theirs.
        "LSAN_OPTIONS=print_suppressions=0:suppressions=" BRENNIK_LEAKS_OF_OTHERS};
    arguments.insert(arguments.end(), settings.begin(), settings.end());
    return arguments;
}

class RealWindows : public RealRun {
  protected:
    ~RealWindows() override {
        if (HasFailure() && display_ != nullptr)
            ADD_FAILURE() << "last seen:\n" << Seen();
    }

    void StartDisplay() {
        display_ = std::make_unique<ProgramRun>(std::vector<std::string>{
            "/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp"});
        ASSERT_TRUE(Eventually(
            [&] { return display_->strOut().ends_with('\n') || !display_->bRunning(); }));
        strDisplay_ = display_->strOut();
        ASSERT_THAT(strDisplay_, testing::EndsWith("\n")) << display_->strErr();
        strDisplay_ = "DISPLAY=:" + strDisplay_.substr(0, strDisplay_.size() - 1);
    }

    /// The program on that display, with its own folder and the watch inside.
    void StartProgram(const std::string& strArgument = "") {
        std::vector<std::string> arguments = Environment(
            {strDisplay_, "BRENNIK_HOME=" + (folder_ / "config"),
             "QT_PLUGIN_PATH=" BRENNIK_WATCH_PLUGINS,
             "QT_QPA_GENERIC_PLUGINS=windowwatch:" + (folder_ / "seen"), BRENNIK_CLIENT_PROGRAM});
        if (!strArgument.empty())
            arguments.push_back(strArgument);
        program_ = std::make_unique<ProgramRun>(arguments);
    }

    std::string Seen() const { return ReadFile(folder_ / "seen"); }
    bool SeenEventually(const std::string& strText) {
        return Eventually(
            [&] { return Seen().find(strText) != std::string::npos || !program_->bRunning(); });
    }
    bool SeesFocus(const std::string& strTitle) {
        return SeenEventually("window " + strTitle + "\n") && Focus(strTitle);
    }
    /// Gives the window the keyboard, which a window manager would have done.
    bool Focus(const std::string& strTitle) {
        XDoTool(
            {"search", "--sync", "--onlyvisible", "--name", "^" + strTitle + "$", "windowfocus"});
        return SeenEventually("focus ");
    }
    void XDoTool(const std::vector<std::string>& words) {
        std::vector<std::string> arguments = {kEnv, strDisplay_, "xdotool"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        ProgramRun run(arguments);
        EXPECT_EQ(run.Wait(), 0) << Joined(words) << ": " << run.strErr();
    }
    void Keys(const std::vector<std::string>& keys) {
        std::vector<std::string> words = {"key", "--delay", "20"};
        words.insert(words.end(), keys.begin(), keys.end());
        XDoTool(words);
    }

    void Type(const std::string& strText) { XDoTool({"type", "--delay", "20", strText}); }
    /// Presses Tab until the control has the focus.
    bool TabTo(const std::string& strControl) {
        for (int i = 0; i < 40; ++i) {
            const std::string strBefore = Seen();
            if (strBefore.find("focus " + strControl + "\n") != std::string::npos)
                return true;
            Keys({"Tab"});
            if (!Eventually([&] { return Seen() != strBefore; }))
                return false;
        }
        return false;
    }
    /// Fills the field that Tab comes to.
    bool TypeInto(const std::string& strField, const std::string& strText) {
        if (!TabTo(strField))
            return false;
        Keys({"ctrl+a"});
        Type(strText);
        return SeenEventually("field " + strField + " " + strText + "\n");
    }
    /// Picks a folder behind the button that Tab comes to.
    bool PickFolder(const std::string& strButton, const std::string& strTitle,
                    const std::string& strFolder) {
        if (!TabTo(strButton))
            return false;
        Keys({"space"});
        if (!SeesFocus(strTitle) || !TypeInto("TxtDir", strFolder))
            return false;
        Keys({"Return"});
        return Eventually([&] { return Seen().find(strTitle) == std::string::npos; }) &&
               Focus(kEditor);
    }

    void WriteProfile(const std::vector<std::string>& settings = {}) {
        std::vector<std::string> all{"ProfileName=First", "Mode=0", "ServerIPAddress1=127.0.0.1",
                                     "ServerPortNo1=" + std::to_string(service_->iPort()),
                                     "ServerConnectTimeout=5"};
        all.insert(all.end(), settings.begin(), settings.end());
        all.insert(all.end(), {"[GENERAL]", "Profilecount=1"});
        RealRun::WriteProfile(all);
    }

    std::unique_ptr<ProgramRun> display_;
    std::string strDisplay_;
    std::unique_ptr<ProgramRun> program_;
};

const std::string kMain = "Ostrand Brennik Client v1.3.2";
const std::string kPicker = "Select Brennik Profile";
const std::string kBox = "Ostrand Brennik Client";

TEST_F(RealWindows, RunAProfileByKeysAndListEveryFile) {
    WriteFile(folder_ / "served/readme.txt", "text\r\n");
    WriteFile(folder_ / "served/big.bin", SomeBytes(300001));
    StartService({"--listen", "127.0.0.1:0"}, {});
    WriteProfile();
    StartDisplay();
    StartProgram();
    ASSERT_TRUE(SeesFocus(kMain));
    Keys({"alt+a", "r"});
    ASSERT_TRUE(SeesFocus(kPicker));
    Keys({"Tab", "Tab", "T", "minus", "7"});
    ASSERT_TRUE(SeenEventually("field txtTid T-7\n"));
    Keys({"Return"});
    ASSERT_TRUE(SeenEventually("box Communications with Brennik Server completed successfully\n"));
    ASSERT_TRUE(SeenEventually("readme.txt\n"));
    ASSERT_TRUE(Focus(kBox));
    Keys({"Return"});
    ASSERT_TRUE(Eventually([&] { return Seen().find("window Download") == std::string::npos; }));
    std::string strListed;
    for (const std::string& strFile : Tree(folder_ / "received"))
        strListed += "file " + (folder_ / "received") + "\\|" + strFile + "\n";
    EXPECT_THAT(Seen(), HasSubstr(strListed));
    EXPECT_TRUE(Received("big.bin") == Served("big.bin"));
    EXPECT_THAT(ReadFile(folder_ / "config/BrennikClient.ini"), HasSubstr("TerminalID=T-7"));

    ASSERT_TRUE(Focus(kMain));
    Keys({"ctrl+q"});
    EXPECT_EQ(program_->Wait(), 0);
    EXPECT_EQ(program_->strOut(), "");
}

TEST_F(RealWindows, AddAProfileByKeysAloneAndRunIt) {
    WriteFile(folder_ / "served/readme.txt", "text\r\n");
    EXPECT_EQ(ProgramRun({"/bin/mkdir", folder_ / "received"}).Wait(), 0);
    StartService({"--listen", "127.0.0.1:0"}, {});
    StartDisplay();
    StartProgram();
    ASSERT_TRUE(SeesFocus(kMain));
    Keys({"ctrl+c"});
    ASSERT_TRUE(SeesFocus("Ostrand Brennik Profiles"));
    Keys({"alt+a"});
    ASSERT_TRUE(SeesFocus(kEditor));
    ASSERT_TRUE(TypeInto("txtProfileName", "Mine"));
    Keys({"ctrl+Tab", "alt+o"});
    ASSERT_TRUE(SeesFocus("Network Settings"));
    ASSERT_TRUE(TypeInto("txtIP1", "127.0.0.1"));
    ASSERT_TRUE(TypeInto("txtPort1", std::to_string(service_->iPort())));
    ASSERT_TRUE(TypeInto("txtConnTimeout", "5"));
    Keys({"Return"});
    ASSERT_TRUE(Eventually([&] { return Seen().find("window Network") == std::string::npos; }));
    ASSERT_TRUE(Focus(kEditor));
    for (const auto& [strField, strText] :
         std::vector<std::pair<std::string, std::string>>{{"txtComms(0)", "5"},
                                                          {"txtComms(1)", "6"},
                                                          {"txtComms(2)", "1"},
                                                          {"txtComms(3)", "2"},
                                                          {"txtComms(4)", "3"}})
        ASSERT_TRUE(TypeInto(strField, strText)) << strField;
    Keys({"ctrl+Tab"});
    ASSERT_TRUE(TypeInto("txtTid", "T1"));
    ASSERT_TRUE(PickFolder("cmdBrowse", "Select Brennik base folder", folder_ / "received"));
    Keys({"ctrl+Tab"});
    ASSERT_TRUE(PickFolder("cmdLogBrowse", "Select Brennik logfile folder", folder_ / "log"));
    ASSERT_TRUE(TypeInto("txtLogFileName", "session.log"));
    Keys({"alt+a"});
    ASSERT_TRUE(SeenEventually("box Application configuration successfully saved.\n"));
    ASSERT_TRUE(Focus(kBox));
    Keys({"Return"});
    ASSERT_TRUE(Eventually([&] { return Seen().find("box ") == std::string::npos; }));
    ASSERT_TRUE(Focus(kEditor));
    Keys({"alt+c"});
    ASSERT_TRUE(Eventually([&] { return Seen().find(kEditor) == std::string::npos; }));
    ASSERT_TRUE(Focus("Ostrand Brennik Profiles"));
    Keys({"alt+c"});
    ASSERT_TRUE(Eventually([&] { return Seen().find("Profiles\n") == std::string::npos; }));

    EXPECT_THAT(ReadFile(folder_ / "config/BrennikClient.ini"), HasSubstr("ProfileName=Mine"));
    RunClient();
    EXPECT_TRUE(Received("readme.txt") == Served("readme.txt"));
    EXPECT_FALSE(Received("readme.txt").empty());

    ASSERT_TRUE(Focus(kMain));
    Keys({"ctrl+q"});
    EXPECT_EQ(program_->Wait(), 0);
}

TEST_F(RealWindows, LiveWhileTheEngineWaitsAndCancelIt) {
    WriteFile(folder_ / "served/big.bin", SomeBytes(300000));
    WriteFile(folder_ / "script", "fragment 256 20\n");
    StartService({"--listen", "127.0.0.1:0"}, {"--script", folder_ / "script"});
    ASSERT_FALSE(HasFailure());
    WriteProfile();
    StartDisplay();
    StartProgram();
    ASSERT_TRUE(SeesFocus(kMain));
    Keys({"ctrl+d"});
    ASSERT_TRUE(SeesFocus(kPicker));
    Keys({"alt+r"});
    ASSERT_TRUE(SeenEventually("field txtBrennik(2) big.bin\n"));
    ASSERT_TRUE(Focus("Download Status"));
    Keys({"Escape", "alt+F4", "Tab", "Tab", "Tab", "Tab"});
    ASSERT_TRUE(SeenEventually("focus Command1\n"));
    Keys({"space"});
    ASSERT_TRUE(SeenEventually(
        "box Communications with Brennik Server failed. Communications aborted by user\n"));
    EXPECT_THAT(Seen(), Not(HasSubstr("file ")));
}

TEST_F(RealWindows, ShowTheUsageInABox) {
    StartDisplay();
    StartProgram("-help");
    ASSERT_TRUE(SeesFocus(kBox));
    EXPECT_THAT(Seen(),
                HasSubstr("box Usage: brennikclient.exe  [-configfiledir          <locate"));
    Keys({"Return"});
    EXPECT_EQ(program_->Wait(), 0);
    EXPECT_EQ(program_->strOut(), "");
}

TEST_F(RealWindows, AreMissedInOneLineWithoutADisplay) {
    const std::string strLine = kNoWindow + "no display can be reached" + kRunAProfile;
    for (const char* display : {"A=B", "DISPLAY=:64999", "QT_QPA_PLATFORM=nonsense"}) {
        ProgramRun plain(Environment({display, BRENNIK_CLIENT_PROGRAM}));
        EXPECT_EQ(plain.Wait(), 0) << display;
        EXPECT_EQ(plain.strOut(), "") << display;
        EXPECT_EQ(plain.strErr(), strLine) << display;
        ProgramRun help(Environment({display, BRENNIK_CLIENT_PROGRAM, "-help"}));
        EXPECT_EQ(help.Wait(), 0) << display;
        EXPECT_THAT(help.strOut(), testing::StartsWith("Usage: brennikclient.exe\n\n[-config"));
        EXPECT_THAT(help.strOut(), testing::EndsWith("<brennikclient terminal id to use>]\n"));
        EXPECT_EQ(help.strErr(), strLine) << display;
    }
}

TEST_F(RealWindows, AreMissedInOneLineWithoutAModuleThatFits) {
    const std::string strProgram = folder_ / "brennikclient";
    const std::string strModule = folder_ / "libbrennikwindows.so";
    WriteFile(strProgram, ReadFile(BRENNIK_CLIENT_PROGRAM));
    ProgramRun({"/bin/chmod", "+x", strProgram}).Wait();
    const auto errors = [&](const char* argument) {
        ProgramRun run(Environment({strProgram, argument}));
        EXPECT_EQ(run.Wait(), 0);
        EXPECT_THAT(run.strOut(), testing::StartsWith("Usage: brennikclient.exe\n"));
        return run.strErr();
    };
    EXPECT_EQ(errors("-help"), kNoWindow + "there is no libbrennikwindows.so here" + kRunAProfile);
    WriteFile(strModule, "no library");
    EXPECT_EQ(errors("-help"), kNoWindow + strModule + ": file too short" + kRunAProfile);
    WriteFile(strModule, ReadFile(BRENNIK_OTHER_MODULE));
    EXPECT_EQ(errors("-help"),
              kNoWindow + strModule + " belongs to another version" + kRunAProfile);
    WriteFile(strModule, ReadFile(BRENNIK_FOREIGN_MODULE));
    EXPECT_EQ(errors("-help"),
              kNoWindow + strModule + ": undefined symbol: BrennikOpenWindows" + kRunAProfile);
}

TEST_F(RealWindows, AreFoundBelowThePrefixThatTheProgramWasInstalledTo) {
    const std::string strProgram = folder_ / "opt/" BRENNIK_PROGRAMS_BELOW_PREFIX "/brennikclient";
    const std::string strModule =
        folder_ / "opt/" BRENNIK_LIBRARIES_BELOW_PREFIX "/libbrennikwindows.so";
    ProgramRun({"/usr/bin/install", "-D", BRENNIK_CLIENT_PROGRAM, strProgram}).Wait();
    ProgramRun({"/usr/bin/install", "-D", BRENNIK_OTHER_MODULE, strModule}).Wait();
    ProgramRun run(Environment({strProgram}));
    EXPECT_EQ(run.Wait(), 0);
    EXPECT_EQ(run.strErr(), kNoWindow + strModule + " belongs to another version" + kRunAProfile);
}

TEST_F(RealWindows, AreAModuleThatShowsOneFunctionAndAProgramThatKnowsNoToolkit) {
    ProgramRun symbols(
        {"/usr/bin/nm", "-D", "--defined-only", "--format=just-symbols", BRENNIK_WINDOWS_MODULE});
    EXPECT_EQ(symbols.Wait(), 0);
    EXPECT_EQ(symbols.strOut(), "BrennikOpenWindows\n");
    ProgramRun needed({"/usr/bin/readelf", "-d", BRENNIK_CLIENT_PROGRAM});
    EXPECT_EQ(needed.Wait(), 0);
    EXPECT_THAT(needed.strOut(), HasSubstr("(NEEDED)"));
    EXPECT_THAT(needed.strOut(), Not(HasSubstr("Qt")));
    // What the program showed of its engine would take the place of the module's.
    ProgramRun shown({"/usr/bin/nm", "-D", "--defined-only", BRENNIK_CLIENT_PROGRAM});
    EXPECT_EQ(shown.Wait(), 0);
    EXPECT_THAT(shown.strOut(), Not(HasSubstr("brennik")));
}

} // namespace
} // namespace brennik::system_tests
