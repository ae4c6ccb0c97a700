// Whole runs from the menu to the closing box, with the engine behind the status window.
#include "tests/session/Contents.h"
#include "tests/windows/WindowsWorld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QProgressBar>
#include <set>
#include <string>
#include <vector>

namespace brennik {
namespace {

using session::Open;
using session::Write;
using windows::Eventually;
using windows::Named;

const std::string kCaption = "Ostrand Brennik Client v1.3.2";
const std::string kSuccess = "Communications with Brennik Server completed successfully";
const std::string kFailure = "Communications with Brennik Server failed.\n";

class RunInWindows : public windows::WindowsTest {
  protected:
    RunInWindows() {
        Serve({Open("readme.txt", 6), Write("abcdef"), "C", Open("b.bin", 3), Write("xyz"), "C",
               "S"});
    }

    QWidget& Status() { return *status_; }
    std::string Field(int nIndex) {
        return Named<QLineEdit>(Status(), ("txtBrennik(" + std::to_string(nIndex) + ")").c_str())
            .text()
            .toStdString();
    }
    QTimer& tmrUpdate() { return Named<QTimer>(Status(), "tmrUpdate"); }
    void Update() { QMetaObject::invokeMethod(&tmrUpdate(), "timeout"); }

    /// A run of the first profile; onBox looks at the closing box before it is closed.
    void Run(const windows::ModalUser::Step& onBox = {}) {
        ExpectPick();
        ExpectStatus([this](QWidget& status) {
            status_ = &status;
            QObject::connect(&status, &QObject::destroyed, [this] { status_ = nullptr; });
        });
        ExpectBox(onBox);
        Item(1).trigger();
        host.RunFor(world::kMillisecond); // the last answer reaches the service of this run
    }

    QWidget* status_ = nullptr;
};

TEST_F(RunInWindows, ReportsASuccessInOneBox) {
    Run([](QWidget& box) {
        const auto& message = dynamic_cast<QMessageBox&>(box);
        EXPECT_EQ(message.icon(), QMessageBox::Information);
        EXPECT_EQ(message.textFormat(), Qt::PlainText);
    });
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
    EXPECT_EQ(user.titles, std::vector<std::string>{"Ostrand Brennik Client"});
    EXPECT_EQ(host.files.Get("/srv/pos/readme.txt"), "abcdef");
    EXPECT_EQ(Log()[1], "INFO   : Brennik Profile=1");
    EXPECT_EQ(status_, nullptr) << "the window is unloaded";
}

TEST_F(RunInWindows, ReportsAFailureWithItsTextInOneBox) {
    Serve({"U"});
    Run([](QWidget& box) {
        const auto& message = dynamic_cast<QMessageBox&>(box);
        EXPECT_EQ(message.icon(), QMessageBox::Warning);
        EXPECT_EQ(message.textFormat(), Qt::PlainText);
    });
    EXPECT_EQ(user.boxes, std::vector<std::string>{kFailure + "Brennik download failed."});
    EXPECT_EQ(user.titles, std::vector<std::string>{"Ostrand Brennik Client"});
}

TEST_F(RunInWindows, RunsTheProfileThatWasPickedUnderItsNumber) {
    WriteProfiles({{}, {}});
    ExpectPick([](QWidget& picker) { Named<QListWidget>(picker, "lstProfile").setCurrentRow(1); });
    ExpectStatus();
    ExpectBox();
    Item(1).trigger();
    EXPECT_EQ(Log()[1], "INFO   : Brennik Profile=2");
}

TEST_F(RunInWindows, UsesANewEngineEachTime) {
    Run();
    const TBrennikProtocol* const first = oProtocol.get();
    EXPECT_EQ(first->lNumFilesDownloaded(), 2);
    Serve({"S"});
    TBrennikProtocol* during = nullptr;
    onPump = [&](int) { during = oProtocol.get(); };
    const std::unique_ptr<TBrennikProtocol> kept = std::move(oProtocol);
    Run();
    EXPECT_NE(during, kept.get());
    EXPECT_EQ(oProtocol->lNumFilesDownloaded(), 0);
}

TEST_F(RunInWindows, UpdatesEvery100MillisecondsFromTheStartOfTheRun) {
    bool bSeen = false;
    onPump = [&](int) {
        EXPECT_EQ(tmrUpdate().interval(), 100);
        EXPECT_TRUE(tmrUpdate().isActive());
        EXPECT_FALSE(Named<QTimer>(Status(), "tmrStart").isActive());
        bSeen = true;
    };
    Run();
    EXPECT_TRUE(bSeen);
}

TEST_F(RunInWindows, ShowsFilesWhileTheRunGoesOn) {
    std::set<std::string> fields;
    std::set<size_t> listed;
    onPump = [&](int) {
        Update();
        fields.insert(Field(0) + "|" + Field(1) + "|" + Field(2) + "|" + Field(3));
        listed.insert(Lines().size());
    };
    Run([&](QWidget&) { Update(); });
    EXPECT_EQ(fields, (std::set<std::string>{"IDLE|C:\\srv\\pos\\||0",
                                             "DOWNLOADING FILE|C:\\srv\\pos\\|readme.txt|6",
                                             "DOWNLOADING FILE|C:\\srv\\pos\\|b.bin|3",
                                             "DISCONNECTING FROM BRENNIK SERVER|C:\\srv\\pos\\|"
                                             "b.bin|3"}));
    EXPECT_EQ(listed, (std::set<size_t>{0, 1, 2}));
    EXPECT_EQ(Lines(),
              (std::vector<std::string>{"C:\\srv\\pos\\|readme.txt", "C:\\srv\\pos\\|b.bin"}));
}

TEST_F(RunInWindows, UpdatesListAndBarWhileTheClosingBoxIsOpen) {
    // The run is over before the first tick.
    Run([&](QWidget&) {
        EXPECT_EQ(Lines().size(), 0u);
        EXPECT_TRUE(tmrUpdate().isActive());
        EXPECT_TRUE(Eventually([&] { return Lines().size() == 2; }));
        EXPECT_EQ(Named<QProgressBar>(Status(), "ProgressBar1").value(), 100);
        EXPECT_EQ(Field(0), "DISCONNECTING FROM BRENNIK SERVER");
    });
    EXPECT_EQ(Lines().size(), 2u);
}

TEST_F(RunInWindows, KeepsTheFilesOfAFailedRunInTheList) {
    Serve({Open("a", 1), Write("x"), "C", Open("b", 9), Write("y"), "U"});
    Run([&](QWidget&) { Update(); });
    EXPECT_EQ(user.boxes, std::vector<std::string>{kFailure + "Brennik download failed."});
    EXPECT_EQ(Lines(), std::vector<std::string>{"C:\\srv\\pos\\|a"});
}

TEST_F(RunInWindows, ShowsTheComPortInTheCaptionInMode2AloneAndOnlyDuringTheRun) {
    for (int nMode = 0; nMode <= 3; ++nMode) {
        SCOPED_TRACE(nMode);
        WriteProfiles({{"ClientComPort=7"}});
        std::string strIni = Ini();
        strIni.replace(strIni.find("Mode=0"), 6, "Mode=" + std::to_string(nMode));
        host.files.Put("/config/BrennikClient.ini", strIni);
        const std::string strDuring = nMode == 2 ? kCaption + " [COM PORT = COM7]" : kCaption;
        bool bPumped = false;
        onPump = [&](int) {
            bPumped = true;
            EXPECT_EQ(Caption(), strDuring);
            if (nMode >= 2)
                oProtocol->bCancelComms(true); // nobody calls on the line
        };
        Run([&](QWidget&) { EXPECT_EQ(Caption(), strDuring) << "until the box is closed"; });
        EXPECT_EQ(Caption(), kCaption);
        host.ForgiveOverrun();
        host.files.Remove("/log/session.log");
    }
}

TEST_F(RunInWindows, StartsTheScriptBetweenTheRunAndTheBoxAndSaysSoFirst) {
    WriteProfiles({{"ExecuteScriptFile=TRUE", "ScriptFileName=go.sh"}});
    Serve({Open("go.sh", 0), "C", "S"});
    int nPainted = 0;
    class PaintCounter : public QObject {
      public:
        explicit PaintCounter(int& nCount) : nCount_(nCount) {}
        bool eventFilter(QObject*, QEvent* event) override {
            nCount_ += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }

      private:
        int& nCount_;
    } counter(nPainted);
    onPump = [&](int) {
        Named<QLineEdit>(Status(), "txtBrennik(0)").installEventFilter(&counter);
        nPainted = 0;
    };
    std::vector<std::string> seen;
    host.processes.OnRun = [&](const std::string& strCommand) {
        seen = {Field(0), Field(1), Field(2), strCommand};
        EXPECT_GT(nPainted, 0) << "the user sees it";
        EXPECT_TRUE(user.boxes.empty());
    };
    Run();
    EXPECT_EQ(seen, (std::vector<std::string>{"PROCESSING DOWNLOADED SCRIPT FILE...PLEASE WAIT",
                                              "C:\\srv\\pos", "go.sh", "C:\\srv\\pos\\go.sh"}));
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
}

TEST_F(RunInWindows, ReportsTheSuccessWhateverBecomesOfTheScript) {
    WriteProfiles({{"ExecuteScriptFile=TRUE", "ScriptFileName=missing.sh"}});
    Run();
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(RunInWindows, StartsNoScriptAfterAFailure) {
    WriteProfiles({{"ExecuteScriptFile=TRUE", "ScriptFileName=go.sh"}});
    Serve({Open("go.sh", 0), "C", "U"});
    Run();
    EXPECT_EQ(user.boxes, std::vector<std::string>{kFailure + "Brennik download failed."});
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(RunInWindows, StartsNoScriptThatIsNotAskedFor) {
    WriteProfiles({{"ExecuteScriptFile=FALSE", "ScriptFileName=go.sh"}});
    Serve({Open("go.sh", 0), "C", "S"});
    Run();
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
    EXPECT_TRUE(host.processes.calls.empty());
}

TEST_F(RunInWindows, OfAFileWithoutProfilesFailsAndHarmsNothing) {
    host.files.Put("/config/BrennikClient.ini", "[GENERAL]\r\nProfilecount=0\r\n");
    const std::vector<std::string> before = host.files.Tree();
    Run();
    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_EQ(user.boxes[0].substr(0, kFailure.size()), kFailure);
    EXPECT_EQ(host.files.Tree(), before);
    EXPECT_EQ(Ini(), "[GENERAL]\r\nProfilecount=0\r\n");
    EXPECT_FALSE(Ran());
    EXPECT_TRUE(Lines().empty());
}

// Each thing that a user may do, done once at each of the moments at which events are handled.
class InEveryStage : public RunInWindows {
  protected:
    /// One whole run with that done at its nth pumping.
    void RunWith(int nStage, const std::function<void()>& action) {
        nPumps = 0;
        user.boxes.clear();
        user.met.clear();
        List().clear();
        host.files.Remove("/log/session.log");
        Serve({Open("readme.txt", 6), Write("abcdef"), "C", "S"});
        const int nConnections = peer.nConnections();
        onPump = [&, nStage](int nPump) {
            if (nPump == nStage)
                action();
        };
        Run([&](QWidget&) { Update(); });
        onPump = {};
        host.ForgiveOverrun();
        EXPECT_EQ(user.met,
                  (std::vector<std::string>{"frmSelectProfile", "frmBrennikStatus", "MessageBox"}));
        EXPECT_EQ(peer.nConnections(), nConnections + 1) << "one run";
        EXPECT_EQ(Caption(), kCaption);
        EXPECT_TRUE(MainWindow().isVisible());
    }
    int CountStages() {
        RunWith(0, [] {});
        EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
        return nPumps;
    }
    /// What the user does is refused: the run goes on, the windows stay.
    void ExpectRefused(const std::function<void()>& action) {
        const int nStages = CountStages();
        ASSERT_GT(nStages, 4);
        for (int nStage = 1; nStage <= nStages; ++nStage) {
            SCOPED_TRACE(nStage);
            RunWith(nStage, [&] {
                action();
                EXPECT_TRUE(Status().isVisible());
                EXPECT_TRUE(MainWindow().isVisible());
            });
            EXPECT_EQ(nPumps, nStages);
            EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess});
            EXPECT_EQ(Lines(), std::vector<std::string>{"C:\\srv\\pos\\|readme.txt"});
        }
    }
};

TEST_F(InEveryStage, TheCancelButtonEndsTheRun) {
    const int nStages = CountStages();
    int nAborted = 0;
    for (int nStage = 1; nStage <= nStages; ++nStage) {
        SCOPED_TRACE(nStage);
        RunWith(nStage, [&] {
            QTest::mouseClick(&Named<QPushButton>(Status(), "Command1"), Qt::LeftButton);
            EXPECT_TRUE(Status().isVisible());
        });
        ASSERT_EQ(user.boxes.size(), 1u);
        // It is seen at the head of the packet loop, so that even a click during the connect lets
        // the request go out.
        EXPECT_THAT(peer.Take(), testing::HasSubstr("VFI,VX520,XDL,"));
        const bool bAborted = user.boxes[0] == kFailure + "Communications aborted by user";
        nAborted += bAborted ? 1 : 0;
        // Only a click after the end of the packet loop comes too late.
        EXPECT_TRUE(bAborted || (nStage == nStages && user.boxes[0] == kSuccess));
    }
    EXPECT_GE(nAborted, nStages - 1);
}

TEST_F(InEveryStage, TheCloseButtonOfTheStatusWindowIsRefused) {
    ExpectRefused([&] { Status().close(); });
}

TEST_F(InEveryStage, EscIsRefused) {
    ExpectRefused([&] { QTest::keyClick(&Status(), Qt::Key_Escape); });
}

TEST_F(InEveryStage, ASecondRunIsRefused) {
    ExpectRefused([&] { Item(1).trigger(); });
}

TEST_F(InEveryStage, QuitAndTheCloseButtonOfTheMainWindowAreRefused) {
    ExpectRefused([&] {
        Item(3).trigger();
        MainWindow().close();
        QTest::keyClick(&MainWindow(), Qt::Key_Q, Qt::ControlModifier);
    });
}

TEST_F(InEveryStage, TheConfigurationIsRefused) {
    ExpectRefused([&] { Item(0).trigger(); });
}

TEST_F(RunInWindows, CannotBeClosedWhileTheClosingBoxIsOpen) {
    Run([&](QWidget&) {
        Status().close();
        EXPECT_TRUE(Status().isVisible());
        MainWindow().close();
        EXPECT_TRUE(MainWindow().isVisible());
        Item(1).trigger();
    });
    EXPECT_EQ(peer.nConnections(), 1);
}

TEST_F(RunInWindows, BeforeItBeginsCanBeGivenUpByEscOrTheCloseButton) {
    for (const bool bEscape : {true, false}) {
        user.met.clear();
        ExpectPick();
        user.Expect("frmBrennikStatus", [&](QWidget& status) {
            if (bEscape)
                QTest::keyClick(&status, Qt::Key_Escape);
            else
                status.close();
        });
        Item(1).trigger();
        EXPECT_EQ(user.met, (std::vector<std::string>{"frmSelectProfile", "frmBrennikStatus"}));
    }
    EXPECT_FALSE(Ran());
}

TEST_F(RunInWindows, LosesACancelThatComesBeforeItBegins) {
    ExpectPick();
    ExpectStatus([](QWidget& status) { Named<QPushButton>(status, "Command1").click(); });
    ExpectBox();
    Item(1).trigger();
    EXPECT_EQ(user.boxes, std::vector<std::string>{kSuccess}) << "it is meant so";
}

} // namespace
} // namespace brennik
