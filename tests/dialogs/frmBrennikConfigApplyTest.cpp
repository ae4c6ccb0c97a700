// Apply of the configuration window: what it makes of a new profile, what it tells, and the pointer
// meanwhile.
#include "tests/dialogs/ConfigFixture.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;

/// Notes which shapes the pointer has at the writes.
class PointerAtWrites : public ProfileStrings {
  public:
    explicit PointerAtWrites(ProfileStrings& strings) : strings_(strings) {}

    std::string GetPrivateProfileString(const std::string& strSection, const std::string& strKey,
                                        const std::string& strDefault, int32_t lBufferSize,
                                        const std::string& strPath) override {
        return strings_.GetPrivateProfileString(strSection, strKey, strDefault, lBufferSize,
                                                strPath);
    }
    int32_t WritePrivateProfileString(const std::string& strSection, const std::string& strKey,
                                      const std::string& strValue,
                                      const std::string& strPath) override {
        const QCursor* pointer = QApplication::overrideCursor();
        shapes.insert(pointer == nullptr ? Qt::BlankCursor : pointer->shape());
        return strings_.WritePrivateProfileString(strSection, strKey, strValue, strPath);
    }

    std::set<Qt::CursorShape> shapes;

  private:
    ProfileStrings& strings_;
};

class ConfigApply : public dialogs::ConfigTest {};

TEST_F(ConfigApply, AddsAProfileAndSavesItAgainUnderNumber0) {
    WriteSections({{"ProfileName=One"}, {}, {}});
    Open(-1);
    Type("txtProfileName", "Four");
    EXPECT_EQ(lProfileId, -1);
    Apply();
    EXPECT_EQ(user.boxes, Strings{dialogs::kSaved});
    EXPECT_EQ(lProfileId, 0) << "and not 4";
    EXPECT_TRUE(bProfileSaved);
    EXPECT_FALSE(bDirty());
    EXPECT_EQ(Stored("GENERAL", "Profilecount"), "4");
    EXPECT_EQ(Stored("PROFILE_4", "ProfileName"), "Four");
    EXPECT_EQ(Stored("PROFILE_4", "LoggingEnabled"), "TRUE");
    EXPECT_EQ(Stored("PROFILE_0", "ProfileName"), "-");
    Type("txtProfileName", "Again");
    Apply();
    EXPECT_EQ(lProfileId, 0);
    EXPECT_EQ(Stored("GENERAL", "Profilecount"), "4");
    EXPECT_EQ(Stored("PROFILE_4", "ProfileName"), "Four");
    EXPECT_EQ(Stored("PROFILE_0", "ProfileName"), "Again");
    CloseWindow();
    EXPECT_EQ(oConfig->strProfileName(), "Again");
}

TEST_F(ConfigApply, LeavesNeutralValuesBehindAfterAddingOnce) {
    WriteSections({{"ProfileName=One"}});
    Open(-1);
    Type("txtProfileName", "Two");
    Apply();
    CloseWindow();
    EXPECT_EQ(oConfig->strProfileName(), "") << "section PROFILE_0 was read";
    EXPECT_EQ(oConfig->lDownloadType(), 1);
}

TEST_F(ConfigApply, TakesWhatTheObjectHoldsIntoANewProfile) {
    WriteSections({{"ServerIPAddress1=10.9.9.9", "TmsAppFolder=old"}});
    ASSERT_EQ(oConfig->GetConfiguration("/config", 1), 0);
    Open(-1);
    Type("txtProfileName", "Two");
    Apply();
    EXPECT_EQ(Stored("PROFILE_2", "ServerIPAddress1"), "10.9.9.9");
    EXPECT_EQ(Stored("PROFILE_2", "TmsAppFolder"), "old");
}

TEST_F(ConfigApply, CreatesTheFileForTheFirstProfile) {
    host.files.Remove("/config/BrennikClient.ini");
    host.files.MakeFolder("/config");
    Open(-1);
    Type("txtProfileName", "First");
    Apply();
    EXPECT_EQ(Stored("GENERAL", "Profilecount"), "1");
    EXPECT_EQ(Stored("PROFILE_1", "ProfileName"), "First");
}

TEST_F(ConfigApply, TellsAFailedSaveAndStaysDirty) {
    WriteSections({{}});
    host.files.Put("/config/BrennikClient.ini", "[GENERAL]\r\nProfilecount=2147483647\r\n");
    const std::string strBefore = Ini();
    Open(-1);
    Type("txtProfileName", "Too many");
    user.Expect("MessageBox", [](QWidget& box) {
        EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::Warning);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::ArrowCursor);
        box.close();
    });
    Click("cmdApply");
    EXPECT_EQ(user.boxes, Strings{"Failed saving application configuration.\n"
                                  "TBrennikClientConfig.SaveConfiguration() Failed - Overflow"});
    EXPECT_TRUE(bDirty());
    EXPECT_FALSE(bProfileSaved);
    EXPECT_EQ(lProfileId, -1);
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

// The numbers that the store returns are the only trace: meant.
TEST_F(ConfigApply, CallsASaveASuccessAlthoughNothingCanBeWritten) {
    WriteSections({{"ProfileName=Old"}});
    const std::string strBefore = Ini();
    Type("txtProfileName", "New");
    host.files.DenyWrites("/config/BrennikClient.ini");
    Apply();
    EXPECT_EQ(user.boxes, Strings{dialogs::kSaved});
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_TRUE(bProfileSaved);
    EXPECT_FALSE(bDirty());
    ASSERT_FALSE(host.profileStrings.writes.empty());
    EXPECT_FALSE(host.profileStrings.writes.front().bSucceeded);
    EXPECT_EQ(host.profileStrings.writes.front().strKey, "ProfileName");
}

TEST_F(ConfigApply, ShowsTheHourglassWhileItSavesAndAnArrowOverTheBox) {
    WriteSections({{}});
    Type("txtProfileName", "New");
    PointerAtWrites profileStrings(host.profileStrings);
    Host watched = world::Swapped(host.TheHost(), profileStrings);
    const ScopedHost scoped(watched);
    Qt::CursorShape overBox = Qt::BlankCursor;
    ExpectBox([&](QWidget& box) {
        overBox = QApplication::overrideCursor()->shape();
        EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::Information);
    });
    Click("cmdApply");
    EXPECT_EQ(profileStrings.shapes, std::set<Qt::CursorShape>{Qt::WaitCursor});
    EXPECT_EQ(overBox, Qt::ArrowCursor);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

} // namespace
} // namespace brennik
