#include "dialogs/TextField.h"

#include "tests/windows/WindowsWorld.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

TEST(TextField, HasItsNameAndLength) {
    const TextField field("txtTid", 32);
    EXPECT_EQ(field.objectName().toStdString(), "txtTid");
    EXPECT_EQ(field.maxLength(), 32);
    EXPECT_EQ(TextField("txtScriptFileName").maxLength(), QLineEdit().maxLength());
    EXPECT_EQ(field.Bytes(), "");
}

TEST(TextField, GivesTheBytesBackThatNobodyEdited) {
    TextField field("txtTid", 4);
    for (const std::string& strBytes :
         {std::string("T1"), std::string("caf\xE9"), std::string("a\0b", 3), std::string("a\r\nb"),
          std::string("longer than the box"), std::string(" x "), std::string()}) {
        field.SetBytes(strBytes);
        EXPECT_EQ(field.Bytes(), strBytes);
    }
    EXPECT_EQ(field.text().toStdString(), "");
}

TEST(TextField, ShowsWhatItMayHold) {
    TextField field("txtTid", 4);
    field.SetBytes("longer");
    EXPECT_EQ(field.text().toStdString(), "long");
}

TEST(TextField, GivesWhatWasTypedAsUtf8) {
    TextField field("txtTid");
    field.SetBytes("caf\xE9");
    QTest::keyClicks(&field, QStringLiteral("s"));
    EXPECT_EQ(field.Bytes(), "caf\xEF\xBF\xBD"
                             "s");
    field.clear();
    EXPECT_EQ(field.Bytes(), "");
    QTest::sendKeyEvent(QTest::Press, &field, Qt::Key_Odiaeresis, QString::fromUtf8("\xC3\xB6"),
                        Qt::NoModifier);
    EXPECT_EQ(field.Bytes(), "\xC3\xB6");
}

TEST(TextField, GivesTheBytesBackWhenAnEditWasTakenBack) {
    TextField field("txtTid");
    field.SetBytes("caf\xE9");
    QTest::keyClicks(&field, QStringLiteral("s"));
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(field.Bytes(), "caf\xE9");
}

TEST(TextField, KeepsWhatIsLongerThanTheBoxUntilTheFirstEdit) {
    TextField field("txtTid", 4);
    field.SetBytes("longer");
    QTest::keyClick(&field, Qt::Key_Home);
    QTest::keyClick(&field, Qt::Key_End);
    EXPECT_EQ(field.Bytes(), "longer") << "only looked at";
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(field.Bytes(), "lon");
    QTest::keyClicks(&field, QStringLiteral("g"));
    EXPECT_EQ(field.text().toStdString(), "long");
    EXPECT_EQ(field.Bytes(), "long") << "what the user arrived at, not what was there before";
    field.SetBytes("longest");
    EXPECT_EQ(field.Bytes(), "longest");
}

TEST(TextField, FillingItIsNoEdit) {
    TextField field("txtTid");
    int nEdits = 0;
    QObject::connect(&field, &QLineEdit::textEdited, &field, [&] { ++nEdits; });
    field.SetBytes("x");
    EXPECT_EQ(nEdits, 0);
    QTest::keyClicks(&field, QStringLiteral("y"));
    EXPECT_EQ(nEdits, 1);
}

} // namespace
} // namespace brennik
