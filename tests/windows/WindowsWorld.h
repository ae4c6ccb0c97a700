// The windows over the simulated host: time, network and files are virtual, the toolkit is real and
// shows nothing. PumpEvents handles the toolkit's events at every call. What a user does in a modal
// window is told beforehand, window by window, in the order in which they open.
#pragma once

#include "shell/frmBrennikClient.h"
#include "shell/frmEventPump.h"
#include "tests/shell/ShellWorld.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace brennik {

/// The tests' one way into the engine.
class TBrennikProtocolTestAccess {
  public:
    explicit TBrennikProtocolTestAccess(TBrennikProtocol& oEngine) : oProtocol_(oEngine) {}

    void SetState(int32_t lState) { oProtocol_.lCurrentState_ = static_cast<BrennikState>(lState); }
    void SetFolder(const std::string& strFolder) { oProtocol_.strCurrentFolder_ = strFolder; }
    void SetFile(const std::string& strName, int32_t lSize, int32_t lBytes) {
        oProtocol_.strDownloadFileName_ = strName;
        oProtocol_.lDownloadFileSize_ = lSize;
        oProtocol_.lFileBytesDownloaded_ = lBytes;
    }
    void AddFile(const std::string& strFolder, const std::string& strName) {
        oProtocol_.AddToDownloadArray(strFolder, strName);
    }

  private:
    TBrennikProtocol& oProtocol_;
};

namespace windows {

/// Handles the toolkit's events until the condition holds; false when a generous limit passes.
bool Eventually(const std::function<bool()>& condition);

/// A control by its name; fails the test loudly when there is none.
template <class Control>
Control& Named(const QObject& window, const char* strName) {
    auto* control = window.findChild<Control*>(QString::fromLatin1(strName));
    if (control == nullptr)
        throw std::runtime_error(std::string("no control ") + strName);
    return *control;
}

/// What the user does with modal windows, each by its name.
class ModalUser : public QObject {
  public:
    using Step = std::function<void(QWidget&)>;

    ModalUser();
    ~ModalUser() override;

    /// The next window to open has this name, and this is done with it, once.
    void Expect(const char* strName, Step step);

    /// Names of the windows met, in order.
    std::vector<std::string> met;
    /// The text and title of each message box met.
    std::vector<std::string> boxes;
    std::vector<std::string> titles;

  private:
    void Look();

    struct Expected {
        std::string strName;
        Step step;
    };
    std::deque<Expected> expected_;
    QTimer timer_;
    QPointer<QWidget> last_;
    QElapsedTimer sinceStep_;
};

class WindowsTest : public shell::ShellTest {
  protected:
    WindowsTest();
    ~WindowsTest() override;

    /// The configuration file of the program's folder: so many profiles, each a section as
    /// WriteProfile makes it, with its settings.
    void WriteProfiles(const std::vector<std::vector<std::string>>& profiles,
                       const std::string& strMore = "");

    frmBrennikClient& MainWindow();
    QTreeWidget& List() { return Named<QTreeWidget>(MainWindow(), "lstFiles"); }
    QAction& Item(int nIndex);
    /// Folder and name of each line of the list.
    std::vector<std::string> Lines();
    std::string Caption() { return MainWindow().windowTitle().toStdString(); }

    /// The user opens the picker, takes the first profile, and lets the run begin at once.
    /// onStatus is called with the status window before it begins.
    void ExpectPick(const ModalUser::Step& onPicker = {});
    void ExpectStatus(const ModalUser::Step& onStatus = {});
    void ExpectBox(const ModalUser::Step& onBox = {});
    /// Picker, status window and closing box, from the menu on.
    void RunFromMenu();

    ModalUser user;
    /// Called at each PumpEvents with its number, from 1, before the toolkit's events are handled.
    std::function<void(int)> onPump;
    int nPumps = 0;

  private:
    int64_t lPumpTime_ = 0;
    frmEventPump pump_;
    std::unique_ptr<frmBrennikClient> mainWindow_;
};

} // namespace windows
} // namespace brennik
