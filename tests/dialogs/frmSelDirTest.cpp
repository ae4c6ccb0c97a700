#include "dialogs/frmSelDir.h"

#include "tests/dialogs/DialogChecks.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <string>
#include <vector>

namespace brennik {
namespace {

using windows::Named;
using world::Op;
using Names = std::vector<std::string>;

class FrmSelDir : public windows::WindowsTest {
  protected:
    FrmSelDir() {
        host.files.MakeFolder("/home/pos/downloads/in");
        host.files.MakeFolder("/home/pos/Archive");
        host.files.MakeFolder("/home/pos/.hidden");
        host.files.Put("/home/pos/file.txt", "");
        strSelDirPath = "C:\\home\\pos";
        strSelDirTitle = "Select Download Folder";
    }
    ~FrmSelDir() override {
        EXPECT_EQ(host.files.CurrentFolder(), "/home/user") << "the current folder stays";
        strSelDirPath.clear();
        strSelDirTitle.clear();
    }

    frmSelDir& Picker() {
        if (picker_ == nullptr)
            picker_ = dialogs::Opened<frmSelDir>();
        return *picker_;
    }
    QLineEdit& Path() { return Named<QLineEdit>(Picker(), "TxtDir"); }
    std::string Text() { return Path().text().toStdString(); }
    QListWidget& Folders() { return Named<QListWidget>(Picker(), "Dir1"); }
    QComboBox& Drives() { return Named<QComboBox>(Picker(), "Drive1"); }
    std::string Drive() { return Drives().currentText().toStdString(); }
    void Press(const char* strName) { Named<QPushButton>(Picker(), strName).click(); }

    Names Listed() {
        Names names;
        for (int i = 0; i < Folders().count(); ++i)
            names.push_back(Folders().item(i)->text().toStdString());
        return names;
    }
    QPoint PlaceOf(const char* strName) {
        const auto items = Folders().findItems(QString::fromUtf8(strName), Qt::MatchExactly);
        if (items.isEmpty())
            throw std::runtime_error(std::string("no folder ") + strName);
        Folders().scrollToItem(items.front());
        return Folders().visualItemRect(items.front()).center();
    }
    void Click(const char* strName) {
        QTest::mouseClick(Folders().viewport(), Qt::LeftButton, {}, PlaceOf(strName));
    }
    void DoubleClick(const char* strName) {
        const QPoint place = PlaceOf(strName);
        QTest::mouseClick(Folders().viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(Folders().viewport(), Qt::LeftButton, {}, place);
    }
    void ChooseDrive(int nIndex) {
        Drives().setCurrentIndex(nIndex);
        emit Drives().activated(nIndex);
    }
    void TwoDrives() {
        host.files.MakeFolder("/srv/data/in");
        host.files.SetDrives({{'C', "/"}, {'D', "/srv/data"}});
    }

    void Type(const std::string& strText) {
        Path().setFocus();
        Path().setText(QString::fromStdString(strText));
    }
    /// The box that tells of a failure, as the picker's own.
    void ExpectUnavailable() {
        ExpectBox([](QWidget& window) {
            const auto& box = dynamic_cast<QMessageBox&>(window);
            EXPECT_EQ(box.text().toStdString(), "Device unavailable");
            EXPECT_EQ(box.windowTitle().toStdString(), strSelDirTitle);
            EXPECT_EQ(box.icon(), QMessageBox::Critical);
        });
    }
    void ExpectQuestion(QMessageBox::StandardButton answer) {
        user.Expect("MessageBox", [answer](QWidget& window) {
            auto& box = dynamic_cast<QMessageBox&>(window);
            EXPECT_EQ(box.icon(), QMessageBox::Question);
            EXPECT_EQ(box.windowTitle().toStdString(), "Ostrand Brennik Client");
            box.button(answer)->click();
        });
    }
    /// Types a folder that isn't there and has it created; gives the folders asked for, in order.
    Names Created(const std::string& strText) {
        Type(strText);
        ExpectQuestion(QMessageBox::Yes);
        host.ledger.trace.clear();
        host.RecordCalls();
        Press("btOK");
        host.RecordCalls(false);
        Names folders;
        for (const std::string& strCall : host.ledger.trace) {
            if (strCall.starts_with("CreateFolder "))
                folders.push_back(strCall.substr(13));
        }
        return folders;
    }
    /// Types a folder and has it created, in vain.
    void FailToCreate(const std::string& strText) {
        Type(strText);
        ExpectQuestion(QMessageBox::Yes);
        ExpectBox([](QWidget& window) {
            const auto& box = dynamic_cast<QMessageBox&>(window);
            EXPECT_EQ(box.text().toStdString(), "Unable to create directory");
            EXPECT_EQ(box.windowTitle().toStdString(), "Ostrand Brennik Client");
            EXPECT_EQ(box.icon(), QMessageBox::Warning);
        });
        Press("btOK");
        EXPECT_EQ(strSelDirPath, "");
        EXPECT_TRUE(Picker().isVisible());
    }

    std::unique_ptr<frmSelDir> picker_;
};

// What it is made of.

TEST_F(FrmSelDir, HasItsControlsInTheirFrames) {
    EXPECT_EQ(Picker().objectName().toStdString(), "frmSelDir");
    EXPECT_EQ(Picker().windowTitle().toStdString(), "Select Download Folder");
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"TxtDir", "Path"}, {"Dir1", "Directory"}, {"Drive1", "Drive"}};
    for (const auto& [strName, strHeading] : rows) {
        const auto* frame =
            dynamic_cast<QGroupBox*>(Named<QWidget>(Picker(), strName).parentWidget());
        ASSERT_NE(frame, nullptr) << strName;
        EXPECT_EQ(frame->title().toStdString(), strHeading);
        EXPECT_EQ(Named<QWidget>(Picker(), strName).accessibleName().toStdString(), strHeading);
    }
    EXPECT_EQ(Named<QPushButton>(Picker(), "btOK").text().toStdString(), "&OK");
    EXPECT_EQ(Named<QPushButton>(Picker(), "btCancel").text().toStdString(), "&Cancel");
    EXPECT_TRUE(Named<QPushButton>(Picker(), "btOK").isDefault());
}

TEST_F(FrmSelDir, IsReadByTabInItsOrder) {
    EXPECT_EQ(dialogs::TabOrder(Picker()), (Names{"TxtDir", "Dir1", "Drive1", "btOK", "btCancel"}));
    EXPECT_EQ(Text(), "C:\\home\\pos") << "no key has chosen anything";
}

// Opening.

TEST_F(FrmSelDir, OpensAtTheStartFolder) {
    EXPECT_EQ(Text(), "C:\\home\\pos");
    EXPECT_EQ(Listed(), (Names{"..", ".hidden", "Archive", "downloads"})) << "and no file";
    EXPECT_EQ(dialogs::Entries(Drives()), Names{"C:"});
    EXPECT_EQ(Drive(), "C:");
    EXPECT_TRUE(Folders().selectedItems().isEmpty());
}

TEST_F(FrmSelDir, OpensAtTheCurrentFolderWithoutAStartFolder) {
    strSelDirPath.clear();
    host.files.MakeFolder("/home/user/mine");
    EXPECT_EQ(Text(), "C:\\home\\user");
    EXPECT_EQ(Listed(), (Names{"..", "mine"}));
}

TEST_F(FrmSelDir, ShowsEveryStartFolderInDriveForm) {
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"/home/pos", "C:\\home\\pos"},
        {"/home/pos/", "C:\\home\\pos"},
        {"C:\\home\\pos\\", "C:\\home\\pos"},
        {"c:/home/pos", "c:\\home\\pos"},
        {"C:\\", "C:\\"},
        {"C:", "C:\\"},
        {"/", "C:\\"},
        {"../pos", "C:\\home\\user\\..\\pos"},
        {"\\home\\pos", "C:\\home\\pos"},
        {"\\", "C:\\"}};
    for (const auto& [strStart, strShown] : rows) {
        strSelDirPath = strStart;
        picker_.reset();
        EXPECT_EQ(Text(), strShown) << strStart;
    }
}

TEST_F(FrmSelDir, OpensARelativeStartFolderUnderTheRootToo) {
    host.files.SetCurrentFolder("/");
    for (const char* strStart : {"home", "home/", "home\\"}) {
        strSelDirPath = strStart;
        picker_.reset();
        EXPECT_EQ(Text(), "C:\\home");
        EXPECT_EQ(Listed(), (Names{"..", "pos", "user"}));
    }
    host.files.SetCurrentFolder("/home/user");
}

TEST_F(FrmSelDir, ShowsARootWithoutAWayUp) {
    for (const char* strRoot : {"C:\\", "\\"}) {
        strSelDirPath = strRoot;
        picker_.reset();
        EXPECT_EQ(Listed().front(), "config");
    }
}

TEST_F(FrmSelDir, TellsWhenTheStartFolderCannotBeShown) {
    for (const char* strStart :
         {"C:\\none", "Q:\\", "\\\\server\\share", "C:\\home\\pos\\file.txt"}) {
        strSelDirPath = strStart;
        picker_.reset();
        ExpectUnavailable();
        EXPECT_EQ(Text(), "") << strStart;
        EXPECT_EQ(Picker().windowTitle().toStdString(), "Select Download Folder");
        EXPECT_EQ(Listed(), Names{".."}) << "the list stands on the current folder";
        EXPECT_EQ(Drive(), "C:");
        EXPECT_EQ(strSelDirPath, strStart);
    }
}

TEST_F(FrmSelDir, TellsWhenTheCurrentFolderIsGone) {
    strSelDirPath.clear();
    host.FailNext(Op::CurrentDirectory);
    ExpectUnavailable();
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(Listed(), Names{});
    Press("btCancel");
    EXPECT_FALSE(Picker().isVisible());
}

// The list of folders.

TEST_F(FrmSelDir, AClickOnAFolderCopiesItsPath) {
    Click("downloads");
    EXPECT_EQ(Text(), "C:\\home\\pos\\downloads");
    EXPECT_EQ(Listed().size(), 4U) << "the list stays where it is";
    Click("..");
    EXPECT_EQ(Text(), "C:\\home");
}

TEST_F(FrmSelDir, ADoubleClickOpensAFolder) {
    DoubleClick("downloads");
    EXPECT_EQ(Text(), "C:\\home\\pos\\downloads");
    EXPECT_EQ(Listed(), (Names{"..", "in"}));
    EXPECT_TRUE(Picker().isVisible());
    DoubleClick("..");
    DoubleClick("..");
    EXPECT_EQ(Text(), "C:\\home");
    DoubleClick("..");
    EXPECT_EQ(Text(), "C:\\");
    DoubleClick("home");
    EXPECT_EQ(Text(), "C:\\home");
}

TEST_F(FrmSelDir, KeysChooseAndEnterOpensAFolderButNeverTheWindowsButton) {
    Picker();
    Folders().setFocus();
    QTest::keyClick(&Folders(), Qt::Key_Return);
    EXPECT_EQ(Text(), "C:\\home\\pos") << "nothing is chosen yet";
    QTest::keyClick(&Folders(), Qt::Key_End);
    EXPECT_EQ(Text(), "C:\\home\\pos\\downloads");
    QTest::keyClick(&Folders(), Qt::Key_Return);
    EXPECT_EQ(Listed(), (Names{"..", "in"}));
    EXPECT_TRUE(Picker().isVisible());
    EXPECT_EQ(strSelDirPath, "C:\\home\\pos");
    QTest::keyClick(&Folders(), Qt::Key_Down);
    QTest::keyClick(&Folders(), Qt::Key_Enter);
    EXPECT_EQ(Text(), "C:\\home\\pos");
}

TEST_F(FrmSelDir, TellsWhenAFolderCannotBeOpenedAndStaysWhereItWas) {
    Picker();
    host.files.Remove("/home/pos/downloads");
    ExpectUnavailable();
    DoubleClick("downloads");
    EXPECT_EQ(Listed().size(), 4U);
    host.FailNext(Op::Find);
    ExpectUnavailable();
    DoubleClick("Archive");
    EXPECT_EQ(Listed().size(), 4U);
    DoubleClick("Archive");
    EXPECT_EQ(Listed(), Names{".."});
}

TEST_F(FrmSelDir, KeepsTheBytesOfNames) {
    host.files.MakeFolder("/home/pos/downloads/caf\xE9");
    strSelDirPath = "C:\\home\\pos\\downloads";
    Click("caf\xEF\xBF\xBD");
    EXPECT_EQ(Text(), "C:\\home\\pos\\downloads\\caf\xEF\xBF\xBD");
    Press("btOK");
    EXPECT_EQ(strSelDirPath, "C:\\home\\pos\\downloads\\caf\xE9");
    EXPECT_FALSE(Picker().isVisible());
}

TEST_F(FrmSelDir, LeavesOutNamesThatNoProfileCouldHold) {
    host.files.MakeFolder("/home/pos/downloads/in/two\nlines");
    host.files.MakeFolder("/home/pos/downloads/in/two\rlines");
    host.files.MakeFolder("/home/pos/downloads/in/\ttabbed");
    strSelDirPath = "C:\\home\\pos\\downloads\\in";
    EXPECT_EQ(Listed(), (Names{"..", "\xE2\x90\x89tabbed"}));
}

// Drives.

TEST_F(FrmSelDir, ListsTheDrivesOfTheHostAndStandsOnThatOfTheFolder) {
    TwoDrives();
    EXPECT_EQ(dialogs::Entries(Drives()), (Names{"C:", "D:"}));
    EXPECT_EQ(Drive(), "C:");
    for (const char* strStart : {"/srv/data/in", "d:\\in"}) {
        strSelDirPath = strStart;
        picker_.reset();
        EXPECT_EQ(Drive(), "D:");
    }
}

TEST_F(FrmSelDir, ADrivePointsTheListAtItsRoot) {
    TwoDrives();
    Picker();
    ChooseDrive(1);
    EXPECT_EQ(Text(), "D:\\");
    EXPECT_EQ(Listed(), Names{"in"});
    Click("in");
    EXPECT_EQ(Text(), "D:\\in");
    ChooseDrive(0);
    EXPECT_EQ(Text(), "C:\\");
    DoubleClick("srv");
    Click("data");
    EXPECT_EQ(Text(), "C:\\srv\\data");
}

TEST_F(FrmSelDir, ChoosesADriveByKey) {
    TwoDrives();
    Picker();
    QTest::keyClick(&Drives(), Qt::Key_Down);
    EXPECT_EQ(Text(), "D:\\");
    EXPECT_TRUE(Picker().isVisible());
}

TEST_F(FrmSelDir, EnterInTheDrivesIsNotOK) {
    Picker();
    Drives().setFocus();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
        QTest::keyClick(&Drives(), key);
    EXPECT_TRUE(Picker().isVisible());
    EXPECT_EQ(Picker().result(), QDialog::Rejected);
    EXPECT_EQ(Text(), "C:\\home\\pos");
}

TEST_F(FrmSelDir, GoesBackToTheDriveShownLastWhenOneCannotBeRead) {
    TwoDrives();
    host.files.SetDrives({{'C', "/"}, {'D', "/srv/data"}, {'E', "/none"}});
    Picker();
    ExpectUnavailable();
    ChooseDrive(2);
    EXPECT_EQ(Drive(), "C:");
    EXPECT_EQ(Text(), "C:\\home\\pos");
    EXPECT_EQ(Listed().size(), 4U);
    ChooseDrive(1);
    ExpectUnavailable();
    ChooseDrive(2);
    EXPECT_EQ(Drive(), "D:");
    EXPECT_EQ(Text(), "D:\\");
}

TEST_F(FrmSelDir, AFolderUnderNoDriveKeepsItsNativePath) {
    TwoDrives();
    host.files.SetDrives({{'D', "/srv/data"}});
    strSelDirPath = "/home/pos/";
    EXPECT_EQ(Text(), "/home/pos");
    EXPECT_EQ(Drives().currentIndex(), -1);
    Click("downloads");
    EXPECT_EQ(Text(), "/home/pos/downloads");
    DoubleClick("..");
    DoubleClick("..");
    EXPECT_EQ(Text(), "/");
    EXPECT_EQ(Listed().front(), "config");
    DoubleClick("srv");
    EXPECT_EQ(Text(), "/srv");
    DoubleClick("data");
    EXPECT_EQ(Text(), "D:\\") << "here begins a drive";
    EXPECT_EQ(Drive(), "D:");
}

TEST_F(FrmSelDir, WorksWithoutAnyDrive) {
    host.files.SetDrives({});
    strSelDirPath = "/home/pos";
    EXPECT_EQ(Text(), "/home/pos");
    EXPECT_EQ(Drives().count(), 0);
    Press("btOK");
    EXPECT_EQ(strSelDirPath, "/home/pos");
}

// OK.

TEST_F(FrmSelDir, TakesAFolderThatIsThere) {
    Click("downloads");
    Press("btOK");
    EXPECT_EQ(strSelDirPath, "C:\\home\\pos\\downloads");
    EXPECT_FALSE(Picker().isVisible());
    EXPECT_EQ(Picker().result(), QDialog::Accepted);
    EXPECT_EQ(strSelDirTitle, "Select Download Folder");
}

TEST_F(FrmSelDir, EnterInThePathIsOKOnce) {
    Type("C:\\home\\pos\\downloads\\in");
    QTest::keyClick(&Path(), Qt::Key_Return);
    EXPECT_EQ(strSelDirPath, "C:\\home\\pos\\downloads\\in");
    picker_.reset();
    Type("C:\\none");
    ExpectQuestion(QMessageBox::No);
    QTest::keyClick(&Path(), Qt::Key_Return);
    EXPECT_EQ(user.boxes.size(), 1U);
    EXPECT_TRUE(Picker().isVisible());
}

TEST_F(FrmSelDir, EnterOnCancelIsCancel) {
    auto& cancel = Named<QPushButton>(Picker(), "btCancel");
    cancel.setFocus();
    QTest::keyClick(&cancel, Qt::Key_Return);
    EXPECT_EQ(strSelDirPath, "");
    EXPECT_FALSE(Picker().isVisible());
}

TEST_F(FrmSelDir, TurnsATypedNativePathIntoDriveForm) {
    Type("/home/pos/downloads");
    Press("btOK");
    EXPECT_EQ(strSelDirPath, "C:\\home\\pos\\downloads");
    picker_.reset();
    TwoDrives();
    Type("/srv/data/in");
    Press("btOK");
    EXPECT_EQ(strSelDirPath, "D:\\in");
}

TEST_F(FrmSelDir, TakesAnyOtherTextAsItStands) {
    for (const char* strText : {"C:\\home\\pos\\", "c:\\home", "\\home\\pos", "..\\pos"}) {
        picker_.reset();
        Type(strText);
        Press("btOK");
        EXPECT_EQ(strSelDirPath, strText);
    }
}

TEST_F(FrmSelDir, AsksBeforeItCreatesAndNoLeavesEverything) {
    Type("C:\\home\\pos\\new");
    ExpectQuestion(QMessageBox::No);
    const Names tree = host.files.Tree();
    Press("btOK");
    EXPECT_EQ(user.boxes.back(),
              "C:\\home\\pos\\new does not exist.\nWould you like to create it?");
    EXPECT_TRUE(Picker().isVisible());
    EXPECT_EQ(Text(), "C:\\home\\pos\\new");
    EXPECT_EQ(strSelDirPath, "C:\\home\\pos");
    EXPECT_EQ(host.files.Tree(), tree);
}

TEST_F(FrmSelDir, AsksAboutAFileAsAboutNothing) {
    for (const char* strText : {"C:\\home\\pos\\file.txt", "", "Q:\\x", "\\\\server\\share"}) {
        Type(strText);
        ExpectQuestion(QMessageBox::No);
        Press("btOK");
        EXPECT_EQ(user.boxes.back(),
                  std::string(strText) + " does not exist.\nWould you like to create it?");
    }
}

TEST_F(FrmSelDir, TakesTheFolderThatItCreated) {
    EXPECT_EQ(Created("C:\\home\\pos\\new"), Names{"C:\\home\\pos\\new"});
    EXPECT_EQ(strSelDirPath, "C:\\home\\pos\\new");
    EXPECT_FALSE(Picker().isVisible());
    EXPECT_TRUE(host.files.Exists("/home/pos/new"));
}

// The walk.

TEST_F(FrmSelDir, MakesEveryFolderOnTheWayInOrder) {
    EXPECT_EQ(Created("C:\\a\\b\\c"), (Names{"C:\\a", "C:\\a\\b", "C:\\a\\b\\c"}));
    EXPECT_TRUE(host.files.Exists("/a/b/c"));
}

TEST_F(FrmSelDir, MakesTheSameFoldersWithABackslashAtTheEnd) {
    EXPECT_EQ(Created("C:\\a\\b\\c\\"), (Names{"C:\\a", "C:\\a\\b", "C:\\a\\b\\c\\"}));
    EXPECT_TRUE(host.files.Exists("/a/b/c"));
    EXPECT_EQ(strSelDirPath, "C:\\a\\b\\c\\");
}

TEST_F(FrmSelDir, MakesOneFolderWithABackslashAtTheEnd) {
    EXPECT_EQ(Created("C:\\a\\"), Names{"C:\\a\\"});
    EXPECT_TRUE(host.files.Exists("/a"));
}

TEST_F(FrmSelDir, WalksATypedNativePathToo) {
    EXPECT_EQ(Created("/a/b/c"), (Names{"C:\\a", "C:\\a\\b", "C:\\a\\b\\c"}));
    EXPECT_EQ(strSelDirPath, "C:\\a\\b\\c");
    EXPECT_EQ(user.boxes.front(), "C:\\a\\b\\c does not exist.\nWould you like to create it?");
}

TEST_F(FrmSelDir, WalksAPathWithSlashesBehindItsDrive) {
    EXPECT_EQ(Created("C:/a/b"), (Names{"C:\\a", "C:\\a\\b"}));
}

TEST_F(FrmSelDir, ARootWithABackslashInFrontEndsAtItsNextOne) {
    EXPECT_EQ(Created("\\home\\a\\b"), (Names{"\\home\\a", "\\home\\a\\b"}));
    EXPECT_TRUE(host.files.Exists("/home/a/b"));
}

TEST_F(FrmSelDir, ARootOfOneLetterEndsAtTheThirdCharacter) {
    FailToCreate("\\h\\a\\b"); // the root itself isn't made
    EXPECT_FALSE(host.files.Exists("/h"));
    host.files.MakeFolder("/h");
    EXPECT_EQ(Created("\\h\\a\\b"), (Names{"\\h\\a", "\\h\\a\\b"}));
    EXPECT_TRUE(host.files.Exists("/h/a/b"));
}

TEST_F(FrmSelDir, APathWithABackslashInFrontAndNoOtherCannotBeMade) {
    FailToCreate("\\new");
    EXPECT_FALSE(host.files.Exists("/new"));
}

TEST_F(FrmSelDir, TrimsThePartsOnTheWay) {
    FailToCreate("C:\\ a \\b"); // whose own folder has its blanks
    EXPECT_TRUE(host.files.Exists("/a"));
    EXPECT_FALSE(host.files.Exists("/ a "));
}

TEST_F(FrmSelDir, TakesTheFirstThreeCharactersAsTheRootOfAnyOtherText) {
    host.files.MakeFolder("/home/user/ab");
    EXPECT_EQ(Created("ab\\c\\d"), (Names{"ab\\c", "ab\\c\\d"}));
    EXPECT_TRUE(host.files.Exists("/home/user/ab/c/d"));
}

TEST_F(FrmSelDir, AFailureKeepsWhatWasMadeAndEmptiesThePath) {
    host.files.DenyWrites("/a/b/c");
    FailToCreate("C:\\a\\b\\c\\d");
    EXPECT_TRUE(host.files.Exists("/a/b"));
    EXPECT_FALSE(host.files.Exists("/a/b/c"));
    EXPECT_EQ(Text(), "C:\\a\\b\\c\\d");
    QTest::keyClick(&Path(), Qt::Key_Escape);
    EXPECT_EQ(strSelDirPath, "") << "Esc leaves it as it was, and that is empty now";
}

TEST_F(FrmSelDir, AFileInTheWayIsAFailure) {
    FailToCreate("C:\\home\\pos\\file.txt");
    FailToCreate("C:\\home\\pos\\file.txt\\x");
    FailToCreate("Q:\\x");
    FailToCreate("");
}

TEST_F(FrmSelDir, NothingExistsWhileTheCurrentFolderCannotBeKept) {
    Type("C:\\home\\pos");
    for (int32_t nSkip = 0; nSkip < 2; ++nSkip) {
        host.FailNext(Op::ChangeDirectory, {}, 1, nSkip);
        ExpectQuestion(QMessageBox::No);
        Press("btOK");
        EXPECT_EQ(host.files.CurrentFolder(), "/home/user");
    }
    host.FailNext(Op::CurrentDirectory);
    ExpectQuestion(QMessageBox::No);
    Press("btOK");
    EXPECT_TRUE(Picker().isVisible());
    // The way back is gone only between there and back.
    host.FailNext(Op::ChangeDirectory, {}, 1, 2);
    ExpectQuestion(QMessageBox::No);
    Press("btOK");
    host.files.SetCurrentFolder("/home/user");
    Press("btOK");
    EXPECT_FALSE(Picker().isVisible());
}

// The ways out.

TEST_F(FrmSelDir, CancelEmptiesThePath) {
    Click("downloads");
    Press("btCancel");
    EXPECT_EQ(strSelDirPath, "");
    EXPECT_FALSE(Picker().isVisible());
}

TEST_F(FrmSelDir, EscAndTheCloseButtonLeaveThePathAsItWas) {
    for (const bool bEsc : {true, false}) {
        picker_.reset();
        Click("downloads");
        if (bEsc)
            QTest::keyClick(&Folders(), Qt::Key_Escape);
        else
            Picker().close();
        EXPECT_EQ(strSelDirPath, "C:\\home\\pos");
        EXPECT_FALSE(Picker().isVisible());
    }
}

TEST_F(FrmSelDir, IsShownModally) {
    user.Expect("frmSelDir", [](QWidget& window) {
        EXPECT_TRUE(window.isModal());
        Named<QPushButton>(window, "btOK").click();
    });
    frmSelDir picker(nullptr);
    EXPECT_EQ(picker.exec(), QDialog::Accepted);
}

} // namespace
} // namespace brennik
