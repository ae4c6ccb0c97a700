// Which controls of the configuration window are enabled and checked, for every mode, type and set
// of upload boxes.
#include "dialogs/OperatingModes.h"
#include "tests/dialogs/ConfigFixture.h"

#include <gtest/gtest.h>

#include <QEvent>
#include <array>
#include <string>
#include <vector>

namespace brennik {
namespace {

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
    bool bAllFiles;
    const char* strEnabled; ///< of kRuled, in their order
};

// Only a pass-through to a service that uploads differs by its boxes, and there alone the key file
// is out of reach.
constexpr std::array kTable = {
    Row{0, 0, false, "+-+----+"}, Row{0, 0, true, "+-+----+"},  Row{0, 1, false, "+-+----+"},
    Row{0, 1, true, "+-+----+"},  Row{0, 2, false, "+-+----+"}, Row{0, 2, true, "+-+----+"},
    Row{1, 0, false, "+-+----+"}, Row{1, 0, true, "+-+----+"},  Row{1, 1, false, "+-+----+"},
    Row{1, 1, true, "+-+----+"},  Row{1, 2, false, "+-+----+"}, Row{1, 2, true, "+-+----+"},
    Row{2, 0, false, "++++---+"}, Row{2, 0, true, "++++---+"},  Row{2, 1, false, "+++++++-"},
    Row{2, 1, true, "+++++---"},  Row{2, 2, false, "++++---+"}, Row{2, 2, true, "++++---+"},
    Row{3, 0, false, "++-----+"}, Row{3, 0, true, "++-----+"},  Row{3, 1, false, "++-----+"},
    Row{3, 1, true, "++-----+"},  Row{3, 2, false, "++-----+"}, Row{3, 2, true, "++-----+"},
};

/// What no mode and no type touches.
constexpr std::array kAlwaysEnabled = {
    "txtProfileName",   "cboOperatingMode", "chkPedDownload",    "txtComms(0)",
    "txtComms(4)",      "cboPlatForm",      "cboEprom",          "cboApp",
    "txtPTID",          "txtTid",           "txtMemory",         "txtBlockSize",
    "cboDlType",        "txtConfigTitle",   "txtReleaseTitle",   "txtBaseFolder",
    "cmdBrowse",        "chkNewFolder",     "txtScriptFileName", "chkExecuteScript",
    "chkLogging",       "txtLogPath",       "cmdLogBrowse",      "txtLogFileName",
    "chkLogControlPkt", "chkLogProcessPkt", "cmdClose"};

class ConfigRules : public dialogs::ConfigTest {
  protected:
    static std::string Name(const Row& row) {
        return "mode " + std::to_string(row.nMode) + ", type " + std::to_string(row.nType) +
               (row.bAllFiles ? ", all files" : "");
    }

    std::string Enabled() {
        std::string strEnabled;
        for (const char* name : kRuled)
            strEnabled += bEnabled(name) ? '+' : '-';
        return strEnabled;
    }

    QColor Background(const std::string& strName) {
        return The<QWidget>(strName).palette().color(QPalette::Base);
    }

    void OpenProfile(const std::vector<std::string>& settings) {
        WriteSections({settings});
        Open(1);
    }
};

TEST_F(ConfigRules, HoldForEveryModeAndTypeOfAStoredProfile) {
    for (const Row& row : kTable) {
        for (const bool bInject : {false, true}) {
            OpenProfile({"Mode=" + std::to_string(row.nMode),
                         "PassThruType=" + std::to_string(row.nType),
                         std::string("UploadFileTypes=") + (row.bAllFiles ? "0" : "2"),
                         std::string("InjectPublicKeyFile=") + (bInject ? "true" : "")});
            EXPECT_EQ(Enabled(), row.strEnabled) << Name(row);
            EXPECT_EQ(bEnabled("txtKeyFileLoc"), bInject) << Name(row);
            EXPECT_EQ(bEnabled("cmdKeyFileLoc"), bInject) << Name(row);
            EXPECT_EQ(bChecked("chkInjectPublicKey"), bInject) << Name(row);
            EXPECT_EQ(bChecked("chkUploadAllFiles"), row.bAllFiles) << Name(row);
            EXPECT_EQ(bChecked("chkUploadLogFiles"), false) << Name(row);
            EXPECT_EQ(bChecked("chkUploadTransactionFile"), !row.bAllFiles) << Name(row);
            for (const char* name : kAlwaysEnabled)
                EXPECT_TRUE(bEnabled(name)) << name << ", " << Name(row);
            EXPECT_FALSE(bDirty()) << Name(row);
        }
    }
}

TEST_F(ConfigRules, HoldForEveryModeAndTypeThatIsPicked) {
    for (const Row& row : kTable) {
        OpenProfile({"Mode=0", "UploadFileTypes=2"});
        Pick("cboOperatingMode", 2);
        Pick("cboPassThruType", 1);
        Check("chkUploadAllFiles", row.bAllFiles);
        if (row.nType != 1)
            Pick("cboPassThruType", row.nType);
        Pick("cboOperatingMode", row.nMode);
        EXPECT_EQ(Enabled(), row.strEnabled) << Name(row);
        EXPECT_EQ(bChecked("chkUploadAllFiles"), row.bAllFiles) << Name(row);
        EXPECT_TRUE(bChecked("chkUploadTransactionFile")) << "no rule takes a check mark away";
        EXPECT_TRUE(bDirty()) << Name(row);
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

TEST(OperatingModes, SayWhatEachModeSavesForTheLinks) {
    ASSERT_EQ(OperatingModes().size(), 4U);
    EXPECT_EQ(OperatingModes()[0].lServerMode, 0);
    EXPECT_EQ(OperatingModes()[0].lClientMode, std::nullopt);
    EXPECT_EQ(OperatingModes()[1].lServerMode, 1);
    EXPECT_EQ(OperatingModes()[1].lClientMode, std::nullopt);
    EXPECT_EQ(OperatingModes()[2].lServerMode, 0);
    EXPECT_EQ(OperatingModes()[2].lClientMode, 1);
    EXPECT_EQ(OperatingModes()[3].lServerMode, 1);
    EXPECT_EQ(OperatingModes()[3].lClientMode, 1);
}

TEST(OperatingModes, TakeEveryTypeButTwoForAnUpload) {
    EXPECT_EQ(PassThruTypeOf(0), 0);
    EXPECT_EQ(PassThruTypeOf(2), 2);
    for (const int32_t lType : {1, 3, -1, 2147483647})
        EXPECT_EQ(PassThruTypeOf(lType), 1);
}

} // namespace
} // namespace brennik
