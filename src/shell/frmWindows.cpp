#include "shell/frmWindows.h"

#include "config/TBrennikClientConfig.h"
#include "dialogs/MessageBoxes.h"
#include "platform/Host.h"
#include "platform/StandardStreams.h"
#include "session/TBrennikProtocol.h"
#include "shell/BrennikClnt.h"
#include "shell/CommandLine.h"
#include "shell/WindowsEntry.h"
#include "shell/WindowsModule.h"
#include "shell/frmEventPump.h"

#include <QApplication>
#include <string>
#include <vector>

namespace brennik {

namespace {

/// The command line that waits for the toolkit to start.
std::string& PendingCommandLine() {
    static std::string strCommandLine;
    return strCommandLine;
}

// The toolkit crashes the process when it finds no display. It says so first, in many words, and
// that is the moment to say it in one line and to end in order.
void EndWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg)
        return;
    WindowsModule noWindows("no display can be reached");
    Main(PendingCommandLine(), noWindows);
    EndProcess();
}

} // namespace

void frmWindows::ShowMainWindow() {
    oMainWindow_ = std::make_unique<frmBrennikClient>();
    oMainWindow_->show();
}

void frmWindows::ShowUsageBox(const std::string& strText) {
    ShowMessageBox(nullptr, QMessageBox::NoIcon, strText);
}

void PumpWindowEvents() {
    RealHost().pumpEvents = [pump = frmEventPump()]() mutable { pump.Pump(); };
}

int32_t OpenWindows(int32_t lVersion, int argc, char** argv) {
    if (lVersion != kWindowsVersion)
        return kWindowsForeign;
    const std::vector<std::string> strArguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    PendingCommandLine() = CommandLineFromArguments(strArguments);

    // The arguments are ours alone: the toolkit would take some of them for its own.
    std::string strName = "brennikclient";
    char* names[] = {strName.data(), nullptr};
    int nNames = 1;
    const QtMessageHandler former = qInstallMessageHandler(EndWithoutDisplay);
    QApplication application(nNames, names);
    qInstallMessageHandler(former);

    frmWindows windows;
    PumpWindowEvents();
    Main(PendingCommandLine(), windows);
    if (windows.bMainWindowOpen())
        QApplication::exec();
    RealHost().pumpEvents = [] {};
    oProtocol.reset();
    oConfig.reset();
    return kWindowsClosed;
}

} // namespace brennik
