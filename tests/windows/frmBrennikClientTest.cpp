#include "shell/frmBrennikClient.h"

#include "tests/windows/WindowsWorld.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <string>
#include <vector>

namespace brennik {
namespace {

class FrmBrennikClient : public windows::WindowsTest {
  protected:
    QTreeWidgetItem* Line(int nLine) { return List().topLevelItem(nLine); }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
        MainWindow().activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&MainWindow()));
        QTest::keyClick(&MainWindow(), key, modifiers);
    }
};

TEST_F(FrmBrennikClient, HasTheVersionInItsCaption) {
    EXPECT_EQ(Caption(), "Ostrand Brennik Client v1.3.2");
    EXPECT_EQ(MainWindow().objectName().toStdString(), "frmBrennikClient");
}

TEST_F(FrmBrennikClient, HasOneMenuOfFourEntries) {
    ASSERT_EQ(MainWindow().menuBar()->actions().size(), 1);
    const auto& mnuAction = windows::Named<QMenu>(MainWindow(), "mnuAction");
    EXPECT_EQ(mnuAction.title().toStdString(), "&Action");
    std::vector<std::string> entries;
    for (const QAction* item : mnuAction.actions())
        entries.push_back(item->objectName().toStdString() + " " + item->text().toStdString() +
                          " " + item->shortcut().toString().toStdString());
    EXPECT_EQ(entries, (std::vector<std::string>{"mnuActionItem(0) &Configuration Ctrl+C",
                                                 "mnuActionItem(1) &Run Brennik Profile Ctrl+D",
                                                 "mnuActionItem(2) Clear Items in &List Ctrl+L",
                                                 "mnuActionItem(3) &Quit Ctrl+Q"}));
}

TEST_F(FrmBrennikClient, HasAListOfThreeColumnsThatTakesTheKeyboard) {
    std::vector<std::string> columns;
    for (int i = 0; i < List().columnCount(); ++i)
        columns.push_back(List().headerItem()->text(i).toStdString());
    EXPECT_EQ(columns, (std::vector<std::string>{"Date", "Download Folder", "File Name"}));
    EXPECT_EQ(List().topLevelItemCount(), 0);
    EXPECT_TRUE(List().hasFocus());
}

TEST_F(FrmBrennikClient, GivesTheListItsWidthLess100TwipsAndItsHeightLess700) {
    const std::vector<QSize> sizes = {{400, 300}, {1000, 800}, {381, 201}, {640, 480}};
    for (const QSize& size : sizes) {
        MainWindow().resize(size);
        EXPECT_EQ(List().width(), size.width() - 6);
        EXPECT_EQ(List().height(), size.height() - 46);
        EXPECT_EQ(List().y(), MainWindow().menuBar()->height());
        EXPECT_LE(List().geometry().bottom(), MainWindow().height());
    }
}

TEST_F(FrmBrennikClient, LetsItsColumnsKeepUsefulWidths) {
    const QHeaderView& header = *List().header();
    EXPECT_EQ(header.length(), List().viewport()->width()) << "from the start";
    for (const int nWidth : {320, 700, 1500}) {
        MainWindow().resize(nWidth, 300);
        EXPECT_GE(header.sectionSize(0),
                  List().fontMetrics().horizontalAdvance(QStringLiteral("28/12/2028 20:48:58")));
        EXPECT_GE(header.sectionSize(1), 60);
        EXPECT_GE(header.sectionSize(2), 60);
        EXPECT_EQ(header.length(), List().viewport()->width()) << "nothing is out of sight";
    }
    for (int i = 0; i < 100; ++i) // and beside a scroll bar
        MainWindow().AddDownloadedFile("/f", "n");
    QCoreApplication::processEvents();
    EXPECT_EQ(header.length(), List().viewport()->width());
    // What the user has made of them holds for other widths of the window.
    List().header()->resizeSection(1, 300);
    const double dShare = 300.0 / (300 + header.sectionSize(2));
    MainWindow().resize(900, 300);
    EXPECT_NEAR(double(header.sectionSize(1)) / (header.sectionSize(1) + header.sectionSize(2)),
                dShare, 0.02);
}

TEST_F(FrmBrennikClient, ListsAFileWithTheMomentOfTheListing) {
    MainWindow().AddDownloadedFile("C:\\srv\\pos\\", "readme.txt");
    host.RunFor(62 * world::kSecond);
    MainWindow().AddDownloadedFile("C:\\srv\\pos\\F\\2\\", "notes.txt");
    EXPECT_EQ(Lines(), (std::vector<std::string>{"C:\\srv\\pos\\|readme.txt",
                                                 "C:\\srv\\pos\\F\\2\\|notes.txt"}));
    EXPECT_EQ(Line(0)->text(0).toStdString(), "14/11/2026 12:00:00");
    EXPECT_EQ(Line(1)->text(0).toStdString(), "14/11/2026 12:01:02");
    EXPECT_EQ(Line(0)->data(0, Qt::UserRole).toString().toStdString(), "K1");
    EXPECT_EQ(Line(1)->data(0, Qt::UserRole).toString().toStdString(), "K2");
}

TEST_F(FrmBrennikClient, ListsNamesOfAnyBytesInOneLineEach) {
    MainWindow().AddDownloadedFile("/a\nb", "line\r\nbreak");
    MainWindow().AddDownloadedFile("<b>bold</b>", "caf\xE9 <img src=x>");
    ASSERT_EQ(List().topLevelItemCount(), 2);
    EXPECT_EQ(Line(0)->text(1).toStdString(), "/a\xE2\x90\x8A"
                                              "b");
    EXPECT_EQ(Line(0)->text(2).toStdString(), "line\xE2\x90\x8D\xE2\x90\x8A"
                                              "break");
    EXPECT_EQ(Line(1)->text(1).toStdString(), "<b>bold</b>");
    EXPECT_EQ(Line(1)->text(2).toStdString(), "caf\xEF\xBF\xBD <img src=x>");
    EXPECT_EQ(Line(1)->toolTip(2).toStdString(),
              "<p style='white-space:pre'>caf\xEF\xBF\xBD &lt;img src=x&gt;</p>");
    EXPECT_EQ(List().visualItemRect(Line(0)).height(), List().visualItemRect(Line(1)).height());
}

TEST_F(FrmBrennikClient, FollowsTheListUnlessTheUserHasScrolledBack) {
    for (int i = 0; i < 100; ++i)
        MainWindow().AddDownloadedFile("/f", std::to_string(i));
    EXPECT_FALSE(List().visualItemRect(Line(99)).intersected(List().viewport()->rect()).isEmpty());
    List().scrollToItem(Line(0));
    MainWindow().AddDownloadedFile("/f", "last");
    EXPECT_TRUE(List().viewport()->rect().contains(List().visualItemRect(Line(0)).center()));
}

TEST_F(FrmBrennikClient, ClearsTheListAndBeginsItsKeysAnew) {
    MainWindow().AddDownloadedFile("/a", "b");
    Item(2).trigger();
    EXPECT_EQ(List().topLevelItemCount(), 0);
    MainWindow().AddDownloadedFile("/c", "d");
    EXPECT_EQ(Line(0)->data(0, Qt::UserRole).toString().toStdString(), "K1");
    Key(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(List().topLevelItemCount(), 0);
}

TEST_F(FrmBrennikClient, ClosesByQuitAndByItsCloseButton) {
    Item(3).trigger();
    EXPECT_FALSE(MainWindow().isVisible());
    MainWindow().show();
    MainWindow().close();
    EXPECT_FALSE(MainWindow().isVisible());
    MainWindow().show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&MainWindow()));
    Key(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(MainWindow().isVisible());
}

TEST_F(FrmBrennikClient, OpensTheProfilesForConfiguration) {
    const auto expectProfiles = [&] {
        user.Expect("frmBrennikProfiles", [&](QWidget& profiles) {
            EXPECT_EQ(profiles.parentWidget(), &MainWindow());
            windows::Named<QPushButton>(profiles, "cmdClose").click();
        });
    };
    expectProfiles();
    Item(0).trigger();
    expectProfiles();
    List().setFocus();
    Key(Qt::Key_C, Qt::ControlModifier); // and not a copy of the line
    EXPECT_EQ(user.met, std::vector<std::string>(2, "frmBrennikProfiles"));
}

TEST_F(FrmBrennikClient, OpensItsMenuByTheKeyboard) {
    user.Expect("frmSelectProfile", [](QWidget& picker) { picker.close(); });
    Key(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(user.met, std::vector<std::string>{"frmSelectProfile"});

    auto& mnuAction = windows::Named<QMenu>(MainWindow(), "mnuAction");
    Key(Qt::Key_A, Qt::AltModifier);
    EXPECT_TRUE(windows::Eventually([&] { return mnuAction.isVisible(); }));
    MainWindow().AddDownloadedFile("/a", "b");
    QTest::keyClick(&mnuAction, Qt::Key_L);
    EXPECT_EQ(List().topLevelItemCount(), 0);
}

TEST_F(FrmBrennikClient, OpensNoStatusWindowAfterACancelledPick) {
    const TBrennikClientConfig* const before = oConfig.get();
    const std::vector<windows::ModalUser::Step> ways = {
        [](QWidget& w) { windows::Named<QPushButton>(w, "cmdCancel").click(); },
        [](QWidget& w) { w.close(); },
        [](QWidget& w) { QTest::keyClick(&w, Qt::Key_Escape); },
    };
    for (const auto& way : ways) {
        lProfileId = 7;
        user.met.clear();
        user.Expect("frmSelectProfile", [&](QWidget& picker) {
            EXPECT_EQ(lProfileId, -1) << "set before the picker opens";
            lProfileId = 5;
            way(picker);
        });
        Item(1).trigger();
        EXPECT_EQ(lProfileId, -1);
        EXPECT_EQ(oConfig.get(), before);
        EXPECT_EQ(user.met, std::vector<std::string>{"frmSelectProfile"});
    }
    EXPECT_FALSE(Ran());
}

TEST_F(FrmBrennikClient, RunsTheProfileThatWasPickedAndKeepsTheLinesOfAllRuns) {
    for (int nRun = 1; nRun <= 2; ++nRun) {
        Serve({session::Open("a" + std::to_string(nRun), 0), "C", "S"});
        user.met.clear();
        ExpectPick();
        ExpectStatus();
        ExpectBox([&](QWidget&) {
            EXPECT_TRUE(windows::Eventually([&] { return Lines().size() == size_t(nRun); }));
        });
        Item(1).trigger();
        host.RunFor(world::kMillisecond); // the last answer reaches the service of this run
        EXPECT_EQ(user.met,
                  (std::vector<std::string>{"frmSelectProfile", "frmBrennikStatus", "MessageBox"}));
    }
    EXPECT_EQ(Lines(), (std::vector<std::string>{"C:\\srv\\pos\\|a1", "C:\\srv\\pos\\|a2"}));
    EXPECT_EQ(peer.nConnections(), 2);
}

TEST_F(FrmBrennikClient, StaysWhileAWindowIsOnTopAndStartsNothingElse) {
    user.Expect("frmSelectProfile", [this](QWidget& picker) {
        MainWindow().close();
        Item(3).trigger();
        Item(1).trigger();
        Item(0).trigger();
        EXPECT_TRUE(MainWindow().isVisible());
        picker.close();
    });
    Item(1).trigger();
    EXPECT_EQ(user.met, std::vector<std::string>{"frmSelectProfile"});
    EXPECT_TRUE(MainWindow().isVisible());
    MainWindow().close();
    EXPECT_FALSE(MainWindow().isVisible());
}

} // namespace
} // namespace brennik
