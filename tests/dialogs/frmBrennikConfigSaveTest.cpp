// The configuration window between a profile and its section of the file: what is filled in, and
// what Apply writes.
#include "tests/dialogs/ConfigFixture.h"
#include "tests/dialogs/DialogChecks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

Strings LinesOf(const std::string& strText) {
    Strings lines;
    size_t nBegin = 0;
    while (nBegin < strText.size()) {
        const size_t nEnd = std::min(strText.find("\r\n", nBegin), strText.size());
        lines.push_back(strText.substr(nBegin, nEnd - nBegin));
        nBegin = nEnd + 2;
    }
    return lines;
}

const char* const kPlatforms = "[PLATFORMS]\r\n1=VX520,E1:E2,POS\r\n2=VX680,E8:E9,PAY:TAX\r\n";

/// A profile in which every setting of every window differs from what a new one has.
const Strings kWhole{"ProfileName=My profile",
                     "Mode=2",
                     "PedDownLoad=TRUE",
                     "WorkingFolder=C:\\srv\\base",
                     "PlatformName=VX680",
                     "DownloadType=P",
                     "ApplicationID=my app",
                     "TerminalID=T-77",
                     "PTID=012345678901234",
                     "EpromID=E9",
                     "BlockSize=512",
                     "FolderPerDownloadAttempt=TRUE",
                     "DeleteFolderAfterDownloadAttempt=TRUE",
                     "ScriptFileName=run.sh",
                     "ExecuteScriptFile=TRUE",
                     "MemorySize=2048",
                     "TmsAppListFile=",
                     "TmsAppFolder=",
                     "LogFilePath=C:\\srv\\log",
                     "LogFileName=my.log",
                     "LoggingEnabled=TRUE",
                     "LogControlPackets=TRUE",
                     "LogProcessingPackets=TRUE",
                     "ServerMode=0",
                     "ServerIPAddress1=10.1.1.1",
                     "ServerIPAddress2=host.two",
                     "ServerIPAddress3=host-3",
                     "ServerPortNo1=5001",
                     "ServerPortNo2=5002",
                     "ServerPortNo3=5003",
                     "ServerBlockedSocket=0",
                     "ServerComPort=4",
                     "ServerBaudRate=300",
                     "ServerParity=ODD",
                     "ServerDatabits=7",
                     "ServerStopbit=1.5",
                     "ServerFlowControl=2",
                     "ServerConnectTimeout=45",
                     "ClientMode=1",
                     "ClientIPAddress1=",
                     "ClientIPAddress2=",
                     "ClientIPAddress3=",
                     "ClientPortNo1=0",
                     "ClientPortNo2=0",
                     "ClientPortNo3=0",
                     "ClientBlockedSocket=0",
                     "ClientComPort=256",
                     "ClientBaudRate=115200",
                     "ClientParity=MARK",
                     "ClientDatabits=8",
                     "ClientStopbit=2",
                     "ClientFlowControl=1",
                     "ClientConnectTimeout=0",
                     "ReadPacketAttempts=5",
                     "SendPacketAttempts=6",
                     "CharTimeout=11",
                     "ConnectAttempts=13",
                     "ReadPacketTimeout=12",
                     "ConfigTitle=Config",
                     "ReleaseTitle=Release",
                     "Autobaud=TRUE",
                     "InjectPublicKeyFile=TRUE",
                     "PublicKeyFileLocation=C:\\srv\\key",
                     "PassThruType=1",
                     "UploadFileTypes=3"};

class ConfigSave : public dialogs::ConfigTest {
  protected:
    using Settings = std::vector<std::pair<const char*, const char*>>;

    /// Opens a window of communication settings, fills it in, and gives what it then holds.
    Strings FillIn(const char* strButton, const char* strWindow, const Settings& settings) {
        Strings contents;
        user.Expect(strWindow, [&](QWidget& window) {
            for (const auto& [strName, strText] : settings) {
                auto& control = windows::Named<QWidget>(window, strName);
                if (auto* list = dynamic_cast<QComboBox*>(&control)) {
                    list->setCurrentText(QString::fromLatin1(strText));
                } else if (auto* box = dynamic_cast<QCheckBox*>(&control)) {
                    box->setChecked(true);
                } else {
                    dynamic_cast<QLineEdit&>(control).selectAll();
                    QTest::keyClicks(&control, QString::fromLatin1(strText));
                }
            }
            contents = dialogs::Contents(window);
            windows::Named<QPushButton>(window, "cmdOK").click();
        });
        Click(strButton);
        return contents;
    }
    Strings FillInNetwork() {
        return FillIn("cmdComms", "frmPTNetworkConfig",
                      {{"txtIP1", "10.1.1.1"},
                       {"txtIP2", "host.two"},
                       {"txtIP3", "host-3"},
                       {"txtPort1", "5001"},
                       {"txtPort2", "5002"},
                       {"txtPort3", "5003"},
                       {"txtConnTimeout", "45"}});
    }
    Strings FillInServerLine() {
        return FillIn("cmdComms", "frmPTSerialConfig",
                      {{"cboPort", "COM4"},
                       {"cboBaudRate", "300"},
                       {"cboParity", "ODD"},
                       {"cboDatabits", "7"},
                       {"cboStopbit", "1.5"},
                       {"cboFlowControl", "Hardware"}});
    }
    Strings FillInClientLine() {
        return FillIn("cmdClientComms", "frmPTSerialConfig",
                      {{"cboPort", "COM256"},
                       {"cboBaudRate", "115200"},
                       {"cboParity", "MARK"},
                       {"cboDatabits", "8"},
                       {"cboStopbit", "2"},
                       {"cboFlowControl", "Xon/Xoff"},
                       {"chkAutobaud", ""}});
    }
    /// What such a window shows when it opens.
    Strings ShownBehind(const char* strButton, const char* strWindow) {
        return FillIn(strButton, strWindow, {});
    }

    /// The user fills in the window itself, but for the mode and what hangs on it.
    void FillInProfile() {
        Pick("cboPlatForm", 1);
        Pick("cboEprom", 1);
        Pick("cboDlType", 1);
        for (const TextCase& text : texts)
            Type(text.strField, text.strText);
        for (const BoxCase& box : boxes)
            Check(box.strBox, true);
        for (const char* folder : {"/srv/base", "/srv/log", "/srv/key"})
            host.files.MakeFolder(folder);
        ExpectFolderPick("Select Brennik base folder", "C:\\home\\user", "C:\\srv\\base");
        Click("cmdBrowse");
        ExpectFolderPick("Select Brennik logfile folder", "C:\\home\\user", "C:\\srv\\log");
        Click("cmdLogBrowse");
        ExpectFolderPick("Select public key file folder", "C:\\home\\user", "C:\\srv\\key");
        Click("cmdKeyFileLoc");
    }

    struct TextCase {
        const char* strField;
        const char* strKey;
        const char* strText;
    };
    // The boxes beside "Send Packet Attempts" and "Read Packet Attempts" stand crossed.
    const std::vector<TextCase> texts{{"txtProfileName", "ProfileName", "My profile"},
                                      {"txtComms(0)", "CharTimeout", "11"},
                                      {"txtComms(1)", "ReadPacketTimeout", "12"},
                                      {"txtComms(2)", "ConnectAttempts", "13"},
                                      {"txtComms(3)", "ReadPacketAttempts", "5"},
                                      {"txtComms(4)", "SendPacketAttempts", "6"},
                                      {"cboApp", "ApplicationID", "my app"},
                                      {"txtPTID", "PTID", "012345678901234"},
                                      {"txtTid", "TerminalID", "T-77"},
                                      {"txtMemory", "MemorySize", "2048"},
                                      {"txtBlockSize", "BlockSize", "512"},
                                      {"txtConfigTitle", "ConfigTitle", "Config"},
                                      {"txtReleaseTitle", "ReleaseTitle", "Release"},
                                      {"txtScriptFileName", "ScriptFileName", "run.sh"},
                                      {"txtLogFileName", "LogFileName", "my.log"}};
    struct BoxCase {
        const char* strBox;
        const char* strKey;
    };
    const std::vector<BoxCase> boxes{{"chkPedDownload", "PedDownLoad"},
                                     {"chkNewFolder", "FolderPerDownloadAttempt"},
                                     {"chkDeleteFolder", "DeleteFolderAfterDownloadAttempt"},
                                     {"chkExecuteScript", "ExecuteScriptFile"},
                                     {"chkInjectPublicKey", "InjectPublicKeyFile"},
                                     {"chkLogging", "LoggingEnabled"},
                                     {"chkLogControlPkt", "LogControlPackets"},
                                     {"chkLogProcessPkt", "LogProcessingPackets"}};
};

TEST_F(ConfigSave, CarriesEveryTextAndNumberToTheFileAndBack) {
    WriteSections({{}});
    for (const TextCase& text : texts)
        Type(text.strField, text.strText);
    Apply();
    EXPECT_EQ(user.boxes, Strings{dialogs::kSaved});
    for (const TextCase& text : texts)
        EXPECT_EQ(Stored("PROFILE_1", text.strKey), text.strText);
    CloseWindow();
    Open(1);
    for (const TextCase& text : texts)
        EXPECT_EQ(Shown(text.strField), text.strText) << text.strField;
}

TEST_F(ConfigSave, CarriesEveryFieldOfAllItsWindowsToTheFileAndBack) {
    WriteSections({{"PlatformName=VX520", "EpromID=E1", "DownloadType=F"}}, kPlatforms);
    FillInProfile();
    Pick("cboOperatingMode", 1);
    const Strings serverLine = FillInServerLine();
    Pick("cboOperatingMode", 2);
    const Strings network = FillInNetwork();
    const Strings clientLine = FillInClientLine();
    Pick("cboPassThruType", 1);
    Check("chkUploadAllFiles", false);
    Check("chkUploadLogFiles", true);
    Check("chkUploadTransactionFile", true);
    const Strings contents = dialogs::Contents(Window());
    EXPECT_EQ(contents.size(), 34U);
    Apply();

    Strings lines = LinesOf(Ini());
    lines.erase(lines.begin(), std::find(lines.begin(), lines.end(), "[PROFILE_1]") + 1);
    Strings expected = kWhole;
    std::sort(lines.begin(), lines.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(lines, expected);

    CloseWindow();
    Open(1);
    EXPECT_EQ(dialogs::Contents(Window()), contents);
    EXPECT_EQ(ShownBehind("cmdComms", "frmPTNetworkConfig"), network);
    EXPECT_EQ(ShownBehind("cmdClientComms", "frmPTSerialConfig"), clientLine);
    Pick("cboOperatingMode", 1);
    EXPECT_EQ(ShownBehind("cmdComms", "frmPTSerialConfig"), serverLine);
}

TEST_F(ConfigSave, CarriesEachCheckBoxAloneToTheFileAndBack) {
    for (const BoxCase& one : boxes) {
        WriteSections({{"FolderPerDownloadAttempt=TRUE"}});
        Open(1);
        const bool bBefore = bChecked(one.strBox);
        Click(one.strBox);
        Apply();
        Open(1);
        EXPECT_EQ(bChecked(one.strBox), !bBefore) << one.strBox;
        for (const BoxCase& box : boxes) {
            const bool bExpected = std::string(box.strBox) == one.strBox
                                       ? !bBefore
                                       : std::string(box.strBox) == "chkNewFolder";
            EXPECT_EQ(Stored("PROFILE_1", box.strKey), bExpected ? "TRUE" : "FALSE")
                << box.strBox << " after " << one.strBox;
        }
    }
}

TEST_F(ConfigSave, CarriesListsToTheFileAndBack) {
    WriteSections({{"PlatformName=VX520", "EpromID=E1", "DownloadType=F"}},
                  "[PLATFORMS]\r\n1=VX520,E1:E2,POS\r\n2=VX680,E8:E9,PAY:TAX\r\n");
    Pick("cboPlatForm", 1);
    Pick("cboEprom", 1);
    Pick("cboApp", 1);
    Pick("cboDlType", 1);
    Apply();
    Open(1);
    EXPECT_EQ(Stored("PROFILE_1", "PlatformName"), "VX680");
    EXPECT_EQ(Stored("PROFILE_1", "EpromID"), "E9");
    EXPECT_EQ(Stored("PROFILE_1", "ApplicationID"), "TAX");
    EXPECT_EQ(Stored("PROFILE_1", "DownloadType"), "P");
    EXPECT_EQ(Shown("cboPlatForm"), "VX680");
    EXPECT_EQ(Shown("cboEprom"), "E9");
    EXPECT_EQ(Shown("cboApp"), "TAX");
    EXPECT_EQ(Shown("cboDlType"), "Partial");
    Pick("cboDlType", 0);
    Apply();
    EXPECT_EQ(Stored("PROFILE_1", "DownloadType"), "F");
    Open(1);
    EXPECT_EQ(Shown("cboDlType"), "Full");
}

TEST_F(ConfigSave, CarriesEachModeWithItsLinksToTheFileAndBack) {
    const Strings expected{"0 0 7", "1 1 7", "2 0 1", "3 1 1"};
    for (int nMode = 0; nMode < 4; ++nMode) {
        WriteSections({{"ServerMode=9", "ClientMode=7", nMode == 0 ? "Mode=1" : "Mode=0"}});
        Open(1);
        Pick("cboOperatingMode", nMode);
        Apply();
        EXPECT_EQ(Stored("PROFILE_1", "Mode") + " " + Stored("PROFILE_1", "ServerMode") + " " +
                      Stored("PROFILE_1", "ClientMode"),
                  expected[static_cast<size_t>(nMode)]);
        Open(1);
        EXPECT_EQ(The<QComboBox>("cboOperatingMode").currentIndex(), nMode);
    }
}

TEST_F(ConfigSave, CarriesEachPassThruTypeToTheFileAndBack) {
    for (const auto& [strStored, nShown, strSaved] :
         std::vector<std::tuple<std::string, int, std::string>>{
             {"0", 0, "0"}, {"1", 1, "1"}, {"2", 2, "2"}, {"3", 1, "1"}, {"-1", 1, "1"}}) {
        WriteSections({{"Mode=2", "PassThruType=" + strStored}});
        Open(1);
        EXPECT_EQ(The<QComboBox>("cboPassThruType").currentIndex(), nShown) << strStored;
        Click("chkPedDownload");
        Apply();
        EXPECT_EQ(Stored("PROFILE_1", "PassThruType"), strSaved);
    }
}

TEST_F(ConfigSave, SavesTheKindsOfFilesAsBits) {
    struct Case {
        bool bAll, bLog, bTransactions;
        const char* strStored;
    };
    for (const Case& one : std::vector<Case>{{false, false, false, "0"},
                                             {false, true, false, "1"},
                                             {false, false, true, "2"},
                                             {false, true, true, "3"},
                                             {true, true, true, "0"},
                                             {true, false, false, "0"}}) {
        WriteSections({{"Mode=2", "PassThruType=1", "UploadFileTypes=3"}});
        Open(1);
        Check("chkUploadLogFiles", one.bLog);
        Check("chkUploadTransactionFile", one.bTransactions);
        Check("chkUploadAllFiles", one.bAll);
        // Its check mark counts although a box is disabled.
        Pick("cboOperatingMode", 0);
        Apply();
        EXPECT_EQ(Stored("PROFILE_1", "UploadFileTypes"), one.strStored);
        Open(1);
        EXPECT_EQ(bChecked("chkUploadAllFiles"), std::string(one.strStored) == "0");
    }
}

TEST_F(ConfigSave, FillsTheKindsOfFilesFromTheirBits) {
    struct Case {
        const char* strStored;
        bool bAll, bLog, bTransactions;
    };
    for (const Case& one : std::vector<Case>{{"0", true, false, false},
                                             {"1", false, true, false},
                                             {"2", false, false, true},
                                             {"3", false, true, true},
                                             {"4", false, false, false}}) {
        WriteSections({{std::string("UploadFileTypes=") + one.strStored}});
        Open(1);
        EXPECT_EQ(bChecked("chkUploadAllFiles"), one.bAll) << one.strStored;
        EXPECT_EQ(bChecked("chkUploadLogFiles"), one.bLog) << one.strStored;
        EXPECT_EQ(bChecked("chkUploadTransactionFile"), one.bTransactions) << one.strStored;
    }
}

TEST_F(ConfigSave, ShowsANumberOf0AndSavesAnEmptyBoxAsOne) {
    WriteSections({{"BlockSize=12"}});
    for (const char* name : {"txtMemory", "txtComms(0)", "txtComms(4)"})
        EXPECT_EQ(Shown(name), "0") << name;
    Type("txtBlockSize", "");
    Type("txtProfileName", "");
    Apply();
    EXPECT_EQ(Stored("PROFILE_1", "BlockSize"), "0");
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "");
    EXPECT_EQ(Stored("PROFILE_1", "WorkingFolder"), "");
}

TEST_F(ConfigSave, GivesUneditedBytesBackUnchanged) {
    const Strings settings{"ProfileName=caf\xE9 " + std::string(300, 'x'),
                           "WorkingFolder=C:\\caf\xE9",
                           "PlatformName=VX\xE9",
                           "ApplicationID=A\xE9",
                           "TerminalID=" + std::string(40, 'T') + "\xFF",
                           "PTID=0123456789012345678\xE9",
                           "EpromID=E\xE9",
                           "BlockSize=1234567890",
                           "ScriptFileName=s\xE9\x01",
                           "MemorySize=-1234567890",
                           "LogFilePath=/l\xE9",
                           "LogFileName=\xE9.log",
                           "ReadPacketAttempts=123456",
                           "ConfigTitle=" + std::string(20, '\xE9'),
                           "ReleaseTitle=\xC3",
                           "PublicKeyFileLocation=k\xE9"};
    WriteSections({settings}, "[PLATFORMS]\r\n1=VX,E,POS\r\n2=VX\xE9,E\xEA:E\xE9,POS\r\n");
    Click("chkPedDownload");
    Apply();
    for (const std::string& strSetting : settings)
        EXPECT_TRUE(IniHolds(strSetting)) << strSetting;
}

TEST_F(ConfigSave, GivesTheBytesOfAPickedNameBackUnchanged) {
    WriteSections({{"PlatformName=VX", "EpromID=E"}},
                  "[PLATFORMS]\r\n1=VX,E,POS\r\n2=VX\xE9,E\xEA:E\xE9,POS:P\xE9\r\n");
    Pick("cboPlatForm", 1);
    Pick("cboEprom", 1);
    Pick("cboApp", 1);
    Apply();
    EXPECT_EQ(Stored("PROFILE_1", "PlatformName"), "VX\xE9");
    EXPECT_EQ(Stored("PROFILE_1", "EpromID"), "E\xE9");
    EXPECT_EQ(Stored("PROFILE_1", "ApplicationID"), "P\xE9");
}

TEST_F(ConfigSave, ChangesTheLinesOfTheEditedFieldsAndNoOtherByte) {
    WriteSections({{"; a comment", "Mode=0", "ForceApplicationSwap=TRUE", "Unknown=kept ", "",
                    "TmsAppFolder=C:\\tms"},
                   {"ProfileName=Second"}},
                  "; at the top\r\n[OTHER]\r\nKey = value\r\n");
    Type("txtProfileName", "Name");
    Apply();
    Strings lines = LinesOf(Ini());
    const Strings once = lines;
    for (const char* line : {"; a comment", "Mode=0", "ForceApplicationSwap=TRUE", "Unknown=kept ",
                             "TmsAppFolder=C:\\tms", "; at the top", "Key = value"})
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
    Type("txtMemory", "64");
    Click("chkPedDownload");
    Apply();
    lines = LinesOf(Ini());
    ASSERT_EQ(lines.size(), once.size());
    Strings changed;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i] != once[i])
            changed.push_back(lines[i]);
    }
    EXPECT_EQ(changed, (Strings{"PedDownLoad=TRUE", "MemorySize=64"}));
    const std::string strBefore = Ini();
    Type("txtMemory", "65");
    Type("txtMemory", "64");
    Apply();
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_EQ(Stored("PROFILE_2", "ProfileName"), "Second");
    EXPECT_EQ(Stored("PROFILE_2", "Mode"), "-");
}

// A file as another hand has put it: in another order, and with line ends of both kinds.
TEST_F(ConfigSave, ChangesAndAddsLinesAtTheFirstApplyAndNoOtherByte) {
    Strings settings = kWhole;
    for (const char* missing : {"MemorySize=2048", "ReleaseTitle=Release"})
        settings.erase(std::find(settings.begin(), settings.end(), missing));
    std::reverse(settings.begin(), settings.end());
    const std::string strTop = std::string("; at the top\n\n[Other]\r\nKey = value \n") +
                               kPlatforms +
                               "[general]\nPROFILECOUNT = 2\r\n\r\n[Profile_1]\r\n; mine\n";
    const std::string strTail = "\n[PROFILE_2]\r\nProfileName = Second\n; no line end";
    const auto text = [&](const std::string& strName, const std::string& strAdded) {
        std::string strText = strTop;
        for (size_t i = 0; i < settings.size(); ++i)
            strText += (settings[i] == "ProfileName=My profile" ? strName : settings[i]) +
                       (i % 2 == 0 ? "\n" : "\r\n");
        return strText + "Unknown = kept \n" + strAdded + strTail;
    };
    host.files.Put("/config/BrennikClient.ini", text("ProfileName=My profile", ""));
    Type("txtProfileName", "Renamed");
    Apply();
    EXPECT_EQ(Ini(), text("ProfileName=Renamed", "MemorySize=0\nReleaseTitle=\n"));
}

TEST_F(ConfigSave, LeavesWhatTheWindowDoesNotShowAsTheProfileHasIt) {
    const Strings settings{"TmsAppListFile=list.txt", "ServerIPAddress1=10.1.1.1",
                           "ServerPortNo3=99",        "ServerComPort=4",
                           "ServerParity=ODD",        "ClientBaudRate=9600",
                           "ClientStopbit=1.5",       "Autobaud=TRUE",
                           "ClientIPAddress2=host",   "ClientConnectTimeout=8"};
    WriteSections({settings});
    Click("chkPedDownload");
    Apply();
    for (const std::string& strSetting : settings)
        EXPECT_TRUE(IniHolds(strSetting)) << strSetting;
    EXPECT_EQ(Stored("PROFILE_1", "ForceApplicationSwap"), "-");
}

} // namespace
} // namespace brennik
