#include "dialogs/frmBrennikProfiles.h"

#include "dialogs/frmBrennikConfig.h"
#include "tests/dialogs/FailingHost.h"
#include "tests/windows/WindowsWorld.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <string>
#include <vector>

namespace brennik {
namespace {

using Strings = std::vector<std::string>;
using windows::Named;

class FrmBrennikProfiles : public windows::WindowsTest {
  protected:
    FrmBrennikProfiles() {
        WriteProfiles({{"ProfileName=One"}, {"ProfileName=Two"}, {"ProfileName=Three"}});
    }

    frmBrennikProfiles& Window() {
        if (window_ == nullptr) {
            window_ = std::make_unique<frmBrennikProfiles>(nullptr);
            window_->show();
            EXPECT_TRUE(QTest::qWaitForWindowActive(window_.get()));
        }
        return *window_;
    }
    QListWidget& Profiles() { return Named<QListWidget>(Window(), "lstProfiles"); }
    QPushButton& Button(const char* strName) { return Named<QPushButton>(Window(), strName); }
    Strings Shown() {
        Strings names;
        for (int i = 0; i < Profiles().count(); ++i)
            names.push_back(Profiles().item(i)->text().toStdString());
        return names;
    }

    /// Profiles of a platform that the file knows, each with its settings.
    void WriteProfiles(const std::vector<Strings>& profiles) {
        WindowsTest::WriteProfiles(profiles, "[PLATFORMS]\r\n1=VX520,:,:\r\n");
    }

    /// The user types a name in the editor and applies it, or only leaves.
    void ExpectEdit(
        int32_t lNumber, const std::string& strName, bool bApply = true,
        const std::function<void()>& onClosing = [] {}) {
        user.Expect("frmBrennikConfig", [=](QWidget& editor) {
            EXPECT_EQ(lProfileId, lNumber);
            auto& txtProfileName = Named<QLineEdit>(editor, "txtProfileName");
            txtProfileName.selectAll();
            QTest::keyClicks(&txtProfileName, QString::fromStdString(strName));
            // Not in here, where the user could not meet the box that opens.
            QTimer::singleShot(0, &editor, [&editor, bApply, onClosing] {
                if (bApply)
                    Named<QPushButton>(editor, "cmdApply").click();
                onClosing();
                editor.close();
            });
        });
        if (bApply)
            ExpectBox();
    }

    std::unique_ptr<frmBrennikProfiles> window_;
};

TEST_F(FrmBrennikProfiles, HasItsCaptionFrameAndButtons) {
    EXPECT_EQ(Window().windowTitle().toStdString(), "Ostrand Brennik Profiles");
    const auto* frame = dynamic_cast<QGroupBox*>(Profiles().parentWidget());
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->title().toStdString(), "Brennik Profiles");
    EXPECT_EQ(Button("cmdAdd").text().toStdString(), "&Add");
    EXPECT_EQ(Button("cmdModify").text().toStdString(), "&Modify");
    EXPECT_EQ(Button("cmdDelete").text().toStdString(), "&Delete");
    EXPECT_EQ(Button("cmdClose").text().toStdString(), "&Close");
}

TEST_F(FrmBrennikProfiles, IsReadByTabInItsOrder) {
    Strings names;
    for (int i = 0; i < 5; ++i) {
        names.push_back(Window().focusWidget()->objectName().toStdString());
        QTest::keyClick(Window().focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(names, (Strings{"lstProfiles", "cmdAdd", "cmdModify", "cmdDelete", "cmdClose"}));
}

TEST_F(FrmBrennikProfiles, ListsTheNamesInOrderWithTheFirstSelected) {
    WriteProfiles({{"ProfileName=Zebra"}, {}, {"ProfileName=caf\xE9"}});
    EXPECT_EQ(Shown(), (Strings{"Zebra", "", "caf\xEF\xBF\xBD"}));
    EXPECT_EQ(Profiles().currentRow(), 0);
    for (const char* name : {"cmdAdd", "cmdModify", "cmdDelete", "cmdClose"})
        EXPECT_TRUE(Button(name).isEnabled()) << name;
}

TEST_F(FrmBrennikProfiles, OffersOnlyToAddWithoutProfiles) {
    const auto expectEmpty = [&] {
        window_.reset();
        EXPECT_EQ(Shown(), Strings());
        EXPECT_TRUE(Button("cmdAdd").isEnabled());
        EXPECT_FALSE(Button("cmdModify").isEnabled());
        EXPECT_FALSE(Button("cmdDelete").isEnabled());
    };
    host.files.Remove("/config/BrennikClient.ini");
    expectEmpty();
    host.files.Put("/config/BrennikClient.ini", "[GENERAL]\r\nProfilecount=0\r\n");
    expectEmpty();
    host.files.Put("/config/BrennikClient.ini", "[GENERAL]\r\nProfilecount=-1\r\n");
    expectEmpty();
}

TEST_F(FrmBrennikProfiles, EditsTheSelectedProfileByItsPlace) {
    WriteProfiles({{"ProfileName=One"}, {}, {"ProfileName=Three"}});
    Profiles().setCurrentRow(1);
    ExpectEdit(2, "Two");
    Button("cmdModify").click();
    EXPECT_EQ(Shown(), (Strings{"One", "Two", "Three"}));
    EXPECT_EQ(Profiles().currentRow(), 0) << "back on the first";
    EXPECT_EQ(user.met, (Strings{"frmBrennikConfig", "MessageBox"}));
}

TEST_F(FrmBrennikProfiles, OpensAProfileByEnterAndByADoubleClick) {
    Profiles().setCurrentRow(2);
    ExpectEdit(3, "x", false);
    QTest::keyClick(&Profiles(), Qt::Key_Return);
    Profiles().setCurrentRow(0);
    ExpectEdit(2, "x", false);
    const QPoint second = Profiles().visualItemRect(Profiles().item(1)).center();
    QTest::mouseClick(Profiles().viewport(), Qt::LeftButton, {}, second);
    QTest::mouseDClick(Profiles().viewport(), Qt::LeftButton, {}, second);
    EXPECT_EQ(user.met, Strings(2, "frmBrennikConfig"));
}

TEST_F(FrmBrennikProfiles, AddsAProfileAndSelectsTheFirst) {
    Profiles().setCurrentRow(2);
    ExpectEdit(-1, "Four");
    Button("cmdAdd").click();
    EXPECT_EQ(Shown(), (Strings{"One", "Two", "Three", "Four"}));
    EXPECT_EQ(Profiles().currentRow(), 0);
}

TEST_F(FrmBrennikProfiles, AddsTheFirstProfileOfAll) {
    host.files.Put("/config/BrennikClient.ini", "");
    ExpectEdit(-1, "First");
    Button("cmdAdd").click();
    EXPECT_EQ(Shown(), Strings{"First"});
    EXPECT_TRUE(Button("cmdModify").isEnabled());
    EXPECT_TRUE(Button("cmdDelete").isEnabled());
}

TEST_F(FrmBrennikProfiles, StaysAsItIsWithoutASave) {
    Profiles().setCurrentRow(1);
    bProfileSaved = true; // of an earlier save
    ExpectEdit(2, "Changed", false);
    Button("cmdModify").click();
    ExpectEdit(-1, "New", false);
    Button("cmdAdd").click();
    EXPECT_EQ(Shown(), (Strings{"One", "Two", "Three"}));
    EXPECT_EQ(Profiles().currentRow(), 1) << "the list wasn't filled anew";
}

TEST_F(FrmBrennikProfiles, StaysAsItIsWhenAProfileCannotBeLoaded) {
    WriteProfiles({{"ProfileName=One"}, {"ServerComPort=70000"}});
    Profiles().setCurrentRow(1);
    bProfileSaved = true;
    ExpectBox();
    Button("cmdModify").click();
    EXPECT_EQ(Profiles().currentRow(), 1);
    EXPECT_FALSE(bProfileSaved);
}

TEST_F(FrmBrennikProfiles, DeletesNothing) {
    const std::string strBefore = Ini();
    Profiles().setCurrentRow(1);
    ExpectBox([](QWidget& box) {
        EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::Information);
    });
    Button("cmdDelete").click();
    EXPECT_EQ(user.boxes, Strings{"to do"});
    EXPECT_EQ(Ini(), strBefore);
    EXPECT_EQ(Shown(), (Strings{"One", "Two", "Three"}));
    EXPECT_EQ(Profiles().currentRow(), 1);
}

TEST_F(FrmBrennikProfiles, OpensEmptyWithoutTheFolderOfTheProgram) {
    dialogs::ProcessesWithoutFolder processes(host);
    Host broken = world::Swapped(host.TheHost(), processes);
    const ScopedHost scoped(broken);
    EXPECT_EQ(Shown(), Strings());
    EXPECT_EQ(user.met, Strings());
    EXPECT_TRUE(Button("cmdAdd").isEnabled());
}

TEST_F(FrmBrennikProfiles, EndsAnEditQuietlyWhenTheListCannotBeFilledAnew) {
    dialogs::ProcessesWithoutFolder processes(host);
    processes.bGone = false;
    Host breaking = world::Swapped(host.TheHost(), processes);
    const ScopedHost scoped(breaking);
    for (const auto& [strButton, lNumber] :
         std::vector<std::pair<const char*, int32_t>>{{"cmdModify", 1}, {"cmdAdd", -1}}) {
        processes.bGone = false;
        window_.reset();
        ExpectEdit(lNumber, "Changed", true, [&] { processes.bGone = true; });
        Button(strButton).click();
        EXPECT_EQ(Shown(), Strings()) << strButton;
        EXPECT_FALSE(Button("cmdModify").isEnabled()) << "there is nothing to modify";
        EXPECT_TRUE(Window().isVisible());
    }
    EXPECT_EQ(user.boxes.size(), 2U) << "those of the two saves alone";
}

TEST_F(FrmBrennikProfiles, ShowsTheNamesBeforeOneThatCannotBeRead) {
    // The count is read, then name by name.
    host.FailNext(world::Op::ReadProfileString, {}, 1, 2);
    EXPECT_EQ(Shown(), (Strings{"One", "", "Three"}));
    window_.reset();
    host.FailNext(world::Op::ReadProfileString);
    EXPECT_EQ(Shown(), Strings());
    EXPECT_EQ(user.met, Strings());
}

TEST_F(FrmBrennikProfiles, ClosesByItsButtonAndByEsc) {
    Button("cmdClose").click();
    EXPECT_FALSE(Window().isVisible());
    window_.reset();
    QTest::keyClick(&Profiles(), Qt::Key_Escape);
    EXPECT_FALSE(Window().isVisible());
}

} // namespace
} // namespace brennik
