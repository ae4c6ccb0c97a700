#include "shell/frmBrennikStatus.h"

#include "tests/session/Contents.h"
#include "tests/windows/WindowsWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <string>
#include <vector>

namespace brennik {
namespace {

using session::Open;
using session::Write;
using windows::Named;

// The status window alone, before any run: its timers don't fire but by the test's hand.
class FrmBrennikStatus : public windows::WindowsTest {
  protected:
    frmBrennikStatus& Status() {
        if (status_ == nullptr) {
            status_ = std::make_unique<frmBrennikStatus>(MainWindow());
            Named<QTimer>(*status_, "tmrStart").stop();
            status_->show();
        }
        return *status_;
    }
    QLineEdit& Field(int nIndex) {
        return Named<QLineEdit>(Status(), ("txtBrennik(" + std::to_string(nIndex) + ")").c_str());
    }
    std::string Text(int nIndex) { return Field(nIndex).text().toStdString(); }
    QProgressBar& Bar() { return Named<QProgressBar>(Status(), "ProgressBar1"); }
    void Update() { QMetaObject::invokeMethod(&Named<QTimer>(Status(), "tmrUpdate"), "timeout"); }
    TBrennikProtocolTestAccess Engine() { return TBrennikProtocolTestAccess(*oProtocol); }

    std::unique_ptr<frmBrennikStatus> status_;
};

TEST_F(FrmBrennikStatus, HasItsCaptionAndControls) {
    EXPECT_EQ(Status().windowTitle().toStdString(), "Download Status");
    std::vector<std::string> labels;
    for (const QLabel* label : Status().findChildren<QLabel*>())
        labels.push_back(label->text().toStdString() + ": " +
                         label->buddy()->objectName().toStdString());
    EXPECT_EQ(labels, (std::vector<std::string>{"Status: txtBrennik(0)", "Folder: txtBrennik(1)",
                                                "Filename: txtBrennik(2)",
                                                "Filesize (bytes): txtBrennik(3)"}));
    EXPECT_NO_THROW(Named<QProgressBar>(Named<QGroupBox>(Status(), "Frame1"), "ProgressBar1"));
    EXPECT_EQ(Named<QPushButton>(Status(), "Command1").text().toStdString(),
              "Cancel Communications");
}

TEST_F(FrmBrennikStatus, BeginsWithEmptyFieldsInTheColourOfAButton) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Text(i), "");
        EXPECT_TRUE(Field(i).isReadOnly());
        EXPECT_EQ(Field(i).palette().color(QPalette::Base),
                  Status().palette().color(QPalette::Button));
    }
    EXPECT_EQ(Bar().value(), 0);
}

TEST_F(FrmBrennikStatus, FollowsADarkPalette) {
    QPalette dark;
    dark.setColor(QPalette::Button, QColor(40, 41, 42));
    dark.setColor(QPalette::ButtonText, QColor(240, 241, 242));
    Status().setPalette(dark);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Field(i).palette().color(QPalette::Base), QColor(40, 41, 42));
        EXPECT_EQ(Field(i).palette().color(QPalette::Text), QColor(240, 241, 242));
    }
}

TEST_F(FrmBrennikStatus, IsReadByTabInItsOrder) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&Status()));
    std::vector<std::string> names;
    for (int i = 0; i < 5; ++i) {
        ASSERT_NE(Status().focusWidget(), nullptr) << i;
        names.push_back(Status().focusWidget()->objectName().toStdString());
        QTest::keyClick(Status().focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"txtBrennik(0)", "txtBrennik(1)", "txtBrennik(2)",
                                               "txtBrennik(3)", "Command1"}));
}

TEST_F(FrmBrennikStatus, StartsOnceAfterThreeHundredMilliseconds) {
    const frmBrennikStatus fresh(MainWindow());
    const auto& tmrStart = Named<QTimer>(fresh, "tmrStart");
    EXPECT_TRUE(tmrStart.isActive());
    EXPECT_EQ(tmrStart.interval(), 300);
    EXPECT_FALSE(Named<QTimer>(fresh, "tmrUpdate").isActive());
}

TEST_F(FrmBrennikStatus, ShowsTheTextOfEachState) {
    const std::vector<std::string> texts = {"IDLE",
                                            "PROCESSING SET TIME REQUEST",
                                            "PROCESSING CONFIG SYS VARIABLE REQUEST",
                                            "PROCESSING MESSAGE REQUEST",
                                            "DOWNLOADING FILE",
                                            "PROCESSING SET PASSWORD REQUEST",
                                            "CONNECTING TO BRENNIK SERVER",
                                            "DISCONNECTING FROM BRENNIK SERVER",
                                            "UPLOADING FILE",
                                            "DOWNLOADING TMS APPLICATION...",
                                            "WAITING FOR DEVICE TO REBOOT. PLEASE WAIT...",
                                            "UNKNOWN",
                                            "UNKNOWN"};
    for (size_t i = 0; i < texts.size(); ++i) {
        Engine().SetState(static_cast<int32_t>(i));
        Update();
        EXPECT_EQ(Text(0), texts[i]) << i;
    }
    Engine().SetState(-1);
    Update();
    EXPECT_EQ(Text(0), "UNKNOWN");
}

TEST_F(FrmBrennikStatus, ShowsFolderNameSizeAndProgressOfTheFile) {
    Engine().SetFolder("C:\\srv\\F\\2\\");
    Engine().SetFile("caf\xE9\n", 4000, 1399);
    Update();
    EXPECT_EQ(Text(1), "C:\\srv\\F\\2\\");
    EXPECT_EQ(Text(2), "caf\xEF\xBF\xBD\xE2\x90\x8A");
    EXPECT_EQ(Text(3), "4000");
    EXPECT_EQ(Bar().value(), 34);
    Engine().SetFile("", -1, 0);
    Update();
    EXPECT_EQ(Text(3), "-1");
}

TEST_F(FrmBrennikStatus, EmptiesTheBarWhileADeviceReboots) {
    Engine().SetFile("a", 0, 0);
    Bar().setValue(50);
    Engine().SetState(9);
    Update();
    EXPECT_EQ(Bar().value(), 50);
    Engine().SetState(10);
    Update();
    EXPECT_EQ(Bar().value(), 0);
}

struct BarCase {
    int32_t lValue;
    int32_t lTotal;
    int nShown;
};

TEST_F(FrmBrennikStatus, MovesTheBarOnlyToWhereItMakesSense) {
    constexpr int kBefore = 42;
    const BarCase cases[] = {
        {0, 1000, 0},
        {500, 1000, 50},
        {999, 1000, 99},
        {1000, 1000, 100},
        {INT32_MAX, INT32_MAX, 100},
        {1, INT32_MAX, 0},
        {0, 0, kBefore},       // nothing can be divided by it
        {5, 0, kBefore},       //
        {1001, 1000, kBefore}, // more has come than was told
        {INT32_MAX, 1, kBefore},
        {5, -10, kBefore}, // a total below 1
        {-5, -10, kBefore},
        {-500, 1000, kBefore},
        {INT32_MIN, 1, kBefore},
    };
    for (const BarCase& bar : cases) {
        Bar().setRange(0, 7);
        Bar().setRange(0, 100);
        Bar().setValue(kBefore);
        frmBrennikStatus::UpdateProgressBar(Bar(), 0, 100, bar.lValue, bar.lTotal);
        EXPECT_EQ(Bar().value(), bar.nShown) << bar.lValue << " of " << bar.lTotal;
        EXPECT_EQ(Bar().minimum(), 0);
        EXPECT_EQ(Bar().maximum(), 100);
    }
    frmBrennikStatus::UpdateProgressBar(Bar(), 0, 200, 1, 2);
    EXPECT_EQ(Bar().maximum(), 200);
    EXPECT_EQ(Bar().value(), 100);
    frmBrennikStatus::UpdateProgressBar(Bar(), 0, 300, 1, 0);
    EXPECT_EQ(Bar().maximum(), 300) << "the ends are set in any case";
    EXPECT_EQ(Bar().value(), 100);
}

TEST_F(FrmBrennikStatus, ListsEachNewFileOnceWithTheTimeOfTheUpdate) {
    Engine().AddFile("C:\\a\\", "1");
    Update();
    Update();
    EXPECT_EQ(Lines(), std::vector<std::string>{"C:\\a\\|1"});
    host.RunFor(world::kSecond);
    Engine().AddFile("C:\\a\\", "2");
    Engine().AddFile("C:\\b\\", "3");
    Update();
    EXPECT_EQ(Lines(), (std::vector<std::string>{"C:\\a\\|1", "C:\\a\\|2", "C:\\b\\|3"}));
    EXPECT_EQ(List().topLevelItem(2)->text(0).toStdString(), "14/11/2026 12:00:01");
}

TEST_F(FrmBrennikStatus, DropsAFailingUpdateAndGoesOnWithTheNext) {
    Engine().AddFile("C:\\a\\", "1");
    Engine().AddFile("C:\\" + std::string(300000, 'b'), "2");
    {
        const world::AllocationLimit limit(1 << 18);
        Update();
    }
    EXPECT_EQ(Lines(), std::vector<std::string>{"C:\\a\\|1"});
    Update();
    ASSERT_EQ(List().topLevelItemCount(), 2) << "none is listed twice, none is lost";
    EXPECT_EQ(List().topLevelItem(1)->text(2).toStdString(), "2");
}

TEST_F(FrmBrennikStatus, OnlyRecordsTheCancel) {
    Named<QPushButton>(Status(), "Command1").click();
    EXPECT_TRUE(oProtocol->bCancelComms());
    EXPECT_TRUE(Status().isVisible());
    EXPECT_EQ(Named<QPushButton>(Status(), "Command1").text().toStdString(),
              "Cancel Communications");
    EXPECT_TRUE(Named<QPushButton>(Status(), "Command1").isEnabled());
}

TEST_F(FrmBrennikStatus, IsNotCancelledByAnEnterMeantForAnotherWindow) {
    QTest::keyClick(&Field(0), Qt::Key_Return);
    EXPECT_FALSE(oProtocol->bCancelComms());
    EXPECT_TRUE(Status().isVisible());
    QTest::keyClick(&Named<QPushButton>(Status(), "Command1"), Qt::Key_Space);
    EXPECT_TRUE(oProtocol->bCancelComms());
}

TEST_F(FrmBrennikStatus, ClosesWhileNoRunIsOn) {
    QTest::keyClick(&Status(), Qt::Key_Escape);
    EXPECT_FALSE(Status().isVisible());
    Status().show();
    Status().close();
    EXPECT_FALSE(Status().isVisible());
}

} // namespace
} // namespace brennik
