// The windows that the configuration window opens: the communication settings and the folder
// picker.
#include "tests/dialogs/ConfigFixture.h"
#include "tests/dialogs/FailingHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

class ConfigWindows : public dialogs::ConfigTest {};

TEST_F(ConfigWindows, DropsWhatTheCommunicationWindowsChanged) {
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

TEST_F(ConfigWindows, SavesWhatTheCommunicationWindowsChanged) {
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

TEST_F(ConfigWindows, OpensTheCommunicationWindowsOfEachModeAndIsDirtyAllTheSame) {
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

TEST_F(ConfigWindows, PutsABrowsedFolderInItsBox) {
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

TEST_F(ConfigWindows, TakesTheStartFolderOfAPickerLeftByEscForAChoice) {
    WriteSections({{"WorkingFolder=C:\\srv"}});
    ExpectFolderPick("Select Brennik base folder", "C:\\srv", "");
    Click("cmdBrowse");
    EXPECT_EQ(Shown("txtBaseFolder"), "C:\\srv");
    EXPECT_TRUE(bDirty());
}

TEST_F(ConfigWindows, LeavesTheFolderAloneWhenThePickerIsCancelled) {
    WriteSections({{"WorkingFolder=C:\\srv"}});
    user.Expect("frmSelDir",
                [](QWidget& picker) { windows::Named<QPushButton>(picker, "btCancel").click(); });
    Click("cmdBrowse");
    EXPECT_EQ(Shown("txtBaseFolder"), "C:\\srv");
    EXPECT_FALSE(bDirty());
}

TEST_F(ConfigWindows, ABrowseButtonEndsQuietlyOnAFailure) {
    WriteSections({{"WorkingFolder=C:\\srv", "LogFilePath=C:\\srv", "PublicKeyFileLocation=C:\\srv",
                    "InjectPublicKeyFile=TRUE"}});
    Window();
    dialogs::FilesWithoutDrives files(host);
    Host broken = world::Swapped(host.TheHost(), files);
    const ScopedHost scoped(broken);
    for (const char* name : {"cmdBrowse", "cmdLogBrowse", "cmdKeyFileLoc"})
        Click(name);
    EXPECT_EQ(user.met, Strings());
    for (const char* name : {"txtBaseFolder", "txtLogPath", "txtKeyFileLoc"})
        EXPECT_EQ(Shown(name), "C:\\srv");
    EXPECT_FALSE(bDirty());
    EXPECT_TRUE(Window().isVisible());
}

TEST_F(ConfigWindows, ACommunicationButtonSaysNothingOfAPortThatIsNone) {
    WriteSections({{"Mode=3", "ServerComPort=0", "ServerParity=ODD", "ClientComPort=257",
                    "ClientParity=ODD"}});
    for (const char* name : {"cmdComms", "cmdClientComms"}) {
        user.Expect("frmPTSerialConfig", [](QWidget& window) {
            EXPECT_EQ(windows::Named<QComboBox>(window, "cboParity").currentText(),
                      QStringLiteral("EVEN"))
                << "the filling ended at the port";
            QTest::keyClick(&window, Qt::Key_Escape);
        });
        Click(name);
    }
    EXPECT_EQ(user.met, Strings(2, "frmPTSerialConfig"));
    EXPECT_TRUE(bDirty());
    EXPECT_TRUE(Window().isVisible());
}

} // namespace
} // namespace brennik
