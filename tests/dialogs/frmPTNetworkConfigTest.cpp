#include "dialogs/frmPTNetworkConfig.h"

#include "tests/dialogs/DialogChecks.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <string>
#include <vector>

namespace brennik {
namespace {

using windows::Named;
using Names = std::vector<std::string>;

class FrmPTNetworkConfig : public windows::WindowsTest {
  protected:
    FrmPTNetworkConfig() {
        oConfig->strServerIPAddress1("10.0.0.1");
        oConfig->strServerIPAddress2("host.example");
        oConfig->strServerIPAddress3(" as it stands ");
        oConfig->lServerPort1(5000);
        oConfig->lServerPort2(0);
        oConfig->lServerPort3(-7);
        oConfig->lServerConnectTimeout(30);
        oConfig->bServerBlockedSocket(false);
    }

    frmPTNetworkConfig& Window() {
        if (window_ == nullptr)
            window_ = dialogs::Opened<frmPTNetworkConfig>();
        return *window_;
    }
    QLineEdit& Box(const char* strName) { return Named<QLineEdit>(Window(), strName); }
    std::string Text(const char* strName) { return Box(strName).text().toStdString(); }
    void Type(const char* strName, const char* strText) {
        Box(strName).setFocus();
        Box(strName).selectAll();
        QTest::keyClicks(&Box(strName), QString::fromLatin1(strText));
    }
    QCheckBox& NonBlock() { return Named<QCheckBox>(Window(), "chkNonBlock"); }
    void Press(const char* strName) { Named<QPushButton>(Window(), strName).click(); }

    std::unique_ptr<frmPTNetworkConfig> window_;
};

TEST_F(FrmPTNetworkConfig, HasItsTitleLabelsAndButtons) {
    EXPECT_EQ(Window().objectName().toStdString(), "frmPTNetworkConfig");
    EXPECT_EQ(Window().windowTitle().toStdString(), "Network Settings");
    EXPECT_EQ(dialogs::Labels(Window()),
              (Names{"IP Address 1: txtIP1", "Port 1: txtPort1", "IP Address 2: txtIP2",
                     "Port 2: txtPort2", "IP Address 3: txtIP3", "Port 3: txtPort3",
                     "Connection Timeout: txtConnTimeout", "(Seconds): txtConnTimeout"}));
    EXPECT_EQ(NonBlock().text().toStdString(), "Use non-blocking socket creation");
    EXPECT_EQ(Named<QPushButton>(Window(), "cmdOK").text().toStdString(), "&OK");
    EXPECT_EQ(Named<QPushButton>(Window(), "cmdCancel").text().toStdString(), "&Cancel");
    EXPECT_TRUE(Named<QPushButton>(Window(), "cmdOK").isDefault());
    EXPECT_FALSE(Named<QPushButton>(Window(), "cmdCancel").isDefault());
}

TEST_F(FrmPTNetworkConfig, FramesTheConnectionAndInItTheTimeout) {
    const auto& frame = Named<QGroupBox>(Window(), "fraConnection");
    for (const char* name : {"txtIP1", "txtPort3", "chkNonBlock", "txtConnTimeout"})
        EXPECT_NO_THROW(Named<QWidget>(frame, name)) << name;
    EXPECT_EQ(frame.title().toStdString(), "");
    const auto* inner = dynamic_cast<QGroupBox*>(Box("txtConnTimeout").parentWidget());
    ASSERT_NE(inner, nullptr);
    EXPECT_NE(inner, &frame);
    EXPECT_FALSE(inner->isCheckable());
    EXPECT_LT(NonBlock().geometry().bottom(), inner->geometry().center().y());
}

TEST_F(FrmPTNetworkConfig, LimitsWhatIsTyped) {
    for (const char* name : {"txtIP1", "txtIP2", "txtIP3"})
        EXPECT_EQ(Box(name).maxLength(), 100) << name;
    for (const char* name : {"txtPort1", "txtPort2", "txtPort3"})
        EXPECT_EQ(Box(name).maxLength(), 6) << name;
    EXPECT_EQ(Box("txtConnTimeout").maxLength(), 2);
}

TEST_F(FrmPTNetworkConfig, IsReadByTabInItsOrder) {
    EXPECT_EQ(dialogs::TabOrder(Window()),
              (Names{"txtIP1", "txtPort1", "txtIP2", "txtPort2", "txtIP3", "txtPort3",
                     "chkNonBlock", "txtConnTimeout", "cmdOK", "cmdCancel"}));
}

TEST_F(FrmPTNetworkConfig, ShowsTheServerValues) {
    EXPECT_EQ(Text("txtIP1"), "10.0.0.1");
    EXPECT_EQ(Text("txtIP2"), "host.example");
    EXPECT_EQ(Text("txtIP3"), " as it stands ");
    EXPECT_EQ(Text("txtPort1"), "5000");
    EXPECT_EQ(Text("txtPort2"), "") << "no port is an empty box";
    EXPECT_EQ(Text("txtPort3"), "-7");
    EXPECT_EQ(Text("txtConnTimeout"), "30");
    EXPECT_TRUE(NonBlock().isChecked());
    EXPECT_TRUE(Box("txtConnTimeout").isEnabled());
}

TEST_F(FrmPTNetworkConfig, ShowsATimeoutOfNoneAsZero) {
    oConfig->lServerConnectTimeout(0);
    EXPECT_EQ(Text("txtConnTimeout"), "0");
}

TEST_F(FrmPTNetworkConfig, HidesTheTimeoutOfABlockedSocketAndKeepsZeroThen) {
    oConfig->bServerBlockedSocket(true);
    EXPECT_FALSE(NonBlock().isChecked());
    EXPECT_EQ(Text("txtConnTimeout"), "");
    EXPECT_FALSE(Box("txtConnTimeout").isEnabled());
    Press("cmdOK");
    EXPECT_TRUE(oConfig->bServerBlockedSocket());
    EXPECT_EQ(oConfig->lServerConnectTimeout(), 0);
}

TEST_F(FrmPTNetworkConfig, ShowsAReloadedProfileAsNonBlocking) {
    oConfig->bServerBlockedSocket(true);
    EXPECT_EQ(oConfig->SaveConfiguration("/config", 1, false), 0);
    oConfig = std::make_unique<TBrennikClientConfig>();
    EXPECT_EQ(oConfig->GetConfiguration("/config", 1), 0);
    EXPECT_TRUE(NonBlock().isChecked());
}

TEST_F(FrmPTNetworkConfig, AClickOfTheBoxTurnsTheTimeoutOnAndOff) {
    QTest::keyClick(&NonBlock(), Qt::Key_Space);
    EXPECT_FALSE(NonBlock().isChecked());
    EXPECT_EQ(Text("txtConnTimeout"), "");
    EXPECT_FALSE(Box("txtConnTimeout").isEnabled());
    NonBlock().click();
    EXPECT_TRUE(Box("txtConnTimeout").isEnabled());
    EXPECT_EQ(Text("txtConnTimeout"), "") << "what was emptied doesn't come back";
}

TEST_F(FrmPTNetworkConfig, TakesDigitsOnlyForPortsAndTimeout) {
    for (const char* name : {"txtPort1", "txtPort2", "txtPort3"}) {
        Type(name, "x1-2.3 4567y");
        EXPECT_EQ(Text(name), "123456") << name;
    }
    Type("txtConnTimeout", "a4b5c6");
    EXPECT_EQ(Text("txtConnTimeout"), "45");
    Type("txtIP1", "a-1.b:2");
    EXPECT_EQ(Text("txtIP1"), "a-1.b:2");
}

TEST_F(FrmPTNetworkConfig, KeepsWhatWasTypedByOK) {
    Type("txtIP1", "srv1");
    Type("txtIP2", "srv 2 ");
    Type("txtIP3", "3");
    Type("txtPort1", "999999");
    Type("txtPort2", "12");
    Type("txtPort3", "013");
    Type("txtConnTimeout", "45");
    const std::string strBefore = Ini();
    Press("cmdOK");
    EXPECT_EQ(oConfig->strServerIPAddress1(), "srv1");
    EXPECT_EQ(oConfig->strServerIPAddress2(), "srv 2 ");
    EXPECT_EQ(oConfig->strServerIPAddress3(), "3");
    EXPECT_EQ(oConfig->lServerPort1(), 999999);
    EXPECT_EQ(oConfig->lServerPort2(), 12);
    EXPECT_EQ(oConfig->lServerPort3(), 13);
    EXPECT_EQ(oConfig->lServerConnectTimeout(), 45);
    EXPECT_FALSE(oConfig->bServerBlockedSocket());
    EXPECT_FALSE(Window().isVisible());
    EXPECT_EQ(Window().result(), QDialog::Accepted);
    EXPECT_EQ(Ini(), strBefore) << "the file is the business of Apply";
}

TEST_F(FrmPTNetworkConfig, KeepsTheBlockedSocketByOK) {
    NonBlock().click();
    Press("cmdOK");
    EXPECT_TRUE(oConfig->bServerBlockedSocket());
}

TEST_F(FrmPTNetworkConfig, KeepsAnEmptyBoxAsZero) {
    for (const char* name : {"txtPort1", "txtPort2", "txtPort3", "txtConnTimeout"})
        Box(name).clear();
    Press("cmdOK");
    EXPECT_EQ(oConfig->lServerPort1(), 0);
    EXPECT_EQ(oConfig->lServerPort2(), 0);
    EXPECT_EQ(oConfig->lServerPort3(), 0);
    EXPECT_EQ(oConfig->lServerConnectTimeout(), 0);
}

TEST_F(FrmPTNetworkConfig, KeepsZeroForWhatIsNoNumber) {
    Box("txtPort1").setText(QStringLiteral("12x"));
    Press("cmdOK");
    EXPECT_EQ(oConfig->lServerPort1(), 0);
}

TEST_F(FrmPTNetworkConfig, LeavesWhatNobodyEditedAsItWas) {
    const std::string strLong(120, 'h');
    oConfig->strServerIPAddress1("caf\xE9");
    oConfig->strServerIPAddress2(strLong);
    oConfig->strServerIPAddress3("a\tb");
    oConfig->lServerPort1(12345678);
    oConfig->lServerConnectTimeout(3600);
    EXPECT_EQ(Text("txtPort1"), "123456") << "a box shows what it may hold";
    Press("cmdOK");
    EXPECT_EQ(oConfig->strServerIPAddress1(), "caf\xE9");
    EXPECT_EQ(oConfig->strServerIPAddress2(), strLong);
    EXPECT_EQ(oConfig->strServerIPAddress3(), "a\tb");
    EXPECT_EQ(oConfig->lServerPort1(), 12345678);
    EXPECT_EQ(oConfig->lServerPort2(), 0);
    EXPECT_EQ(oConfig->lServerPort3(), -7);
    EXPECT_EQ(oConfig->lServerConnectTimeout(), 3600);
}

TEST_F(FrmPTNetworkConfig, DropsEverythingByCancelEscAndClose) {
    const std::vector<std::function<void()>> ways = {
        [&] { Press("cmdCancel"); },
        [&] { QTest::keyClick(Window().focusWidget(), Qt::Key_Escape); },
        [&] { Window().close(); },
    };
    for (const auto& way : ways) {
        window_.reset();
        Type("txtIP1", "other");
        Type("txtPort1", "1");
        NonBlock().click();
        way();
        EXPECT_FALSE(Window().isVisible());
        EXPECT_EQ(oConfig->strServerIPAddress1(), "10.0.0.1");
        EXPECT_EQ(oConfig->lServerPort1(), 5000);
        EXPECT_EQ(oConfig->lServerConnectTimeout(), 30);
        EXPECT_FALSE(oConfig->bServerBlockedSocket());
    }
}

TEST_F(FrmPTNetworkConfig, EnterInAFieldIsOKAndOnCancelIsCancel) {
    Type("txtPort1", "77");
    QTest::keyClick(&Box("txtPort1"), Qt::Key_Return);
    EXPECT_EQ(oConfig->lServerPort1(), 77);
    EXPECT_FALSE(Window().isVisible());
    window_.reset();
    Type("txtPort1", "78");
    auto& cancel = Named<QPushButton>(Window(), "cmdCancel");
    cancel.setFocus();
    QTest::keyClick(&cancel, Qt::Key_Return);
    EXPECT_EQ(oConfig->lServerPort1(), 77);
    EXPECT_FALSE(Window().isVisible());
}

TEST_F(FrmPTNetworkConfig, LeavesTheClientValuesAlone) {
    oConfig->strClientIPAddress1("client");
    oConfig->lClientPort1(4);
    oConfig->lClientConnectTimeout(9);
    Press("cmdOK");
    EXPECT_EQ(oConfig->strClientIPAddress1(), "client");
    EXPECT_EQ(oConfig->lClientPort1(), 4);
    EXPECT_EQ(oConfig->lClientConnectTimeout(), 9);
}

} // namespace
} // namespace brennik
