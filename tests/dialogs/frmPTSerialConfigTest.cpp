#include "dialogs/frmPTSerialConfig.h"

#include "dialogs/ListField.h"
#include "tests/dialogs/DialogChecks.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <string>
#include <vector>

namespace brennik {
namespace {

using windows::Named;
using Names = std::vector<std::string>;

constexpr const char* kLists[] = {"cboPort",     "cboBaudRate", "cboParity",
                                  "cboDatabits", "cboStopbit",  "cboFlowControl"};
const Names kFirstEntries = {"COM1", "110", "EVEN", "5", "1", "Xon/Xoff"};

class FrmPTSerialConfig : public windows::WindowsTest {
  protected:
    FrmPTSerialConfig() {
        oConfig->lOperatingMode(kSerialClientSide);
        SetClient(3, 9600, "NONE", 8, 2, 2);
        SetServer(256, 115200, "ODD", 7, 1.5, 0);
        oConfig->bAutoBaud(true);
    }

    void SetClient(int16_t iPort, int32_t lBaudRate, const char* strParity, int16_t iDatabits,
                   double dStopBit, int16_t iFlowControl) {
        oConfig->iClientComPort(iPort);
        oConfig->lClientBaudRate(lBaudRate);
        oConfig->strClientParity(strParity);
        oConfig->iClientDatabits(iDatabits);
        oConfig->dClientStopBit(dStopBit);
        oConfig->iClientFlowControl(iFlowControl);
    }
    void SetServer(int16_t iPort, int32_t lBaudRate, const char* strParity, int16_t iDatabits,
                   double dStopBit, int16_t iFlowControl) {
        oConfig->iServerComPort(iPort);
        oConfig->lServerBaudRate(lBaudRate);
        oConfig->strServerParity(strParity);
        oConfig->iServerDatabits(iDatabits);
        oConfig->dServerStopBit(dStopBit);
        oConfig->iServerFlowControl(iFlowControl);
    }
    static std::string Stop(double dStopBit) {
        return dStopBit == 1.5 ? "1.5" : std::to_string(static_cast<int>(dStopBit));
    }
    static Names Client() {
        return {std::to_string(oConfig->iClientComPort()),
                std::to_string(oConfig->lClientBaudRate()),
                oConfig->strClientParity(),
                std::to_string(oConfig->iClientDatabits()),
                Stop(oConfig->dClientStopBit()),
                std::to_string(oConfig->iClientFlowControl())};
    }
    static Names Server() {
        return {std::to_string(oConfig->iServerComPort()),
                std::to_string(oConfig->lServerBaudRate()),
                oConfig->strServerParity(),
                std::to_string(oConfig->iServerDatabits()),
                Stop(oConfig->dServerStopBit()),
                std::to_string(oConfig->iServerFlowControl())};
    }

    frmPTSerialConfig& Window() {
        if (window_ == nullptr)
            window_ = dialogs::Opened<frmPTSerialConfig>();
        return *window_;
    }
    frmPTSerialConfig& Reopened() {
        window_.reset();
        return Window();
    }
    ListField& List(const char* strName) {
        return dynamic_cast<ListField&>(Named<QComboBox>(Window(), strName));
    }
    QCheckBox& Autobaud() { return Named<QCheckBox>(Window(), "chkAutobaud"); }
    /// What the six lists show.
    Names Shown() {
        Names texts;
        for (const char* strName : kLists)
            texts.push_back(List(strName).currentText().toStdString());
        return texts;
    }
    void Choose(const Names& texts) {
        for (size_t n = 0; n < texts.size(); ++n)
            List(kLists[n]).SetBytes(texts[n]);
    }
    void Press(const char* strName) { Named<QPushButton>(Window(), strName).click(); }

    std::unique_ptr<frmPTSerialConfig> window_;
};

TEST_F(FrmPTSerialConfig, HasItsTitleLabelsAndButtons) {
    EXPECT_EQ(Window().objectName().toStdString(), "frmPTSerialConfig");
    EXPECT_EQ(Window().windowTitle().toStdString(), "Serial Settings");
    EXPECT_EQ(
        dialogs::Labels(Window()),
        (Names{"COM Port : cboPort", "Baud Rate: cboBaudRate", "Parity: cboParity",
               "Databits: cboDatabits", "Stopbit: cboStopbit", "Flow Control: cboFlowControl"}));
    EXPECT_EQ(Autobaud().text().toStdString(), "Auto baud");
    EXPECT_EQ(Named<QPushButton>(Window(), "cmdOK").text().toStdString(), "&OK");
    EXPECT_EQ(Named<QPushButton>(Window(), "cmdCancel").text().toStdString(), "&Cancel");
    EXPECT_TRUE(Named<QPushButton>(Window(), "cmdOK").isDefault());
    const auto& frame = Named<QGroupBox>(Window(), "Frame1");
    for (const char* strName : kLists)
        EXPECT_NO_THROW(Named<QComboBox>(frame, strName)) << strName;
}

TEST_F(FrmPTSerialConfig, IsReadByTabInItsOrder) {
    EXPECT_EQ(dialogs::TabOrder(Window()),
              (Names{"cboPort", "cboBaudRate", "cboParity", "cboDatabits", "cboStopbit",
                     "cboFlowControl", "chkAutobaud", "cmdOK", "cmdCancel"}));
}

TEST_F(FrmPTSerialConfig, OffersTheValuesOfTheTables) {
    Names ports;
    for (int i = 1; i <= 256; ++i)
        ports.push_back("COM" + std::to_string(i));
    EXPECT_EQ(dialogs::Entries(List("cboPort")), ports);
    EXPECT_EQ(
        dialogs::Entries(List("cboBaudRate")),
        (Names{"110", "300", "1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"}));
    EXPECT_EQ(dialogs::Entries(List("cboParity")), (Names{"EVEN", "ODD", "NONE", "SPACE", "MARK"}));
    EXPECT_EQ(dialogs::Entries(List("cboDatabits")), (Names{"5", "6", "7", "8"}));
    EXPECT_EQ(dialogs::Entries(List("cboStopbit")), (Names{"1", "1.5", "2"}));
    EXPECT_EQ(dialogs::Entries(List("cboFlowControl")), (Names{"Xon/Xoff", "Hardware", "None"}));
    for (const char* strName : kLists)
        EXPECT_FALSE(List(strName).isEditable()) << strName;
}

TEST_F(FrmPTSerialConfig, BeginsAtTheFirstEntriesForAnEmptyProfile) {
    oConfig = std::make_unique<TBrennikClientConfig>();
    EXPECT_EQ(Shown(), kFirstEntries);
    EXPECT_FALSE(Autobaud().isChecked());
}

TEST_F(FrmPTSerialConfig, ShowsTheClientValues) {
    EXPECT_EQ(Shown(), (Names{"COM3", "9600", "NONE", "8", "2", "Hardware"}));
    EXPECT_TRUE(Autobaud().isChecked());
}

TEST_F(FrmPTSerialConfig, ShowsTheServerValuesForModeOneAlone) {
    oConfig->lOperatingMode(kSerialServerSide);
    EXPECT_EQ(Shown(), (Names{"COM256", "115200", "ODD", "7", "1.5", "None"}));
    EXPECT_FALSE(Autobaud().isChecked()) << "not loaded for this side";
    EXPECT_TRUE(Autobaud().isVisible());
    EXPECT_TRUE(Autobaud().isEnabled());
    for (const int32_t lMode : {-1, 0, 2, 3, 4}) {
        oConfig->lOperatingMode(lMode);
        Reopened();
        EXPECT_EQ(Shown().front(), "COM3") << lMode;
    }
}

TEST_F(FrmPTSerialConfig, SidesAreTheModesThatTheCallersSet) {
    EXPECT_EQ(kSerialServerSide, 1);
    EXPECT_EQ(kSerialClientSide, 2);
}

TEST_F(FrmPTSerialConfig, ShowsAnyParityByItsFirstLetter) {
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"even", "EVEN"}, {"e", "EVEN"},           {"", "EVEN"},      {"x", "EVEN"},
        {"odd", "ODD"},   {"Mark parity", "MARK"}, {"Space", "SPACE"}};
    for (const auto& [strStored, strShown] : rows) {
        oConfig->strClientParity(strStored);
        Reopened();
        EXPECT_EQ(Shown()[2], strShown) << strStored;
        EXPECT_EQ(Shown()[5], "Hardware") << "and goes on";
    }
}

TEST_F(FrmPTSerialConfig, LeavesTheFirstEntryForAValueThatFailsItsTest) {
    SetClient(3, 14400, "?", 9, 1.25, 7);
    EXPECT_EQ(Shown(), (Names{"COM3", "110", "EVEN", "5", "1", "Xon/Xoff"}));
    EXPECT_TRUE(Autobaud().isChecked());
    Press("cmdOK");
    EXPECT_EQ(Client(), (Names{"3", "110", "EVEN", "5", "1", "1"}));
}

TEST_F(FrmPTSerialConfig, APortOutsideTheListEndsTheFillingQuietly) {
    for (const int16_t iPort : {int16_t{0}, int16_t{257}, int16_t{-1}}) {
        oConfig->iClientComPort(iPort);
        Reopened();
        EXPECT_EQ(Shown(), kFirstEntries) << iPort;
        EXPECT_FALSE(Autobaud().isChecked()) << iPort;
    }
    EXPECT_TRUE(user.boxes.empty());
    Press("cmdOK");
    EXPECT_EQ(Client(), (Names{"1", "110", "EVEN", "5", "1", "1"}));
    EXPECT_FALSE(oConfig->bAutoBaud());
}

TEST_F(FrmPTSerialConfig, KeepsTheClientValuesByOK) {
    const Names server = Server();
    Window();
    Choose({"COM256", "57600", "SPACE", "6", "1.5", "None"});
    Autobaud().click();
    const std::string strBefore = Ini();
    Press("cmdOK");
    EXPECT_EQ(Client(), (Names{"256", "57600", "SPACE", "6", "1.5", "0"}));
    EXPECT_FALSE(oConfig->bAutoBaud());
    EXPECT_EQ(Server(), server);
    EXPECT_FALSE(Window().isVisible());
    EXPECT_EQ(Window().result(), QDialog::Accepted);
    EXPECT_EQ(Ini(), strBefore) << "the file is the business of Apply";
}

TEST_F(FrmPTSerialConfig, KeepsTheServerValuesByOKAndNoAutoBaud) {
    oConfig->lOperatingMode(kSerialServerSide);
    const Names client = Client();
    for (const bool bStored : {true, false}) {
        Reopened();
        Choose({"COM9", "300", "MARK", "5", "2", "Hardware"});
        oConfig->bAutoBaud(bStored);
        if (!bStored)
            Autobaud().click();
        Press("cmdOK");
        EXPECT_EQ(Server(), (Names{"9", "300", "MARK", "5", "2", "2"}));
        EXPECT_EQ(Client(), client);
        EXPECT_EQ(oConfig->bAutoBaud(), bStored);
    }
}

TEST_F(FrmPTSerialConfig, KeepsForTheSideThatItOpenedFor) {
    const Names server = Server();
    Window();
    oConfig->lOperatingMode(kSerialServerSide);
    Choose({"COM5"});
    Press("cmdOK");
    EXPECT_EQ(Client().front(), "5");
    EXPECT_EQ(Server(), server);
}

TEST_F(FrmPTSerialConfig, GivesEveryValueBackAsItShowed) {
    const Names client = Client();
    Window();
    Press("cmdOK");
    EXPECT_EQ(Client(), client);
    EXPECT_TRUE(oConfig->bAutoBaud());
}

TEST_F(FrmPTSerialConfig, DropsEverythingByCancelAndEsc) {
    for (const bool bCancel : {true, false}) {
        Reopened();
        Choose({"COM5", "300"});
        Autobaud().click();
        if (bCancel)
            Press("cmdCancel");
        else
            QTest::keyClick(Window().focusWidget(), Qt::Key_Escape);
        EXPECT_FALSE(Window().isVisible());
        EXPECT_EQ(Client(), (Names{"3", "9600", "NONE", "8", "2", "2"}));
        EXPECT_TRUE(oConfig->bAutoBaud());
    }
}

TEST_F(FrmPTSerialConfig, EnterInAListIsOK) {
    QTest::keyClick(&List("cboBaudRate"), Qt::Key_Down);
    QTest::keyClick(&List("cboBaudRate"), Qt::Key_Return);
    EXPECT_FALSE(Window().isVisible());
    EXPECT_EQ(oConfig->lClientBaudRate(), 19200);
}

} // namespace
} // namespace brennik
