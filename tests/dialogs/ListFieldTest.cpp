#include "dialogs/ListField.h"

#include "platform/RuntimeFailure.h"
#include "tests/dialogs/DialogChecks.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <string>
#include <vector>

namespace brennik {
namespace {

using Names = std::vector<std::string>;

class ListFieldTest : public testing::Test {
  protected:
    ListFieldTest() {
        for (ListField* list : {&fixed, &typed}) {
            list->AddItem("one");
            list->AddItem("caf\xE9");
            list->AddItem("caf\xE8");
        }
    }

    ListField fixed{"cboFixed", ListKind::Fixed};
    ListField typed{"cboTyped", ListKind::Typed};
};

TEST_F(ListFieldTest, HasItsNameAndKind) {
    EXPECT_EQ(fixed.objectName().toStdString(), "cboFixed");
    EXPECT_FALSE(fixed.isEditable());
    EXPECT_TRUE(typed.isEditable());
    EXPECT_EQ(dialogs::Entries(fixed), (Names{"one", "caf\xEF\xBF\xBD", "caf\xEF\xBF\xBD"}));
}

TEST_F(ListFieldTest, ChoosesNothingByItself) {
    for (ListField* list : {&fixed, &typed}) {
        EXPECT_EQ(list->currentIndex(), -1);
        EXPECT_EQ(list->Bytes(), "");
        list->ChooseFirst();
        EXPECT_EQ(list->Bytes(), "one");
        list->AddItem("more");
        EXPECT_EQ(list->Bytes(), "one");
    }
    ListField empty("cboEmpty", ListKind::Fixed);
    empty.ChooseFirst();
    EXPECT_EQ(empty.currentIndex(), -1);
}

TEST_F(ListFieldTest, GivesTheBytesOfTheChosenEntry) {
    for (ListField* list : {&fixed, &typed}) {
        list->SetBytes("caf\xE8");
        EXPECT_EQ(list->currentIndex(), 2);
        EXPECT_EQ(list->Bytes(), "caf\xE8");
        list->SetBytes("caf\xE9");
        EXPECT_EQ(list->currentIndex(), 1);
        EXPECT_EQ(list->Bytes(), "caf\xE9");
    }
}

TEST_F(ListFieldTest, AFixedListRefusesWhatItDoesNotHoldAndKeepsItsChoice) {
    fixed.SetBytes("one");
    for (const char* strText : {"two", "ONE", "", "one "}) {
        try {
            fixed.SetBytes(strText);
            FAIL() << strText;
        } catch (const RuntimeFailure& failure) {
            EXPECT_EQ(failure.Kind(), FailureKind::InvalidProcedureCall);
        }
        EXPECT_EQ(fixed.Bytes(), "one");
    }
}

TEST_F(ListFieldTest, AFixedListWithoutEntriesTakesTheEmptyTextAlone) {
    fixed.Clear();
    EXPECT_NO_THROW(fixed.SetBytes(""));
    EXPECT_THROW(fixed.SetBytes("one"), RuntimeFailure);
    EXPECT_EQ(fixed.Bytes(), "");
}

TEST_F(ListFieldTest, ATypedListTakesAnyText) {
    for (const char* strText : {"two", "", "x\xFFy", "ONE"}) {
        typed.SetBytes(strText);
        EXPECT_EQ(typed.Bytes(), strText);
    }
    QTest::keyClicks(&typed, QStringLiteral("!"));
    EXPECT_EQ(typed.Bytes(), "ONE!");
}

TEST_F(ListFieldTest, GivesWhatWasTypedAlthoughAnEntryBeginsSo) {
    typed.SetBytes("");
    QTest::keyClicks(&typed, QStringLiteral("on"));
    EXPECT_EQ(typed.Bytes(), "on");
    QTest::keyClick(&typed, Qt::Key_Return);
    EXPECT_EQ(typed.Bytes(), "on");
    EXPECT_EQ(typed.count(), 3) << "nothing is added to the list";
}

TEST_F(ListFieldTest, AnEditedEntryIsWhatItShows) {
    typed.SetBytes("one");
    QTest::keyClick(typed.lineEdit(), Qt::Key_End);
    QTest::keyClicks(&typed, QStringLiteral("s"));
    EXPECT_EQ(typed.Bytes(), "ones");
}

TEST_F(ListFieldTest, ClearsItsEntriesAndItsText) {
    typed.SetBytes("caf\xEA");
    for (ListField* list : {&fixed, &typed}) {
        list->Clear();
        EXPECT_EQ(list->count(), 0);
        EXPECT_EQ(list->Bytes(), "");
    }
}

TEST_F(ListFieldTest, SignalsWhatTheUserDoesAndNothingElse) {
    int nActivated = 0;
    int nEdited = 0;
    QObject::connect(&fixed, &QComboBox::activated, &fixed, [&] { ++nActivated; });
    QObject::connect(typed.lineEdit(), &QLineEdit::textEdited, &typed, [&] { ++nEdited; });
    fixed.ChooseFirst();
    fixed.SetBytes("caf\xE9");
    typed.SetBytes("free");
    typed.Clear();
    EXPECT_EQ(nActivated, 0);
    EXPECT_EQ(nEdited, 0);
    QTest::keyClick(&fixed, Qt::Key_Down);
    QTest::keyClicks(&typed, QStringLiteral("x"));
    EXPECT_EQ(nActivated, 1);
    EXPECT_EQ(nEdited, 1);
}

} // namespace
} // namespace brennik
