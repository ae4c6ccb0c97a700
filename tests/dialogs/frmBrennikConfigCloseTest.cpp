// Closing the configuration window: when it asks, and what it drops.
#include "tests/dialogs/ConfigFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

const char* const kQuestion = "Save changes to Brennik Profile?";

class ConfigClose : public dialogs::ConfigTest {};

TEST_F(ConfigClose, ReadsSectionMinus1WhenNothingWasAdded) {
    WriteSections({{"ProfileName=One"}}, "[PROFILE_-1]\r\nProfileName=odd\r\n");
    ASSERT_EQ(oConfig->GetConfiguration("/config", 1), 0);
    Open(-1);
    EXPECT_EQ(oConfig->strProfileName(), "One");
    CloseWindow();
    EXPECT_EQ(lProfileId, -1);
    EXPECT_EQ(oConfig->strProfileName(), "odd");
    EXPECT_FALSE(bProfileSaved);
}

TEST_F(ConfigClose, ClosesWithoutAQuestionWhenClean) {
    WriteSections({{"ProfileName=Old"}});
    Click("cmdClose");
    EXPECT_FALSE(Window().isVisible());
    EXPECT_EQ(user.boxes, Strings());
}

TEST_F(ConfigClose, AsksBeforeItClosesAndSavesOnYes) {
    WriteSections({{"ProfileName=Old"}});
    Type("txtProfileName", "New");
    Answer(QMessageBox::Yes);
    ExpectBox();
    Click("cmdClose");
    EXPECT_EQ(user.boxes, (Strings{kQuestion, dialogs::kSaved}));
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "New");
    EXPECT_FALSE(Window().isVisible());
}

TEST_F(ConfigClose, AsksBeforeItClosesAndDropsOnNo) {
    WriteSections({{"ProfileName=Old"}});
    Type("txtProfileName", "New");
    Answer(QMessageBox::No);
    Click("cmdClose");
    EXPECT_EQ(user.boxes, Strings{kQuestion});
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "Old");
    EXPECT_FALSE(bProfileSaved);
    EXPECT_FALSE(Window().isVisible());
}

TEST_F(ConfigClose, ClosesAlthoughTheSaveFailed) {
    host.files.Put("/config/BrennikClient.ini", "[GENERAL]\r\nProfilecount=2147483647\r\n");
    Open(-1);
    Type("txtProfileName", "Too many");
    Answer(QMessageBox::Yes);
    ExpectBox();
    Click("cmdClose");
    EXPECT_FALSE(Window().isVisible());
}

TEST_F(ConfigClose, AsksNothingOnEscAndTheCloseButton) {
    for (const bool bEsc : {true, false}) {
        WriteSections({{"ProfileName=Old"}});
        Open(1);
        Type("txtProfileName", "New");
        oConfig->strServerIPAddress1("changed");
        if (bEsc)
            QTest::keyClick(&Window(), Qt::Key_Escape);
        else
            CloseWindow();
        EXPECT_FALSE(Window().isVisible());
        EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "Old");
        EXPECT_EQ(oConfig->strServerIPAddress1(), "") << "loaded again";
    }
    EXPECT_EQ(user.boxes, Strings());
}

} // namespace
} // namespace brennik
