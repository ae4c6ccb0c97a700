#include "tests/dialogs/ConfigFixture.h"

#include "tests/dialogs/DialogChecks.h"

#include <QPushButton>

namespace brennik::dialogs {

void ConfigTest::WriteSections(const std::vector<std::vector<std::string>>& profiles,
                               const std::string& strMore) {
    std::string strText =
        "[GENERAL]\r\nProfilecount=" + std::to_string(profiles.size()) + "\r\n" + strMore;
    for (size_t i = 0; i < profiles.size(); ++i) {
        strText += "[PROFILE_" + std::to_string(i + 1) + "]\r\n";
        for (const std::string& strSetting : profiles[i])
            strText += strSetting + "\r\n";
    }
    host.files.Put("/config/BrennikClient.ini", strText);
}

frmBrennikConfig& ConfigTest::Open(int32_t lNumber) {
    window_.reset();
    lProfileId = lNumber;
    window_ = std::make_unique<frmBrennikConfig>(nullptr);
    window_->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    return *window_;
}

bool ConfigTest::bEnabled(const std::string& strName) {
    auto& control = The<QWidget>(strName);
    return control.isEnabledTo(control.parentWidget());
}

std::string ConfigTest::Shown(const std::string& strName) {
    auto& control = The<QWidget>(strName);
    if (const auto* list = dynamic_cast<QComboBox*>(&control))
        return list->currentText().toStdString();
    return dynamic_cast<QLineEdit&>(control).text().toStdString();
}

std::vector<std::string> ConfigTest::Items(const std::string& strList) {
    return Entries(The<QComboBox>(strList));
}

void ConfigTest::ShowTabOf(QWidget& control) {
    auto& tabs = The<QTabWidget>("TabStrip1");
    for (int i = 0; i < tabs.count(); ++i) {
        if (tabs.widget(i)->isAncestorOf(&control))
            tabs.setCurrentIndex(i);
    }
}

void ConfigTest::Click(const std::string& strName) {
    auto& button = The<QAbstractButton>(strName);
    ShowTabOf(button);
    ASSERT_TRUE(button.isEnabled()) << strName;
    button.click();
}

void ConfigTest::Check(const std::string& strName, bool bCheck) {
    if (bChecked(strName) != bCheck)
        Click(strName);
}

void ConfigTest::Pick(const std::string& strList, int nItem) {
    auto& list = The<QComboBox>(strList);
    ShowTabOf(list);
    ASSERT_TRUE(list.isEnabled()) << strList;
    ASSERT_LT(nItem, list.count()) << strList;
    while (list.currentIndex() != nItem)
        QTest::keyClick(&list, list.currentIndex() < nItem ? Qt::Key_Down : Qt::Key_Up);
}

void ConfigTest::Type(const std::string& strField, const std::string& strText) {
    auto& control = The<QWidget>(strField);
    auto* list = dynamic_cast<QComboBox*>(&control);
    QLineEdit& field = list != nullptr ? *list->lineEdit() : dynamic_cast<QLineEdit&>(control);
    ShowTabOf(control);
    ASSERT_TRUE(field.isEnabled()) << strField;
    field.setFocus();
    field.selectAll();
    if (strText.empty())
        QTest::keyClick(&field, Qt::Key_Delete);
    else
        QTest::keyClicks(&field, QString::fromStdString(strText));
}

void ConfigTest::Apply() {
    ExpectBox();
    Click("cmdApply");
}

void ConfigTest::Answer(QMessageBox::StandardButton answer) {
    user.Expect("MessageBox", [answer](QWidget& box) {
        auto& message = dynamic_cast<QMessageBox&>(box);
        EXPECT_EQ(message.icon(), QMessageBox::Question);
        EXPECT_EQ(message.standardButtons(), QMessageBox::Yes | QMessageBox::No);
        message.button(answer)->click();
    });
}

void ConfigTest::ExpectFolderPick(const std::string& strTitle, const std::string& strStart,
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

std::string ConfigTest::Stored(const std::string& strSection, const std::string& strKey) const {
    const std::string strIni = Ini();
    const size_t nSection = strIni.find("[" + strSection + "]");
    const size_t nKey = strIni.find("\n" + strKey + "=", nSection);
    if (nSection == std::string::npos || nKey == std::string::npos ||
        nKey >= strIni.find("\n[", nSection + 1))
        return "-";
    const size_t nValue = nKey + strKey.size() + 2;
    return strIni.substr(nValue, strIni.find_first_of("\r\n", nValue) - nValue);
}

} // namespace brennik::dialogs
