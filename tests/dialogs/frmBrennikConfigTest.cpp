#include "dialogs/frmBrennikConfig.h"

#include "tests/dialogs/ConfigFixture.h"
#include "tests/dialogs/DialogChecks.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

const char* const kPlatforms = "[PLATFORMS]\r\n1=VX520,E1:E2,POS:TAX\r\n2=VX680,E9,PAY\r\n";

class FrmBrennikConfig : public dialogs::ConfigTest {
  protected:
    FrmBrennikConfig() {
        WriteSections({{"PlatformName=VX520", "EpromID=E1", "ApplicationID=APP"}}, kPlatforms);
    }

    std::vector<int> VisibleFrames() {
        std::vector<int> frames;
        for (int i = 0; i < 4; ++i) {
            if (Frame(i).isVisible())
                frames.push_back(i);
        }
        return frames;
    }
};

TEST_F(FrmBrennikConfig, HasItsCaptionTabsFramesAndButtons) {
    EXPECT_EQ(Window().windowTitle().toStdString(), "Ostrand Brennik Client Configuration");
    const auto& tabs = The<QTabWidget>("TabStrip1");
    Strings captions;
    for (int i = 0; i < tabs.count(); ++i)
        captions.push_back(tabs.tabText(i).toStdString());
    EXPECT_EQ(captions, (Strings{"General", "Communications", "Client", "Logging"}));
    captions.clear();
    for (int i = 0; i < 4; ++i)
        captions.push_back(dynamic_cast<QGroupBox&>(Frame(i)).title().toStdString());
    EXPECT_EQ(captions, (Strings{"General Settings", "Communication Settings", "Client Settings",
                                 "Logging"}));
    EXPECT_EQ(The<QPushButton>("cmdApply").text().toStdString(), "&Apply");
    EXPECT_EQ(The<QPushButton>("cmdClose").text().toStdString(), "&Close");
}

TEST_F(FrmBrennikConfig, ShowsOneFrameAtATimeBeginningWithTheFirst) {
    Window();
    EXPECT_EQ(VisibleFrames(), std::vector<int>{0});
    EXPECT_EQ(Window().focusWidget()->objectName().toStdString(), "txtProfileName");
    auto& bar = windows::Named<QTabBar>(Window(), "qt_tabwidget_tabbar");
    for (const int nTab : {1, 2, 3, 0}) {
        QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.tabRect(nTab).center());
        EXPECT_EQ(VisibleFrames(), std::vector<int>{nTab});
        EXPECT_TRUE(The<QPushButton>("cmdApply").isVisible());
        EXPECT_TRUE(The<QPushButton>("cmdClose").isVisible());
    }
    EXPECT_FALSE(bDirty());
}

TEST_F(FrmBrennikConfig, GoesFromTabToTabByCtrlTabWhateverHasTheFocus) {
    Window();
    for (const int nTab : {1, 2, 3, 0}) {
        QTest::keyClick(Window().focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
        EXPECT_EQ(VisibleFrames(), std::vector<int>{nTab});
    }
}

TEST_F(FrmBrennikConfig, LabelsEachFieldInItsFrame) {
    struct Expected {
        int nFrame;
        Strings labels;
    };
    for (const Expected& expected : std::vector<Expected>{
             {0,
              {"Brennik Profile Name: txtProfileName", "Operating Mode: cboOperatingMode",
               "Pass-Thru Type: cboPassThruType"}},
             {1,
              {"Single Character Timeout: txtComms(0)", "(Seconds): txtComms(0)",
               "Read Packet Timeout: txtComms(1)", "(Seconds): txtComms(1)",
               "Connection Attempts: txtComms(2)", "Send Packet Attempts: txtComms(3)",
               "Read Packet Attempts: txtComms(4)"}},
             {2,
              {"Platform: cboPlatForm", "Eprom ID: cboEprom", "Application: cboApp",
               "PTID: txtPTID", "Terminal ID: txtTid", "Memory: txtMemory",
               "Block Size: txtBlockSize", "Dnld Type: cboDlType", "Config Title: txtConfigTitle",
               "Release Title: txtReleaseTitle", "Base Folder: txtBaseFolder",
               "Script File Name: txtScriptFileName", "Public key file location: txtKeyFileLoc"}},
             {3, {"Select log file folder: txtLogPath", "Log file name: txtLogFileName"}}}) {
        EXPECT_EQ(dialogs::Labels(Frame(expected.nFrame)), expected.labels);
    }
    const auto* timeouts = dynamic_cast<QGroupBox*>(The<QWidget>("txtComms(4)").parentWidget());
    ASSERT_NE(timeouts, nullptr);
    EXPECT_EQ(timeouts->title().toStdString(), "Timeouts / Attempts");
}

TEST_F(FrmBrennikConfig, FramesWhatStandsBelowTheTwoHeadings) {
    const std::vector<std::pair<const char*, Strings>> frames = {
        {"chkInjectPublicKey", {"txtKeyFileLoc", "cmdKeyFileLoc"}},
        {"chkLogging",
         {"txtLogPath", "cmdLogBrowse", "txtLogFileName", "chkLogControlPkt", "chkLogProcessPkt"}}};
    for (const auto& [strHeading, expected] : frames) {
        auto& heading = The<QCheckBox>(strHeading);
        ShowTabOf(heading);
        auto* frame = dynamic_cast<QFrame*>(The<QWidget>(expected.front()).parentWidget());
        ASSERT_NE(frame, nullptr) << strHeading;
        EXPECT_NE(frame->frameShape(), QFrame::NoFrame);
        EXPECT_EQ(frame->parentWidget(), heading.parentWidget()) << "side by side";
        EXPECT_GT(frame->geometry().top(), heading.geometry().bottom());
        Strings names;
        for (const QWidget* control :
             frame->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (!control->objectName().isEmpty())
                names.push_back(control->objectName().toStdString());
        }
        std::sort(names.begin(), names.end());
        Strings sorted = expected;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(names, sorted);
    }
}

TEST_F(FrmBrennikConfig, DescribesTheModeBetweenItAndTheType) {
    const QRect mode = The<QWidget>("cboOperatingMode").geometry();
    const QRect description = The<QWidget>("capDescription").geometry();
    EXPECT_GT(description.top(), mode.bottom());
    EXPECT_LT(description.bottom(), The<QWidget>("cboPassThruType").geometry().top());
    for (const char* name : {"cboOperatingMode", "capDescription", "cboPassThruType"})
        EXPECT_EQ(The<QWidget>(name).parentWidget(), &Frame(0)) << name;
}

TEST_F(FrmBrennikConfig, LabelsItsButtonsAndBoxesToTheLastBlank) {
    const std::vector<std::pair<int, Strings>> all = {
        {0,
         {"chkUploadAllFiles|Upload all files from the device",
          "chkUploadLogFiles|Upload log files from the device",
          "chkUploadTransactionFile|Upload offline transaction file from the device",
          "chkPedDownload|This profile is used for downloading peds"}},
        {1,
         {"cmdComms|C&onfigure Server Communications",
          "cmdClientComms|Configure Client Communications"}},
        {2,
         {"cmdBrowse|...", "chkNewFolder|Generate a new folder for every download attempt",
          "chkDeleteFolder|Delete new folders at startup ",
          "chkExecuteScript|Execute script file after successful download",
          "chkInjectPublicKey|Inject Public Keyfile", "cmdKeyFileLoc|..."}},
        {3,
         {"chkLogging|Client Logging Enabled", "cmdLogBrowse|...",
          "chkLogControlPkt|Log control characters ", "chkLogProcessPkt|Log Brennik packets"}}};
    for (const auto& [nFrame, expected] : all) {
        Strings labels;
        for (const QAbstractButton* button : Frame(nFrame).findChildren<QAbstractButton*>())
            labels.push_back(button->objectName().toStdString() + "|" +
                             button->text().toStdString());
        EXPECT_EQ(labels, expected);
    }
}

TEST_F(FrmBrennikConfig, OffersItsModesTypesAndLists) {
    EXPECT_EQ(Items("cboOperatingMode"),
              (Strings{"Fernlatch Brennik Service Client (TCP/IP)",
                       "Verifone Device Brennik Service Client (Serial)",
                       "Verifone Device to Fernlatch Brennik Service Pass-Thru",
                       "Verifone Device to Verifone Device Pass-Thru"}));
    EXPECT_EQ(Items("cboPassThruType"), (Strings{"Download files from the server to the device",
                                                 "Upload files from the device to the server",
                                                 "Force device to perform full download"}));
    EXPECT_EQ(Items("cboDlType"), (Strings{"Full", "Partial"}));
    EXPECT_EQ(Items("cboPlatForm"), (Strings{"VX520", "VX680"}));
    std::set<std::string> typed;
    for (const QComboBox* list : Window().findChildren<QComboBox*>()) {
        if (list->isEditable())
            typed.insert(list->objectName().toStdString());
    }
    EXPECT_EQ(typed, std::set<std::string>{"cboApp"}) << "every other list is fixed";
}

TEST_F(FrmBrennikConfig, DescribesEachModeInBold) {
    const auto& capDescription = The<QLabel>("capDescription");
    EXPECT_TRUE(capDescription.font().bold());
    Strings texts;
    for (int nMode = 0; nMode < 4; ++nMode) {
        Pick("cboOperatingMode", nMode);
        texts.push_back(capDescription.text().toStdString());
        EXPECT_LE(capDescription.heightForWidth(capDescription.width()), capDescription.height());
    }
    EXPECT_EQ(
        texts,
        (Strings{
            "Brennik client connects to Fernlatch Brennik Service over an IP connection and pulls "
            "down any files that are ready for download",
            "Brennik client connects to verifone Device over a serial connection and pulls down "
            "files from the Verifone device",
            "Brennik client acts as a pass-thru middle man. Brennik client establishes an iP "
            "connection to Fernlatch Brennik Service. Brennik client then creates a serial "
            "connection to a Verifone device. The Verifone device acts as a client to the "
            "Fernlatch "
            "Brennik Service",
            "Brennik Client acts as a pass-thru middle man. Brennik client to establishes a serial "
            "connection to a Verifone device which acts as the server. Brennik client establishes "
            "a "
            "connection to a second verifone device which then acts as a client to the first "
            "Verifone device"}));
}

TEST_F(FrmBrennikConfig, TakesTextsOfTheirLengthsAndDigitsWhereNumbersStand) {
    struct Expected {
        const char* strName;
        size_t nLength;
        bool bDigits;
    };
    for (const Expected& expected : std::vector<Expected>{{"txtComms(0)", 3, true},
                                                          {"txtComms(1)", 3, true},
                                                          {"txtComms(2)", 3, true},
                                                          {"txtComms(3)", 3, true},
                                                          {"txtComms(4)", 3, true},
                                                          {"txtPTID", 15, true},
                                                          {"txtTid", 32, false},
                                                          {"txtMemory", 8, true},
                                                          {"txtBlockSize", 8, true},
                                                          {"txtConfigTitle", 16, false},
                                                          {"txtReleaseTitle", 16, false},
                                                          {"txtProfileName", 100, false},
                                                          {"txtScriptFileName", 100, false},
                                                          {"txtLogFileName", 100, false},
                                                          {"cboApp", 100, false}}) {
        std::string strTyped;
        for (int i = 0; i < 50; ++i)
            strTyped += "7x";
        Type(expected.strName, strTyped);
        const std::string strAll = expected.bDigits ? std::string(50, '7') : strTyped;
        EXPECT_EQ(Shown(expected.strName), strAll.substr(0, expected.nLength)) << expected.strName;
    }
}

TEST_F(FrmBrennikConfig, LetsItsFoldersBeBrowsedForOnly) {
    for (const char* name : {"txtBaseFolder", "txtKeyFileLoc", "txtLogPath"})
        EXPECT_TRUE(The<QLineEdit>(name).isReadOnly()) << name;
}

TEST_F(FrmBrennikConfig, IsReadByTabInItsOrder) {
    WriteSections({{"Mode=2", "PassThruType=1", "UploadFileTypes=1", "PlatformName=VX520",
                    "EpromID=E1", "FolderPerDownloadAttempt=TRUE"},
                   {"Mode=0", "InjectPublicKeyFile=TRUE", "PlatformName=VX520", "EpromID=E1",
                    "FolderPerDownloadAttempt=TRUE"}},
                  kPlatforms);
    bool bEdited = false;
    const auto order = [&](int32_t lProfile, int nTab) {
        Open(lProfile);
        if (bEdited)
            Type("txtProfileName", "New");
        The<QTabWidget>("TabStrip1").setCurrentIndex(nTab);
        windows::Named<QTabBar>(Window(), "qt_tabwidget_tabbar").setFocus();
        Strings names;
        do {
            QTest::keyClick(Window().focusWidget(), Qt::Key_Tab);
            names.push_back(Window().focusWidget()->objectName().toStdString());
        } while (names.back() != "qt_tabwidget_tabbar" && names.size() < 40);
        names.pop_back();
        return names;
    };
    EXPECT_EQ(order(1, 0), (Strings{"txtProfileName", "cboOperatingMode", "cboPassThruType",
                                    "chkUploadAllFiles", "chkUploadLogFiles",
                                    "chkUploadTransactionFile", "chkPedDownload", "cmdClose"}));
    EXPECT_EQ(order(1, 1), (Strings{"cmdComms", "cmdClientComms", "txtComms(0)", "txtComms(1)",
                                    "txtComms(2)", "txtComms(3)", "txtComms(4)", "cmdClose"}));
    EXPECT_EQ(order(2, 2), (Strings{"cboPlatForm",
                                    "cboEprom",
                                    "cboApp",
                                    "txtPTID",
                                    "txtTid",
                                    "txtMemory",
                                    "txtBlockSize",
                                    "cboDlType",
                                    "txtConfigTitle",
                                    "txtReleaseTitle",
                                    "txtBaseFolder",
                                    "cmdBrowse",
                                    "chkNewFolder",
                                    "chkDeleteFolder",
                                    "txtScriptFileName",
                                    "chkExecuteScript",
                                    "chkInjectPublicKey",
                                    "txtKeyFileLoc",
                                    "cmdKeyFileLoc",
                                    "cmdClose"}));
    bEdited = true;
    EXPECT_EQ(order(1, 1),
              (Strings{"cmdComms", "cmdClientComms", "txtComms(0)", "txtComms(1)", "txtComms(2)",
                       "txtComms(3)", "txtComms(4)", "cmdApply", "cmdClose"}));
    bEdited = false;
    EXPECT_EQ(order(2, 3), (Strings{"chkLogging", "txtLogPath", "cmdLogBrowse", "txtLogFileName",
                                    "chkLogControlPkt", "chkLogProcessPkt", "cmdClose"}));
}

TEST_F(FrmBrennikConfig, SavesNothingByAnEnterInAField) {
    const std::string strBefore = Ini();
    Type("txtProfileName", "New");
    QTest::keyClick(&The<QLineEdit>("txtProfileName"), Qt::Key_Return);
    QTest::keyClick(&The<QComboBox>("cboOperatingMode"), Qt::Key_Enter);
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_TRUE(Window().isVisible());
    EXPECT_TRUE(bDirty());
}

TEST_F(FrmBrennikConfig, PressesTheButtonWithTheFocusByEnter) {
    Type("txtProfileName", "New");
    The<QPushButton>("cmdApply").setFocus();
    ExpectBox();
    QTest::keyClick(&The<QPushButton>("cmdApply"), Qt::Key_Return);
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "New");
}

TEST_F(FrmBrennikConfig, StartsANewProfileBlankWithLoggingOn) {
    oConfig->strProfileName("left over");
    oConfig->lOperatingMode(3);
    Open(-1);
    EXPECT_FALSE(bDirty());
    EXPECT_FALSE(bProfileSaved);
    for (const char* name : {"txtProfileName", "txtComms(0)", "txtComms(1)", "txtComms(2)",
                             "txtComms(3)", "txtComms(4)", "txtPTID", "txtTid", "txtMemory",
                             "txtBlockSize", "txtConfigTitle", "txtReleaseTitle", "txtBaseFolder",
                             "txtScriptFileName", "txtKeyFileLoc", "txtLogPath", "txtLogFileName"})
        EXPECT_EQ(Shown(name), "") << name;
    EXPECT_EQ(Shown("cboOperatingMode"), "Fernlatch Brennik Service Client (TCP/IP)");
    EXPECT_EQ(Shown("cboPassThruType"), "Download files from the server to the device");
    EXPECT_EQ(Shown("cboPlatForm"), "VX520");
    EXPECT_EQ(Shown("cboEprom"), "E1");
    EXPECT_EQ(Shown("cboApp"), "POS");
    EXPECT_EQ(Shown("cboDlType"), "Full");
    for (const QCheckBox* box : Window().findChildren<QCheckBox*>())
        EXPECT_EQ(box->isChecked(), box->objectName() == QLatin1String("chkLogging"))
            << box->objectName().toStdString();
    // The first mode is chosen, and the window shows what belongs to it.
    EXPECT_NE(The<QLabel>("capDescription").text().toStdString().find("over an IP connection"),
              std::string::npos);
    EXPECT_FALSE(bEnabled("cmdClientComms"));
    EXPECT_FALSE(bEnabled("cboPassThruType"));
    EXPECT_TRUE(bEnabled("chkInjectPublicKey"));
    EXPECT_FALSE(bEnabled("txtKeyFileLoc"));
    EXPECT_FALSE(bEnabled("cmdKeyFileLoc"));
    EXPECT_FALSE(bEnabled("chkDeleteFolder"));
}

TEST_F(FrmBrennikConfig, ClearsTheMarkOfASaveWhenItOpens) {
    bProfileSaved = true;
    Open(-1);
    EXPECT_FALSE(bProfileSaved);
    bProfileSaved = true;
    Open(1);
    EXPECT_FALSE(bProfileSaved);
}

TEST_F(FrmBrennikConfig, IsCleanAfterOpeningAndDirtyAfterEveryEdit) {
    const auto expectDirty = [&](const std::string& strWhat) {
        EXPECT_TRUE(bDirty()) << strWhat;
        The<QPushButton>("cmdApply").setEnabled(false);
    };
    WriteSections({{"Mode=2", "PassThruType=1", "UploadFileTypes=1", "DownloadType=F",
                    "PlatformName=VX520", "EpromID=E1", "FolderPerDownloadAttempt=TRUE"}},
                  kPlatforms);
    EXPECT_FALSE(bDirty());
    for (const char* name :
         {"txtProfileName", "txtComms(0)", "txtComms(1)", "txtComms(2)", "txtComms(3)",
          "txtComms(4)", "txtPTID", "txtTid", "txtMemory", "txtBlockSize", "txtConfigTitle",
          "txtReleaseTitle", "txtScriptFileName", "txtLogFileName", "cboApp"}) {
        Type(name, "1");
        expectDirty(name);
        Type(name, "");
        expectDirty(name);
    }
    for (const char* name : {"cboEprom", "cboApp", "cboDlType", "cboPlatForm"}) {
        Pick(name, 1);
        expectDirty(name);
    }
    for (const char* name :
         {"chkUploadLogFiles", "chkUploadTransactionFile", "chkUploadAllFiles", "chkPedDownload",
          "chkDeleteFolder", "chkNewFolder", "chkExecuteScript", "chkLogging", "chkLogControlPkt",
          "chkLogProcessPkt"}) {
        Click(name);
        expectDirty(name);
    }
    Pick("cboPassThruType", 0);
    expectDirty("cboPassThruType");
    Click("chkInjectPublicKey");
    expectDirty("chkInjectPublicKey");
    Pick("cboOperatingMode", 1);
    expectDirty("cboOperatingMode");
}

TEST_F(FrmBrennikConfig, StaysCleanWhenOnlyLookedAt) {
    for (int nTab = 0; nTab < 4; ++nTab) {
        The<QTabWidget>("TabStrip1").setCurrentIndex(nTab);
        for (QLineEdit* field : Window().findChildren<QLineEdit*>()) {
            field->setFocus();
            QTest::keyClick(field, Qt::Key_Home);
        }
    }
    EXPECT_FALSE(bDirty());
}

TEST_F(FrmBrennikConfig, FillsTheListsThatDependOnThePlatform) {
    EXPECT_EQ(Items("cboEprom"), (Strings{"E1", "E2"}));
    EXPECT_EQ(Items("cboApp"), (Strings{"POS", "TAX"}));
    EXPECT_EQ(Shown("cboApp"), "APP") << "as stored, although the list doesn't hold it";
    Pick("cboPlatForm", 1);
    EXPECT_EQ(Items("cboEprom"), Strings{"E9"});
    EXPECT_EQ(Items("cboApp"), Strings{"PAY"});
    EXPECT_EQ(Shown("cboEprom"), "E9");
    EXPECT_EQ(Shown("cboApp"), "PAY");
    EXPECT_FALSE(IniHolds("PlatformName=VX680"));
    Apply();
    EXPECT_EQ(Stored("PROFILE_1", "PlatformName"), "VX680");
    EXPECT_EQ(Stored("PROFILE_1", "EpromID"), "E9");
    EXPECT_EQ(Stored("PROFILE_1", "ApplicationID"), "PAY");
}

TEST_F(FrmBrennikConfig, LeavesTheListsOfAPlatformWithoutNamesEmpty) {
    WriteSections({{"PlatformName=BARE", "ApplicationID=typed"}},
                  "[PLATFORMS]\r\n1=VX520,E1,POS\r\n2=BARE,:,:\r\n");
    EXPECT_EQ(Items("cboEprom"), Strings());
    EXPECT_EQ(Items("cboApp"), Strings());
    EXPECT_EQ(Shown("cboApp"), "typed");
    Pick("cboPlatForm", 0);
    EXPECT_EQ(Shown("cboApp"), "POS");
    Pick("cboPlatForm", 1);
    EXPECT_EQ(Shown("cboApp"), "");
    Type("cboApp", "typed");
    Apply();
    EXPECT_EQ(Stored("PROFILE_1", "EpromID"), "");
    EXPECT_EQ(Stored("PROFILE_1", "ApplicationID"), "typed");
}

TEST_F(FrmBrennikConfig, ShowsThePlatformsOnceMoreAtEachOpening) {
    for (int nOpening = 1; nOpening <= 3; ++nOpening) {
        Open(1);
        EXPECT_EQ(Items("cboPlatForm").size(), 2U * static_cast<size_t>(nOpening));
        EXPECT_EQ(Shown("cboPlatForm"), "VX520");
        CloseWindow();
    }
    EXPECT_EQ(Items("cboPlatForm"),
              (Strings{"VX520", "VX680", "VX520", "VX680", "VX520", "VX680"}));
    Pick("cboPlatForm", 5);
    EXPECT_EQ(Items("cboEprom"), Strings{"E9"});
    Apply();
    EXPECT_EQ(Stored("PROFILE_1", "PlatformName"), "VX680");
}

} // namespace
} // namespace brennik
