#include "shell/frmSelectProfile.h"

#include "tests/windows/WindowsWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <string>
#include <vector>

namespace brennik {
namespace {

using windows::Named;

class FrmSelectProfile : public windows::WindowsTest {
  protected:
    frmSelectProfile& Picker() {
        if (picker_ == nullptr) {
            lProfileId = -1;
            picker_ = std::make_unique<frmSelectProfile>(nullptr);
            picker_->show();
            EXPECT_TRUE(QTest::qWaitForWindowActive(picker_.get()));
        }
        return *picker_;
    }
    QListWidget& Profiles() { return Named<QListWidget>(Picker(), "lstProfile"); }
    QComboBox& Applications() { return Named<QComboBox>(Picker(), "cboAppName"); }
    QLineEdit& TerminalId() { return Named<QLineEdit>(Picker(), "txtTid"); }
    void RunProfile() { Named<QPushButton>(Picker(), "cmdSelect").click(); }

    std::vector<std::string> Shown() {
        std::vector<std::string> names;
        for (int i = 0; i < Profiles().count(); ++i)
            names.push_back(Profiles().item(i)->text().toStdString());
        return names;
    }

    std::unique_ptr<frmSelectProfile> picker_;
};

TEST_F(FrmSelectProfile, HasItsCaptionAndControls) {
    EXPECT_EQ(Picker().windowTitle().toStdString(), "Select Brennik Profile");
    const auto& frame = Named<QGroupBox>(Picker(), "Frame1");
    for (const char* name : {"lstProfile", "cboAppName", "txtTid"})
        EXPECT_NO_THROW(Named<QWidget>(frame, name)) << name;
    EXPECT_EQ(Named<QPushButton>(Picker(), "cmdSelect").text().toStdString(), "&Run Profile");
    EXPECT_EQ(Named<QPushButton>(Picker(), "cmdCancel").text().toStdString(), "&Cancel");
    EXPECT_TRUE(Named<QPushButton>(Picker(), "cmdSelect").isDefault());
    std::vector<std::string> labels;
    for (const QLabel* label : Picker().findChildren<QLabel*>())
        labels.push_back(label->text().toStdString() + ": " +
                         label->buddy()->objectName().toStdString());
    EXPECT_EQ(labels, (std::vector<std::string>{"Select Profile: lstProfile",
                                                "Brennik Application Name: cboAppName",
                                                "Brennik Terminal ID: txtTid"}));
}

TEST_F(FrmSelectProfile, IsReadByTabInItsOrder) {
    std::vector<std::string> names;
    for (int i = 0; i < 5; ++i) {
        names.push_back(Picker().focusWidget()->objectName().toStdString());
        QTest::keyClick(Picker().focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"lstProfile", "cboAppName", "txtTid", "cmdSelect",
                                               "cmdCancel"}));
    EXPECT_TRUE(Profiles().hasFocus());
}

TEST_F(FrmSelectProfile, ListsTheProfilesInTheOrderOfTheFileWithTheFirstSelected) {
    WriteProfiles({{"ProfileName=Zebra"}, {}, {"ProfileName=caf\xE9"}, {"ProfileName=<b>x</b>"}});
    EXPECT_EQ(Shown(), (std::vector<std::string>{"Zebra", "", "caf\xEF\xBF\xBD", "<b>x</b>"}));
    EXPECT_EQ(Profiles().currentRow(), 0);
    EXPECT_TRUE(Profiles().item(0)->isSelected());
}

TEST_F(FrmSelectProfile, OffersNoApplicationFirstAndThenThoseOfTheFile) {
    WriteProfiles({{}}, "[APPLICATION]\r\n1=POS\r\n2=Tax \r\n3=POS\r\n5=never\r\n");
    std::vector<std::string> names;
    for (int i = 0; i < Applications().count(); ++i)
        names.push_back(Applications().itemText(i).toStdString());
    EXPECT_EQ(names, (std::vector<std::string>{"", "POS", "Tax", "POS"}));
    EXPECT_EQ(Applications().currentIndex(), 0);
    EXPECT_TRUE(Applications().isEditable());
    EXPECT_EQ(TerminalId().text().toStdString(), "");
}

TEST_F(FrmSelectProfile, TakesTheSelectedProfileIntoANewConfiguration) {
    WriteProfiles({{"ProfileName=A"}, {"ProfileName=B"}, {"ProfileName=C"}},
                  "[PLATFORMS]\r\n1=VX520,E,P\r\n");
    oConfig->strProfileName("old");
    oConfig->GetPlatforms("/config");
    ASSERT_EQ(oConfig->lPlatformCount(), 1);
    const std::string strBefore = Ini();
    Profiles().setCurrentRow(1);
    RunProfile();
    EXPECT_EQ(lProfileId, 2);
    EXPECT_EQ(oConfig->strProfileName(), "B");
    EXPECT_EQ(oConfig->lPlatformCount(), 0) << "nothing of the one before is in it";
    EXPECT_EQ(oConfig->strTerminalId(), "T1");
    EXPECT_EQ(Ini(), strBefore) << "nothing was written";
    EXPECT_FALSE(Picker().isVisible());
}

TEST_F(FrmSelectProfile, WritesApplicationAndTerminalIdForGoodBeforeItLoads) {
    WriteProfiles({{}, {}});
    Profiles().setCurrentRow(1);
    Applications().setEditText(QStringLiteral("FREE text"));
    TerminalId().setText(QStringLiteral("T-9"));
    RunProfile();
    EXPECT_EQ(oConfig->strApplicationID(), "FREE text");
    EXPECT_EQ(oConfig->strTerminalId(), "T-9");
    const std::string strIni = Ini();
    EXPECT_EQ(strIni.find("ApplicationID=FREE text"), strIni.rfind("ApplicationID=FREE text"));
    EXPECT_GT(strIni.find("ApplicationID=FREE text"), strIni.find("[PROFILE_2]"));
    EXPECT_GT(strIni.find("TerminalID=T-9"), strIni.find("[PROFILE_2]"));
}

TEST_F(FrmSelectProfile, WritesOnlyWhatWasGiven) {
    WriteProfiles({{}});
    TerminalId().setText(QStringLiteral("T-9"));
    RunProfile();
    EXPECT_TRUE(IniHolds("TerminalID=T-9"));
    EXPECT_TRUE(IniHolds("ApplicationID=APP"));
}

TEST_F(FrmSelectProfile, TakesFreeTextAsItStandsAlthoughAnEntryBeginsSo) {
    WriteProfiles({{}}, "[APPLICATION]\r\n1=PAYMENT\r\n");
    Applications().setFocus();
    QTest::keyClicks(&Applications(), QStringLiteral("pay"));
    EXPECT_EQ(Applications().currentText().toStdString(), "pay");
    RunProfile();
    EXPECT_EQ(oConfig->strApplicationID(), "pay");
}

TEST_F(FrmSelectProfile, GivesTheBytesOfAnEntryBackUnchanged) {
    WriteProfiles({{}}, "[APPLICATION]\r\n1=caf\xE9\r\n");
    Applications().setCurrentIndex(1);
    RunProfile();
    EXPECT_EQ(oConfig->strApplicationID(), "caf\xE9");
    EXPECT_TRUE(IniHolds("ApplicationID=caf\xE9"));
}

TEST_F(FrmSelectProfile, RunsByEnterFromAnyField) {
    WriteProfiles({{}, {}});
    Profiles().setCurrentRow(1);
    QTest::keyClicks(&TerminalId(), QStringLiteral("T7"));
    QTest::keyClick(&TerminalId(), Qt::Key_Return);
    EXPECT_EQ(lProfileId, 2);
    EXPECT_EQ(oConfig->strTerminalId(), "T7");
}

TEST_F(FrmSelectProfile, TakesProfile0OfAFileWithoutProfiles) {
    for (const char* text : {"[GENERAL]\r\nProfilecount=0\r\n", ""}) {
        host.files.Put("/config/BrennikClient.ini", text);
        picker_.reset();
        EXPECT_EQ(Shown(), std::vector<std::string>());
        RunProfile();
        EXPECT_EQ(lProfileId, 0);
        EXPECT_EQ(oConfig->strWorkingFolder(), "");
        EXPECT_EQ(Ini(), text);
    }
    host.files.Remove("/config/BrennikClient.ini");
    picker_.reset();
    EXPECT_EQ(Shown(), std::vector<std::string>());
    RunProfile();
    EXPECT_EQ(lProfileId, 0);
    EXPECT_FALSE(host.files.Exists("/config/BrennikClient.ini"));
}

TEST_F(FrmSelectProfile, TakesTheFirstLineOfWhatIsPasted) {
    WriteProfiles({{}});
    QApplication::clipboard()->setText(QStringLiteral("PAY\nMode=1\n"));
    Applications().setFocus();
    Applications().lineEdit()->paste();
    QApplication::clipboard()->setText(QStringLiteral("T-9\r\n"));
    TerminalId().paste();
    RunProfile();
    EXPECT_TRUE(IniHolds("ApplicationID=PAY"));
    EXPECT_TRUE(IniHolds("TerminalID=T-9"));
    EXPECT_EQ(oConfig->strTerminalId(), "T-9");
}

TEST_F(FrmSelectProfile, WritesBlanksForTheyAreText) {
    WriteProfiles({{}});
    Applications().setEditText(QStringLiteral("  "));
    TerminalId().setText(QStringLiteral(" "));
    RunProfile();
    EXPECT_FALSE(IniHolds("ApplicationID=APP"));
    EXPECT_FALSE(IniHolds("TerminalID=T1"));
    EXPECT_EQ(oConfig->strApplicationID(), "");
}

TEST_F(FrmSelectProfile, OffersTheApplicationsEvenWhenTheProfilesCannotBeRead) {
    host.files.Put("/config/BrennikClient.ini",
                   "[GENERAL]\r\nProfilecount=-1\r\n[APPLICATION]\r\n1=POS\r\n");
    EXPECT_EQ(Shown(), std::vector<std::string>());
    EXPECT_EQ(Applications().count(), 2);
}

TEST_F(FrmSelectProfile, DropsARunTimeFailureWithoutAWord) {
    WriteProfiles({{"ProfileName=First"}});
    const std::string strBefore = Ini();
    Applications().setEditText(QString(32767, QLatin1Char('a'))); // as much as a field takes
    {
        const world::AllocationLimit limit(1 << 15);
        RunProfile();
    }
    EXPECT_FALSE(Picker().isVisible());
    EXPECT_EQ(lProfileId, 1);
    EXPECT_EQ(oConfig->strProfileName(), "") << "new, and not loaded";
    EXPECT_TRUE(Ini() == strBefore);
}

TEST_F(FrmSelectProfile, DropsAFailedLoadWithoutAWord) {
    WriteProfiles({{"ServerComPort=70000"}});
    RunProfile();
    EXPECT_EQ(lProfileId, 1);
    EXPECT_EQ(oConfig->lErrorCode(), 1000000);
    EXPECT_FALSE(Picker().isVisible());
}

} // namespace
} // namespace brennik
