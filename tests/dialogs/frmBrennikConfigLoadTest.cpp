// Profiles that the configuration window can't show.
#include "tests/dialogs/ConfigFixture.h"
#include "tests/dialogs/FailingHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

const char* const kFilling = "Failed filling form fields from application configuration file.\n";

class ConfigLoad : public dialogs::ConfigTest {
  protected:
    /// Shows the window as the program does; it is expected to close by itself.
    void Fail(int32_t lNumber) {
        lProfileId = lNumber;
        user.Expect("MessageBox", [](QWidget& box) {
            EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::Warning);
            box.close();
        });
        frmBrennikConfig window(nullptr);
        EXPECT_EQ(window.exec(), 0);
    }
};

TEST_F(ConfigLoad, ReportsAProfileThatCannotBeLoadedAndLoadsWhatThereIs) {
    WriteSections({{"ProfileName=One", "ServerComPort=70000"}});
    oConfig->strProfileName("old");
    Fail(1);
    EXPECT_EQ(user.boxes, Strings{std::string(kFilling) +
                                  "TBrennikClientConfig.GetConfiguration() Failed - Overflow"});
    EXPECT_EQ(oConfig->strProfileName(), "One");
    EXPECT_FALSE(bProfileSaved);
}

TEST_F(ConfigLoad, FailsOnATextThatAFixedListDoesNotHold) {
    const char* platforms = "[PLATFORMS]\r\n1=VX520,E1:E2,POS\r\n";
    for (const Strings& settings : std::vector<Strings>{{"PlatformName=VX999", "EpromID=E1"},
                                                        {"PlatformName=", "EpromID="},
                                                        {"PlatformName=VX520", "EpromID=E9"},
                                                        {"PlatformName=VX520", "EpromID="},
                                                        {"PlatformName=vx520", "EpromID=E1"}}) {
        user.boxes.clear();
        WriteSections({settings}, platforms);
        Fail(1);
        EXPECT_EQ(user.boxes, Strings{std::string(kFilling) + "Invalid procedure call"});
    }
    for (const char* mode : {"Mode=4", "Mode=-1"}) {
        user.boxes.clear();
        WriteSections({{"PlatformName=VX520", "EpromID=E1", mode}}, platforms);
        Fail(1);
        EXPECT_EQ(user.boxes, Strings{std::string(kFilling) + "Invalid procedure call"}) << mode;
    }
    user.boxes.clear();
    oConfig = std::make_unique<TBrennikClientConfig>();
    WriteSections({{"PlatformName=VX520"}});
    Fail(1);
    EXPECT_EQ(user.boxes.size(), 1U) << "a list without any entry holds no text either";
}

// The file drops blanks around a value, and a list keeps those of a name in quotes.
TEST_F(ConfigLoad, FailsOnANameThatWasSavedWithABlankInFront) {
    WriteSections({{"PlatformName=VX520", "EpromID=E1"}},
                  "[PLATFORMS]\r\n1=VX520,E1:\" E2\",POS\r\n");
    Pick("cboEprom", 1);
    EXPECT_EQ(Shown("cboEprom"), " E2");
    Apply();
    EXPECT_TRUE(IniHolds("EpromID= E2"));
    CloseWindow();
    Fail(1);
    EXPECT_EQ(user.boxes,
              (Strings{dialogs::kSaved, std::string(kFilling) + "Invalid procedure call"}));
    EXPECT_EQ(oConfig->strEpromID(), "E2");
}

TEST_F(ConfigLoad, FailsWithoutTheFolderOfTheProgram) {
    dialogs::ProcessesWithoutFolder processes(host);
    Host broken = world::Swapped(host.TheHost(), processes);
    const ScopedHost scoped(broken);
    Fail(1);
    EXPECT_EQ(user.boxes, Strings{std::string(kFilling) + "Path not found"});
}

TEST_F(ConfigLoad, ReloadsTheProfileWhenItCouldNotBeShown) {
    WriteSections({{"ProfileName=One", "Mode=9"}});
    lProfileId = 1;
    user.Expect("MessageBox", [](QWidget& box) {
        oConfig->strProfileName("changed meanwhile");
        box.close();
    });
    frmBrennikConfig window(nullptr);
    EXPECT_EQ(window.exec(), 0);
    EXPECT_EQ(oConfig->strProfileName(), "One");
    EXPECT_FALSE(window.isVisible());
}

} // namespace
} // namespace brennik
