// Which controls of the configuration window are enabled and checked, for every mode, type and set
// of upload boxes.
#include "tests/dialogs/ConfigFixture.h"

#include <gtest/gtest.h>

#include <QEvent>
#include <array>
#include <map>
#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

/// Notes each time a control is enabled or disabled.
class EnablingWatch : public QObject {
  public:
    explicit EnablingWatch(QWidget& control) { control.installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::EnabledChange)
            changes.push_back(dynamic_cast<QWidget&>(*watched).isEnabled());
        return false;
    }

    std::vector<bool> changes;
};

constexpr std::array kRuled = {"cmdComms",
                               "cmdClientComms",
                               "fraBrennik(2)",
                               "cboPassThruType",
                               "chkUploadAllFiles",
                               "chkUploadLogFiles",
                               "chkUploadTransactionFile",
                               "chkInjectPublicKey"};

struct Row {
    int nMode;
    int nType;
    const char* strUpload;  ///< check marks of all files, log files, transactions; "*": either
    const char* strEnabled; ///< of kRuled, in their order
};

// Only a pass-through to a service that uploads differs by its boxes, and there alone the key file
// is out of reach.
constexpr std::array kTable = {
    Row{0, 0, "***", "+-+----+"}, Row{0, 1, "***", "+-+----+"}, Row{0, 2, "***", "+-+----+"},
    Row{1, 0, "***", "+-+----+"}, Row{1, 1, "***", "+-+----+"}, Row{1, 2, "***", "+-+----+"},
    Row{2, 0, "***", "++++---+"}, Row{2, 1, "---", "+++++++-"}, Row{2, 1, "--+", "+++++++-"},
    Row{2, 1, "-+-", "+++++++-"}, Row{2, 1, "-++", "+++++++-"}, Row{2, 1, "+--", "+++++---"},
    Row{2, 1, "+-+", "+++++---"}, Row{2, 1, "++-", "+++++---"}, Row{2, 1, "+++", "+++++---"},
    Row{2, 2, "***", "++++---+"}, Row{3, 0, "***", "++-----+"}, Row{3, 1, "***", "++-----+"},
    Row{3, 2, "***", "++-----+"},
};

/// What no mode and no type touches.
constexpr std::array kAlwaysEnabled = {
    "fraBrennik(0)",    "fraBrennik(1)",    "fraBrennik(3)", "txtProfileName", "cboOperatingMode",
    "chkPedDownload",   "txtComms(0)",      "txtComms(1)",   "txtComms(2)",    "txtComms(3)",
    "txtComms(4)",      "cboPlatForm",      "cboEprom",      "cboApp",         "txtPTID",
    "txtTid",           "txtMemory",        "txtBlockSize",  "cboDlType",      "txtConfigTitle",
    "txtReleaseTitle",  "txtBaseFolder",    "cmdBrowse",     "chkNewFolder",   "txtScriptFileName",
    "chkExecuteScript", "chkLogging",       "txtLogPath",    "cmdLogBrowse",   "txtLogFileName",
    "chkLogControlPkt", "chkLogProcessPkt", "cmdClose"};

constexpr std::array kUploadBoxes = {"chkUploadAllFiles", "chkUploadLogFiles",
                                     "chkUploadTransactionFile"};

/// All states of the three boxes, and for those that a profile can hold its setting.
struct Upload {
    const char* strBoxes;
    const char* strStored;
};
constexpr std::array kUploads = {
    Upload{"+--", "0"}, Upload{"-+-", "1"},     Upload{"--+", "2"},     Upload{"-++", "3"},
    Upload{"---", "4"}, Upload{"++-", nullptr}, Upload{"+-+", nullptr}, Upload{"+++", nullptr}};

using States = std::map<std::string, bool>;

class ConfigRules : public dialogs::ConfigTest {
  protected:
    /// Enabled or not, each control of the window by itself.
    States EnabledControls() {
        States states;
        for (const QWidget* control : Window().findChildren<QWidget*>()) {
            const std::string strName = control->objectName().toStdString();
            const std::string strKind = strName.substr(0, 3);
            if (strKind == "fra" || strKind == "txt" || strKind == "cbo" || strKind == "chk" ||
                strKind == "cmd")
                states[strName] = bEnabled(strName);
        }
        return states;
    }
    States CheckedBoxes() {
        States states;
        for (const QCheckBox* box : Window().findChildren<QCheckBox*>())
            states[box->objectName().toStdString()] = box->isChecked();
        return states;
    }

    static bool bMatches(const Row& row, int nMode, int nType, const std::string& strUpload) {
        for (size_t i = 0; i < strUpload.size(); ++i) {
            if (row.strUpload[i] != '*' && row.strUpload[i] != strUpload[i])
                return false;
        }
        return row.nMode == nMode && row.nType == nType;
    }
    /// Of that table and the check marks of the two boxes that head others.
    static States ExpectedEnabled(int nMode, int nType, const std::string& strUpload, bool bInject,
                                  bool bNewFolder, bool bDirty) {
        States states;
        for (const char* name : kAlwaysEnabled)
            states[name] = true;
        for (const Row& row : kTable) {
            if (!bMatches(row, nMode, nType, strUpload))
                continue;
            for (size_t i = 0; i < kRuled.size(); ++i)
                states[kRuled[i]] = row.strEnabled[i] == '+';
        }
        states["txtKeyFileLoc"] = bInject;
        states["cmdKeyFileLoc"] = bInject;
        states["chkDeleteFolder"] = bNewFolder;
        states["cmdApply"] = bDirty;
        return states;
    }
    /// The other boxes are as SettingsOf stores them.
    static States ExpectedChecked(const std::string& strUpload, bool bInject, bool bNewFolder) {
        States states{{"chkPedDownload", true},        {"chkNewFolder", bNewFolder},
                      {"chkDeleteFolder", false},      {"chkExecuteScript", true},
                      {"chkInjectPublicKey", bInject}, {"chkLogging", false},
                      {"chkLogControlPkt", true},      {"chkLogProcessPkt", false}};
        for (size_t i = 0; i < kUploadBoxes.size(); ++i)
            states[kUploadBoxes[i]] = strUpload[i] == '+';
        return states;
    }
    static Strings SettingsOf(bool bInject, bool bNewFolder) {
        return {std::string("InjectPublicKeyFile=") + (bInject ? "true" : "false"),
                std::string("FolderPerDownloadAttempt=") + (bNewFolder ? "TRUE" : "FALSE"),
                "PedDownLoad=TRUE", "ExecuteScriptFile=TRUE", "LogControlPackets=TRUE"};
    }
    static std::string Name(int nMode, int nType, const std::string& strUpload) {
        return "mode " + std::to_string(nMode) + ", type " + std::to_string(nType) + ", upload " +
               strUpload;
    }

    /// As a user must do it: the two kinds can be clicked only while all files isn't checked.
    void CheckUploadBoxes(const std::string& strUpload) {
        Check("chkUploadAllFiles", false);
        for (const size_t i : {size_t{1}, size_t{2}, size_t{0}})
            Check(kUploadBoxes[i], strUpload[i] == '+');
    }

    QColor Background(const std::string& strName) {
        return The<QWidget>(strName).palette().color(QPalette::Base);
    }

    void OpenProfile(const Strings& settings) {
        WriteSections({settings});
        Open(1);
    }
};

TEST_F(ConfigRules, HoldForEveryModeTypeAndUploadOfAStoredProfile) {
    for (const Upload& upload : kUploads) {
        if (upload.strStored == nullptr)
            continue;
        for (int nMode = 0; nMode < 4; ++nMode) {
            for (int nType = 0; nType < 3; ++nType) {
                const bool bInject = nMode % 2 == nType % 2;
                const bool bNewFolder = nType == 1;
                Strings settings = SettingsOf(bInject, bNewFolder);
                settings.push_back("Mode=" + std::to_string(nMode));
                settings.push_back("PassThruType=" + std::to_string(nType));
                settings.push_back(std::string("UploadFileTypes=") + upload.strStored);
                OpenProfile(settings);
                EXPECT_EQ(EnabledControls(), ExpectedEnabled(nMode, nType, upload.strBoxes, bInject,
                                                             bNewFolder, false))
                    << Name(nMode, nType, upload.strBoxes);
                EXPECT_EQ(CheckedBoxes(), ExpectedChecked(upload.strBoxes, bInject, bNewFolder))
                    << Name(nMode, nType, upload.strBoxes);
            }
        }
    }
}

TEST_F(ConfigRules, HoldForEveryModeTypeAndUploadThatIsPicked) {
    for (const bool bInject : {false, true}) {
        OpenProfile(SettingsOf(bInject, !bInject));
        for (const Upload& upload : kUploads) {
            for (int nMode = 0; nMode < 4; ++nMode) {
                for (int nType = 0; nType < 3; ++nType) {
                    Pick("cboOperatingMode", 2);
                    Pick("cboPassThruType", 1);
                    CheckUploadBoxes(upload.strBoxes);
                    Pick("cboPassThruType", nType);
                    Pick("cboOperatingMode", nMode);
                    EXPECT_EQ(EnabledControls(), ExpectedEnabled(nMode, nType, upload.strBoxes,
                                                                 bInject, !bInject, true))
                        << Name(nMode, nType, upload.strBoxes);
                    // No rule takes a check mark away.
                    EXPECT_EQ(CheckedBoxes(), ExpectedChecked(upload.strBoxes, bInject, !bInject))
                        << Name(nMode, nType, upload.strBoxes);
                }
            }
        }
    }
}

TEST_F(ConfigRules, DisableTheKeyFileForAMomentAndEnableItAgain) {
    OpenProfile({"Mode=0", "UploadFileTypes=2"});
    EnablingWatch watch(The<QWidget>("chkInjectPublicKey"));
    Pick("cboOperatingMode", 1);
    EXPECT_EQ(watch.changes, (std::vector<bool>{false, true}));
    watch.changes.clear();
    Pick("cboOperatingMode", 2);
    EXPECT_EQ(watch.changes, std::vector<bool>());
}

TEST_F(ConfigRules, TakeTheFrameOfAPassThruBetweenDevicesAwayAsAWhole) {
    OpenProfile({"Mode=3"});
    for (const char* name : {"cboPlatForm", "txtTid", "chkInjectPublicKey", "cmdBrowse"})
        EXPECT_FALSE(The<QWidget>(name).isEnabled()) << name;
    Pick("cboOperatingMode", 0);
    for (const char* name : {"cboPlatForm", "txtTid", "chkInjectPublicKey", "cmdBrowse"})
        EXPECT_TRUE(The<QWidget>(name).isEnabled()) << name;
}

TEST_F(ConfigRules, EnableTheTwoKindsOfFilesWithoutAllOfThem) {
    OpenProfile({"Mode=2", "PassThruType=1", "UploadFileTypes=0"});
    EXPECT_TRUE(bEnabled("chkUploadAllFiles"));
    EXPECT_FALSE(bEnabled("chkUploadLogFiles"));
    Click("chkUploadAllFiles");
    EXPECT_TRUE(bEnabled("chkUploadLogFiles"));
    EXPECT_TRUE(bEnabled("chkUploadTransactionFile"));
    Click("chkUploadAllFiles");
    EXPECT_FALSE(bEnabled("chkUploadLogFiles"));
    EXPECT_FALSE(bEnabled("chkUploadTransactionFile"));
}

TEST_F(ConfigRules, GreyWhatTheyDisable) {
    const QColor window = QApplication::palette().color(QPalette::Base);
    const QColor button = QApplication::palette().color(QPalette::Button);
    ASSERT_NE(window, button);
    OpenProfile({"Mode=0"});
    EXPECT_EQ(Background("cboPassThruType"), button);
    EXPECT_EQ(Background("txtKeyFileLoc"), button);
    Click("chkInjectPublicKey");
    EXPECT_EQ(Background("txtKeyFileLoc"), window);
    EXPECT_TRUE(The<QWidget>("txtKeyFileLoc").isEnabled());
    EXPECT_TRUE(The<QWidget>("cmdKeyFileLoc").isEnabled());
    Pick("cboOperatingMode", 2);
    EXPECT_EQ(Background("cboPassThruType"), window);
    Pick("cboOperatingMode", 3);
    EXPECT_EQ(Background("cboPassThruType"), button);
    Pick("cboOperatingMode", 1);
    Click("chkInjectPublicKey");
    EXPECT_EQ(Background("txtKeyFileLoc"), button);
    EXPECT_FALSE(The<QWidget>("cmdKeyFileLoc").isEnabled());
}

TEST_F(ConfigRules, UncheckTheDeletionOfFoldersThatArentMade) {
    OpenProfile({"FolderPerDownloadAttempt=TRUE", "DeleteFolderAfterDownloadAttempt=TRUE"});
    EXPECT_TRUE(bEnabled("chkDeleteFolder"));
    EXPECT_TRUE(bChecked("chkDeleteFolder"));
    Click("chkNewFolder");
    EXPECT_FALSE(bEnabled("chkDeleteFolder"));
    EXPECT_FALSE(bChecked("chkDeleteFolder"));
    Click("chkNewFolder");
    EXPECT_TRUE(bEnabled("chkDeleteFolder"));
    EXPECT_FALSE(bChecked("chkDeleteFolder"));
}

TEST_F(ConfigRules, ShowAStoredDeletionAlthoughNoFoldersAreMade) {
    OpenProfile({"FolderPerDownloadAttempt=FALSE", "DeleteFolderAfterDownloadAttempt=TRUE"});
    EXPECT_FALSE(bEnabled("chkDeleteFolder"));
    EXPECT_TRUE(bChecked("chkDeleteFolder"));
}

TEST_F(ConfigRules, LetNothingHangOnLogging) {
    OpenProfile({"LoggingEnabled=TRUE"});
    Click("chkLogging");
    for (const char* name :
         {"txtLogPath", "cmdLogBrowse", "txtLogFileName", "chkLogControlPkt", "chkLogProcessPkt"})
        EXPECT_TRUE(The<QWidget>(name).isEnabled()) << name;
}

} // namespace
} // namespace brennik
