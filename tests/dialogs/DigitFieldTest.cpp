#include "dialogs/DigitField.h"

#include "tests/windows/WindowsWorld.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QInputMethodEvent>
#include <string>

namespace brennik {
namespace {

std::string Text(const QLineEdit& field) {
    return field.text().toStdString();
}

TEST(DigitField, TakesDigitsOneByOne) {
    DigitField field("txtPort1", 6);
    QTest::keyClicks(&field, QStringLiteral("a1 2-3.x4"));
    EXPECT_EQ(Text(field), "1234");
    QTest::keyClicks(&field, QStringLiteral("5678"));
    EXPECT_EQ(Text(field), "123456") << "as many as the box holds";
}

TEST(DigitField, TakesNoDigitsOfOtherScripts) {
    DigitField field("txtPort1");
    for (const char* strDigit : {"\xD9\xA1", "\xEF\xBC\x91", "\xC2\xB2"})
        QTest::sendKeyEvent(QTest::Press, &field, Qt::Key_unknown, QString::fromUtf8(strDigit),
                            Qt::NoModifier);
    EXPECT_EQ(Text(field), "");
}

TEST(DigitField, TakesTheDigitsOfSeveralCharactersAtOnce) {
    DigitField field("txtPort1");
    QTest::sendKeyEvent(QTest::Press, &field, Qt::Key_unknown, QStringLiteral("1a2"),
                        Qt::NoModifier);
    EXPECT_EQ(Text(field), "12");
    QTest::sendKeyEvent(QTest::Press, &field, Qt::Key_A, QStringLiteral("a"), Qt::AltModifier);
    EXPECT_EQ(Text(field), "12");
}

TEST(DigitField, TakesTheDigitsOfAnInputMethod) {
    DigitField field("txtPort1");
    QInputMethodEvent event;
    event.setCommitString(QStringLiteral("x7\u00E98"));
    QCoreApplication::sendEvent(&field, &event);
    EXPECT_EQ(Text(field), "78");
}

TEST(DigitField, KeepsTheKeysThatEdit) {
    DigitField field("txtPort1");
    field.SetBytes("1234");
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(Text(field), "123");
    QTest::keyClick(&field, Qt::Key_Home);
    QTest::keyClick(&field, Qt::Key_Right);
    QTest::keyClick(&field, Qt::Key_Delete);
    EXPECT_EQ(Text(field), "13");
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_9);
    EXPECT_EQ(Text(field), "9");
    QTest::keyClick(&field, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Text(field), "13");
}

TEST(DigitField, TakesWhatIsSetOrPastedAsItStands) {
    DigitField field("txtPort1");
    field.SetBytes("-7x");
    EXPECT_EQ(Text(field), "-7x");
    EXPECT_EQ(field.Bytes(), "-7x");
    QApplication::clipboard()->setText(QStringLiteral("a1"));
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Text(field), "a1");
}

TEST(DigitField, TellsOfWhatWasTypedAndOfNothingElse) {
    DigitField field("txtPort1");
    int nEdits = 0;
    QObject::connect(&field, &QLineEdit::textEdited, &field, [&] { ++nEdits; });
    field.SetBytes("1");
    QTest::keyClicks(&field, QStringLiteral("xyz"));
    EXPECT_EQ(nEdits, 0);
    QTest::keyClicks(&field, QStringLiteral("23"));
    EXPECT_EQ(nEdits, 2);
}

} // namespace
} // namespace brennik
