#include "tests/windows/WindowsWorld.h"

#include <QLocale>
#include <QMessageBox>

namespace brennik::windows {

namespace {

constexpr qint64 kGenerousLimit = 20000; // ms

} // namespace

bool Eventually(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > kGenerousLimit)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

ModalUser::ModalUser() {
    connect(&timer_, &QTimer::timeout, this, [this] { Look(); });
    timer_.start(0);
    sinceStep_.start();
}

ModalUser::~ModalUser() {
    EXPECT_TRUE(expected_.empty()) << "never opened: " << expected_.front().strName;
}

void ModalUser::Expect(const char* strName, Step step) {
    expected_.push_back({strName, std::move(step)});
    sinceStep_.restart();
}

void ModalUser::Look() {
    QWidget* window = QApplication::activeModalWidget();
    if (window == nullptr)
        return;
    if (sinceStep_.elapsed() > kGenerousLimit) {
        ADD_FAILURE() << "stuck in " << window->objectName().toStdString();
        qFatal("a window stays open for ever");
    }
    if (window == last_ || !window->isVisible())
        return;
    last_ = window;
    sinceStep_.restart();
    met.push_back(window->objectName().toStdString());
    if (auto* box = dynamic_cast<QMessageBox*>(window)) {
        boxes.push_back(box->text().toStdString());
        titles.push_back(box->windowTitle().toStdString());
    }
    if (expected_.empty() || expected_.front().strName != met.back()) {
        ADD_FAILURE() << "nobody expected " << met.back()
                      << (boxes.empty() ? "" : ", last box: " + boxes.back());
        window->close();
        return;
    }
    const Step step = std::move(expected_.front().step);
    expected_.pop_front();
    if (step)
        step(*window);
}

WindowsTest::WindowsTest() : pump_([this] { return lPumpTime_ += kLeastPumpInterval; }) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    oConfig = std::make_unique<TBrennikClientConfig>();
    oProtocol = std::make_unique<TBrennikProtocol>();
    host.processes.SetProgramFolder("/config");
    WriteProfiles({{}});
    host.OnPump([this] {
        ++nPumps;
        if (onPump)
            onPump(nPumps);
        pump_.Pump();
    });
}

WindowsTest::~WindowsTest() {
    mainWindow_.reset();
}

void WindowsTest::WriteProfiles(const std::vector<std::vector<std::string>>& profiles,
                                const std::string& strMore) {
    std::string strText =
        "[GENERAL]\r\nProfilecount=" + std::to_string(profiles.size()) + "\r\n" + strMore;
    int32_t lNumber = 0;
    for (const std::vector<std::string>& settings : profiles) {
        WriteProfile(++lNumber, settings);
        strText += Ini();
    }
    host.files.Put("/config/BrennikClient.ini", strText);
}

frmBrennikClient& WindowsTest::MainWindow() {
    if (mainWindow_ == nullptr) {
        mainWindow_ = std::make_unique<frmBrennikClient>();
        mainWindow_->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(mainWindow_.get()));
    }
    return *mainWindow_;
}

QAction& WindowsTest::Item(int nIndex) {
    return Named<QAction>(MainWindow(), ("mnuActionItem(" + std::to_string(nIndex) + ")").c_str());
}

std::vector<std::string> WindowsTest::Lines() {
    std::vector<std::string> lines;
    for (int i = 0; i < List().topLevelItemCount(); ++i)
        lines.push_back(List().topLevelItem(i)->text(1).toStdString() + "|" +
                        List().topLevelItem(i)->text(2).toStdString());
    return lines;
}

void WindowsTest::ExpectPick(const ModalUser::Step& onPicker) {
    user.Expect("frmSelectProfile", [onPicker](QWidget& picker) {
        if (onPicker)
            onPicker(picker);
        Named<QPushButton>(picker, "cmdSelect").click();
    });
}

void WindowsTest::ExpectStatus(const ModalUser::Step& onStatus) {
    user.Expect("frmBrennikStatus", [onStatus](QWidget& status) {
        if (onStatus)
            onStatus(status);
        Named<QTimer>(status, "tmrStart").setInterval(0);
    });
}

void WindowsTest::ExpectBox(const ModalUser::Step& onBox) {
    user.Expect("MessageBox", [onBox](QWidget& box) {
        if (onBox)
            onBox(box);
        dynamic_cast<QMessageBox&>(box).button(QMessageBox::Ok)->click();
    });
}

void WindowsTest::RunFromMenu() {
    ExpectPick();
    ExpectStatus();
    ExpectBox();
    Item(1).trigger();
}

} // namespace brennik::windows
