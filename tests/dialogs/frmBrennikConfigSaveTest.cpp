// The configuration window between a profile and its section of the file: what is filled in, what
// Apply writes, and what closing drops.
#include "tests/dialogs/ConfigFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QListWidget>
#include <algorithm>
#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

const char* const kFilling = "Failed filling form fields from application configuration file.\n";
const char* const kSaved = "Application configuration successfully saved.";
const char* const kQuestion = "Save changes to Brennik Profile?";

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

class ConfigSave : public dialogs::ConfigTest {
  protected:
    /// Shows the window as the program does; it is expected to close by itself.
    void Fail(int32_t lNumber) {
        lProfileId = lNumber;
        user.Expect("MessageBox", [](QWidget& box) {
            EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::Warning);
            box.close();
        });
        frmBrennikConfig window(nullptr);
        EXPECT_EQ(window.exec(), 0);
    }

    void Answer(QMessageBox::StandardButton answer) {
        user.Expect("MessageBox", [answer](QWidget& box) {
            auto& message = dynamic_cast<QMessageBox&>(box);
            EXPECT_EQ(message.icon(), QMessageBox::Question);
            EXPECT_EQ(message.standardButtons(), QMessageBox::Yes | QMessageBox::No);
            message.button(answer)->click();
        });
    }

    /// The user picks that folder, or leaves the picker by Esc.
    void ExpectFolderPick(const std::string& strTitle, const std::string& strStart,
                          const std::string& strFolder) {
        user.Expect("frmSelDir", [=](QWidget& picker) {
            EXPECT_EQ(picker.windowTitle().toStdString(), strTitle);
            auto& TxtDir = windows::Named<QLineEdit>(picker, "TxtDir");
            EXPECT_EQ(TxtDir.text().toStdString(), strStart);
            if (strFolder.empty()) {
                QTest::keyClick(&picker, Qt::Key_Escape);
                return;
            }
            TxtDir.setText(QString::fromStdString(strFolder));
            windows::Named<QPushButton>(picker, "btOK").click();
        });
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
    EXPECT_EQ(user.boxes, Strings{kSaved});
    for (const TextCase& text : texts)
        EXPECT_EQ(Stored("PROFILE_1", text.strKey), text.strText);
    CloseWindow();
    Open(1);
    for (const TextCase& text : texts)
        EXPECT_EQ(Shown(text.strField), text.strText) << text.strField;
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

TEST_F(ConfigSave, AddsAProfileAndSavesItAgainUnderNumber0) {
    WriteSections({{"ProfileName=One"}, {}, {}});
    Open(-1);
    Type("txtProfileName", "Four");
    EXPECT_EQ(lProfileId, -1);
    Apply();
    EXPECT_EQ(user.boxes, Strings{kSaved});
    EXPECT_EQ(lProfileId, 0) << "and not 4";
    EXPECT_TRUE(bProfileSaved);
    EXPECT_FALSE(bDirty());
    EXPECT_EQ(Stored("GENERAL", "Profilecount"), "4");
    EXPECT_EQ(Stored("PROFILE_4", "ProfileName"), "Four");
    EXPECT_EQ(Stored("PROFILE_4", "LoggingEnabled"), "TRUE");
    EXPECT_EQ(Stored("PROFILE_0", "ProfileName"), "-");
    Type("txtProfileName", "Again");
    Apply();
    EXPECT_EQ(lProfileId, 0);
    EXPECT_EQ(Stored("GENERAL", "Profilecount"), "4");
    EXPECT_EQ(Stored("PROFILE_4", "ProfileName"), "Four");
    EXPECT_EQ(Stored("PROFILE_0", "ProfileName"), "Again");
    CloseWindow();
    EXPECT_EQ(oConfig->strProfileName(), "Again");
}

TEST_F(ConfigSave, LeavesNeutralValuesBehindAfterAddingOnce) {
    WriteSections({{"ProfileName=One"}});
    Open(-1);
    Type("txtProfileName", "Two");
    Apply();
    CloseWindow();
    EXPECT_EQ(oConfig->strProfileName(), "") << "section PROFILE_0 was read";
    EXPECT_EQ(oConfig->lDownloadType(), 1);
}

TEST_F(ConfigSave, ReadsSectionMinus1WhenNothingWasAdded) {
    WriteSections({{"ProfileName=One"}}, "[PROFILE_-1]\r\nProfileName=odd\r\n");
    ASSERT_EQ(oConfig->GetConfiguration("/config", 1), 0);
    Open(-1);
    EXPECT_EQ(oConfig->strProfileName(), "One");
    CloseWindow();
    EXPECT_EQ(lProfileId, -1);
    EXPECT_EQ(oConfig->strProfileName(), "odd");
    EXPECT_FALSE(bProfileSaved);
}

TEST_F(ConfigSave, TakesWhatTheObjectHoldsIntoANewProfile) {
    WriteSections({{"ServerIPAddress1=10.9.9.9", "TmsAppFolder=old"}});
    ASSERT_EQ(oConfig->GetConfiguration("/config", 1), 0);
    Open(-1);
    Type("txtProfileName", "Two");
    Apply();
    EXPECT_EQ(Stored("PROFILE_2", "ServerIPAddress1"), "10.9.9.9");
    EXPECT_EQ(Stored("PROFILE_2", "TmsAppFolder"), "old");
}

TEST_F(ConfigSave, CreatesTheFileForTheFirstProfile) {
    host.files.Remove("/config/BrennikClient.ini");
    host.files.MakeFolder("/config");
    Open(-1);
    Type("txtProfileName", "First");
    Apply();
    EXPECT_EQ(Stored("GENERAL", "Profilecount"), "1");
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "First");
}

TEST_F(ConfigSave, TellsAFailedSaveAndStaysDirty) {
    WriteSections({{}});
    host.files.Put("/config/BrennikClient.ini", "[GENERAL]\r\nProfilecount=2147483647\r\n");
    const std::string strBefore = Ini();
    Open(-1);
    Type("txtProfileName", "Too many");
    user.Expect("MessageBox", [](QWidget& box) {
        EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::Warning);
        box.close();
    });
    Click("cmdApply");
    EXPECT_EQ(user.boxes, Strings{"Failed saving application configuration.\n"
                                  "TBrennikClientConfig.SaveConfiguration() Failed - Overflow"});
    EXPECT_TRUE(bDirty());
    EXPECT_FALSE(bProfileSaved);
    EXPECT_EQ(lProfileId, -1);
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

// The numbers that the store returns are the only trace: meant.
TEST_F(ConfigSave, CallsASaveASuccessAlthoughNothingCanBeWritten) {
    WriteSections({{"ProfileName=Old"}});
    const std::string strBefore = Ini();
    Type("txtProfileName", "New");
    host.files.DenyWrites("/config/BrennikClient.ini");
    Apply();
    EXPECT_EQ(user.boxes, Strings{kSaved});
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_TRUE(bProfileSaved);
    EXPECT_FALSE(bDirty());
    ASSERT_FALSE(host.profileStrings.writes.empty());
    EXPECT_FALSE(host.profileStrings.writes.front().bSucceeded);
    EXPECT_EQ(host.profileStrings.writes.front().strKey, "ProfileName");
}

TEST_F(ConfigSave, ShowsTheHourglassWhileItSavesAndAnArrowOverTheBox) {
    WriteSections({{}});
    Type("txtProfileName", "New");
    Qt::CursorShape overBox = Qt::BlankCursor;
    ExpectBox([&](QWidget& box) {
        overBox = QApplication::overrideCursor()->shape();
        EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::Information);
    });
    Click("cmdApply");
    EXPECT_EQ(overBox, Qt::ArrowCursor);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(ConfigSave, ClosesWithoutAQuestionWhenClean) {
    WriteSections({{"ProfileName=Old"}});
    Click("cmdClose");
    EXPECT_FALSE(Window().isVisible());
    EXPECT_EQ(user.boxes, Strings());
}

TEST_F(ConfigSave, AsksBeforeItClosesAndSavesOnYes) {
    WriteSections({{"ProfileName=Old"}});
    Type("txtProfileName", "New");
    Answer(QMessageBox::Yes);
    ExpectBox();
    Click("cmdClose");
    EXPECT_EQ(user.boxes, (Strings{kQuestion, kSaved}));
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "New");
    EXPECT_FALSE(Window().isVisible());
}

TEST_F(ConfigSave, AsksBeforeItClosesAndDropsOnNo) {
    WriteSections({{"ProfileName=Old"}});
    Type("txtProfileName", "New");
    Answer(QMessageBox::No);
    Click("cmdClose");
    EXPECT_EQ(user.boxes, Strings{kQuestion});
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "Old");
    EXPECT_FALSE(bProfileSaved);
    EXPECT_FALSE(Window().isVisible());
}

TEST_F(ConfigSave, ClosesAlthoughTheSaveFailed) {
    host.files.Put("/config/BrennikClient.ini", "[GENERAL]\r\nProfilecount=2147483647\r\n");
    Open(-1);
    Type("txtProfileName", "Too many");
    Answer(QMessageBox::Yes);
    ExpectBox();
    Click("cmdClose");
    EXPECT_FALSE(Window().isVisible());
}

TEST_F(ConfigSave, AsksNothingOnEscAndTheCloseButton) {
    for (const bool bEsc : {true, false}) {
        WriteSections({{"ProfileName=Old"}});
        Open(1);
        Type("txtProfileName", "New");
        oConfig->strServerIPAddress1("changed");
        if (bEsc)
            QTest::keyClick(&Window(), Qt::Key_Escape);
        else
            CloseWindow();
        EXPECT_FALSE(Window().isVisible());
        EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "Old");
        EXPECT_EQ(oConfig->strServerIPAddress1(), "") << "loaded again";
    }
    EXPECT_EQ(user.boxes, Strings());
}

TEST_F(ConfigSave, DropsWhatTheCommunicationWindowsChanged) {
    WriteSections({{"Mode=0", "ServerIPAddress1=10.0.0.1", "ServerBlockedSocket=TRUE"}});
    user.Expect("frmPTNetworkConfig", [](QWidget& window) {
        windows::Named<QLineEdit>(window, "txtIP1").setText(QStringLiteral("10.2.2.2"));
        windows::Named<QPushButton>(window, "cmdOK").click();
    });
    Click("cmdComms");
    EXPECT_EQ(oConfig->strServerIPAddress1(), "10.2.2.2");
    EXPECT_TRUE(bDirty());
    Answer(QMessageBox::No);
    Click("cmdClose");
    EXPECT_EQ(oConfig->strServerIPAddress1(), "10.0.0.1");
    EXPECT_TRUE(oConfig->bServerBlockedSocket());
}

TEST_F(ConfigSave, SavesWhatTheCommunicationWindowsChanged) {
    WriteSections({{"Mode=2", "ServerIPAddress1=10.0.0.1", "ClientComPort=1"}});
    user.Expect("frmPTNetworkConfig", [](QWidget& window) {
        windows::Named<QLineEdit>(window, "txtIP1").setText(QStringLiteral("10.2.2.2"));
        windows::Named<QPushButton>(window, "cmdOK").click();
    });
    Click("cmdComms");
    user.Expect("frmPTSerialConfig", [](QWidget& window) {
        windows::Named<QComboBox>(window, "cboPort").setCurrentIndex(4);
        windows::Named<QPushButton>(window, "cmdOK").click();
    });
    Click("cmdClientComms");
    Apply();
    EXPECT_EQ(Stored("PROFILE_1", "ServerIPAddress1"), "10.2.2.2");
    EXPECT_EQ(Stored("PROFILE_1", "ClientComPort"), "5");
    EXPECT_EQ(Stored("PROFILE_1", "ServerComPort"), "0");
    EXPECT_EQ(Stored("PROFILE_1", "Mode"), "2") << "what told the windows their side is gone";
}

TEST_F(ConfigSave, OpensTheCommunicationWindowsOfEachModeAndIsDirtyAllTheSame) {
    struct Case {
        int nMode;
        const char* strButton;
        const char* strWindow;
        int32_t lOperatingMode;
    };
    for (const Case& one : std::vector<Case>{{0, "cmdComms", "frmPTNetworkConfig", 0},
                                             {1, "cmdComms", "frmPTSerialConfig", 1},
                                             {2, "cmdComms", "frmPTNetworkConfig", 0},
                                             {3, "cmdComms", "frmPTSerialConfig", 1},
                                             {2, "cmdClientComms", "frmPTSerialConfig", 2},
                                             {3, "cmdClientComms", "frmPTSerialConfig", 2}}) {
        WriteSections({{"Mode=" + std::to_string(one.nMode)}});
        Open(1);
        int32_t lMode = -1;
        user.Expect(one.strWindow, [&](QWidget& window) {
            lMode = oConfig->lOperatingMode();
            QTest::keyClick(&window, Qt::Key_Escape);
        });
        Click(one.strButton);
        EXPECT_EQ(lMode, one.lOperatingMode) << one.strButton << " in mode " << one.nMode;
        EXPECT_TRUE(bDirty());
        CloseWindow();
        EXPECT_EQ(oConfig->lOperatingMode(), one.nMode);
    }
}

TEST_F(ConfigSave, PutsABrowsedFolderInItsBox) {
    struct Case {
        const char* strButton;
        const char* strField;
        const char* strTitle;
        const char* strKey;
    };
    for (const Case& one : std::vector<Case>{
             {"cmdBrowse", "txtBaseFolder", "Select Brennik base folder", "WorkingFolder"},
             {"cmdLogBrowse", "txtLogPath", "Select Brennik logfile folder", "LogFilePath"},
             {"cmdKeyFileLoc", "txtKeyFileLoc", "Select public key file folder",
              "PublicKeyFileLocation"}}) {
        WriteSections({{std::string(one.strKey) + "=C:\\srv", "InjectPublicKeyFile=TRUE"}});
        Open(1);
        ExpectFolderPick(one.strTitle, "C:\\srv", "C:\\log");
        Click(one.strButton);
        EXPECT_EQ(Shown(one.strField), "C:\\log");
        EXPECT_TRUE(bDirty());
        Apply();
        EXPECT_EQ(Stored("PROFILE_1", one.strKey), "C:\\log");
    }
}

TEST_F(ConfigSave, TakesTheStartFolderOfAPickerLeftByEscForAChoice) {
    WriteSections({{"WorkingFolder=C:\\srv"}});
    ExpectFolderPick("Select Brennik base folder", "C:\\srv", "");
    Click("cmdBrowse");
    EXPECT_EQ(Shown("txtBaseFolder"), "C:\\srv");
    EXPECT_TRUE(bDirty());
}

TEST_F(ConfigSave, LeavesTheFolderAloneWhenThePickerIsCancelled) {
    WriteSections({{"WorkingFolder=C:\\srv"}});
    user.Expect("frmSelDir",
                [](QWidget& picker) { windows::Named<QPushButton>(picker, "btCancel").click(); });
    Click("cmdBrowse");
    EXPECT_EQ(Shown("txtBaseFolder"), "C:\\srv");
    EXPECT_FALSE(bDirty());
}

TEST_F(ConfigSave, ReportsAProfileThatCannotBeLoadedAndLoadsWhatThereIs) {
    WriteSections({{"ProfileName=One", "ServerComPort=70000"}});
    oConfig->strProfileName("old");
    Fail(1);
    EXPECT_EQ(user.boxes, Strings{std::string(kFilling) +
                                  "TBrennikClientConfig.GetConfiguration() Failed - Overflow"});
    EXPECT_EQ(oConfig->strProfileName(), "One");
    EXPECT_FALSE(bProfileSaved);
}

TEST_F(ConfigSave, FailsOnATextThatAFixedListDoesNotHold) {
    const char* platforms = "[PLATFORMS]\r\n1=VX520,E1:E2,POS\r\n";
    for (const Strings& settings : std::vector<Strings>{{"PlatformName=VX999", "EpromID=E1"},
                                                        {"PlatformName=", "EpromID="},
                                                        {"PlatformName=VX520", "EpromID=E9"},
                                                        {"PlatformName=VX520", "EpromID="},
                                                        {"PlatformName=vx520", "EpromID=E1"}}) {
        user.boxes.clear();
        WriteSections({settings}, platforms);
        Fail(1);
        EXPECT_EQ(user.boxes, Strings{std::string(kFilling) + "Invalid procedure call"});
    }
    for (const char* mode : {"Mode=4", "Mode=-1"}) {
        user.boxes.clear();
        WriteSections({{"PlatformName=VX520", "EpromID=E1", mode}}, platforms);
        Fail(1);
        EXPECT_EQ(user.boxes, Strings{std::string(kFilling) + "Invalid procedure call"}) << mode;
    }
    user.boxes.clear();
    oConfig = std::make_unique<TBrennikClientConfig>();
    WriteSections({{"PlatformName=VX520"}});
    Fail(1);
    EXPECT_EQ(user.boxes.size(), 1U) << "a list without any entry holds no text either";
}

TEST_F(ConfigSave, ReloadsTheProfileWhenItCouldNotBeShown) {
    WriteSections({{"ProfileName=One", "Mode=9"}});
    lProfileId = 1;
    user.Expect("MessageBox", [](QWidget& box) {
        oConfig->strProfileName("changed meanwhile");
        box.close();
    });
    frmBrennikConfig window(nullptr);
    EXPECT_EQ(window.exec(), 0);
    EXPECT_EQ(oConfig->strProfileName(), "One");
    EXPECT_FALSE(window.isVisible());
}

} // namespace
} // namespace brennik
