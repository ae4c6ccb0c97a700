#include "dialogs/MessageBoxes.h"

#include "tests/windows/WindowsWorld.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

using windows::ModalUser;

QMessageBox& Box(QWidget& window) {
    return dynamic_cast<QMessageBox&>(window);
}

TEST(MessageBoxes, ShowsPlainTextUnderTheNameOfTheSystem) {
    ModalUser user;
    user.Expect("MessageBox", [](QWidget& window) {
        EXPECT_EQ(Box(window).icon(), QMessageBox::Warning);
        EXPECT_EQ(Box(window).textFormat(), Qt::PlainText);
        EXPECT_EQ(Box(window).standardButtons(), QMessageBox::Ok);
        QTest::keyClick(&window, Qt::Key_Return);
    });
    ShowMessageBox(nullptr, QMessageBox::Warning, "<b>a</b>\r\ncaf\xE9");
    EXPECT_EQ(user.boxes.front(), "<b>a</b>\ncaf\xEF\xBF\xBD");
    EXPECT_EQ(user.titles.front(), "Ostrand Brennik Client");
}

TEST(MessageBoxes, TakesATitleOfItsOwn) {
    ModalUser user;
    for (const bool bQuestion : {false, true}) {
        user.Expect("MessageBox", [](QWidget& window) { window.close(); });
        if (bQuestion)
            EXPECT_FALSE(AskYesNo(nullptr, "x", "Title\n"));
        else
            ShowMessageBox(nullptr, QMessageBox::Critical, "x", "Title\n");
        EXPECT_EQ(user.titles.back(), "Title\xE2\x90\x8A");
    }
}

TEST(MessageBoxes, AsksWithYesAndNo) {
    ModalUser user;
    for (const QMessageBox::StandardButton button : {QMessageBox::Yes, QMessageBox::No}) {
        user.Expect("MessageBox", [&](QWidget& window) {
            EXPECT_EQ(Box(window).icon(), QMessageBox::Question);
            EXPECT_EQ(Box(window).textFormat(), Qt::PlainText);
            EXPECT_EQ(Box(window).standardButtons(), QMessageBox::Yes | QMessageBox::No);
            Box(window).button(button)->click();
        });
        EXPECT_EQ(AskYesNo(nullptr, "Really?"), button == QMessageBox::Yes);
    }
    EXPECT_EQ(user.titles.front(), "Ostrand Brennik Client");
    EXPECT_EQ(user.boxes.front(), "Really?");
}

TEST(MessageBoxes, EnterIsYesAndEscIsNo) {
    ModalUser user;
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        user.Expect("MessageBox", [&](QWidget& window) { QTest::keyClick(&window, key); });
        EXPECT_EQ(AskYesNo(nullptr, "Really?"), key == Qt::Key_Return);
    }
}

} // namespace
} // namespace brennik
