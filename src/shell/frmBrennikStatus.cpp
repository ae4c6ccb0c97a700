#include "shell/frmBrennikStatus.h"

#include "config/OperatingMode.h"
#include "config/TBrennikClientConfig.h"
#include "dialogs/MessageBoxes.h"
#include "dialogs/WindowText.h"
#include "platform/Host.h"
#include "session/TBrennikProtocol.h"
#include "shell/BrennikClnt.h"
#include "shell/frmBrennikClient.h"
#include "support/Failure.h"

#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <string>

namespace brennik {

namespace {

constexpr const char* kScriptText = "PROCESSING DOWNLOADED SCRIPT FILE...PLEASE WAIT";

constexpr int kStartDelay = 300;     // ms
constexpr int kUpdateInterval = 100; // ms

constexpr std::array<const char*, 11> kStateTexts = {
    "IDLE",
    "PROCESSING SET TIME REQUEST",
    "PROCESSING CONFIG SYS VARIABLE REQUEST",
    "PROCESSING MESSAGE REQUEST",
    "DOWNLOADING FILE",
    "PROCESSING SET PASSWORD REQUEST",
    "CONNECTING TO BRENNIK SERVER",
    "DISCONNECTING FROM BRENNIK SERVER",
    "UPLOADING FILE",
    "DOWNLOADING TMS APPLICATION...",
    "WAITING FOR DEVICE TO REBOOT. PLEASE WAIT...",
};

const char* TextOf(BrennikState state) {
    const auto nState = static_cast<size_t>(state);
    return nState < kStateTexts.size() ? kStateTexts[nState] : "UNKNOWN";
}

} // namespace

frmBrennikStatus::frmBrennikStatus(frmBrennikClient& oMainWindow)
    : QDialog(&oMainWindow), oMainWindow_(oMainWindow), ProgressBar1_(new QProgressBar) {
    setObjectName(QStringLiteral("frmBrennikStatus"));
    setWindowTitle(QStringLiteral("Download Status"));
    BuildControls();
    SetFieldColours();
    tmrStart_.setParent(this);
    tmrStart_.setObjectName(QStringLiteral("tmrStart"));
    tmrUpdate_.setParent(this);
    tmrUpdate_.setObjectName(QStringLiteral("tmrUpdate"));
    connect(&tmrStart_, &QTimer::timeout, this, [this] { tmrStart_Timer(); });
    connect(&tmrUpdate_, &QTimer::timeout, this, [this] { tmrUpdate_Timer(); });
    tmrStart_.start(kStartDelay);
}

void frmBrennikStatus::BuildControls() {
    constexpr std::array<const char*, kFields> labels = {"Status", "Folder", "Filename",
                                                         "Filesize (bytes)"};
    auto* fields = new QGridLayout;
    for (size_t i = 0; i < kFields; ++i) {
        auto* field = new QLineEdit;
        field->setObjectName(QStringLiteral("txtBrennik(%1)").arg(i));
        field->setReadOnly(true);
        field->setMinimumWidth(field->fontMetrics().horizontalAdvance(QLatin1String(kScriptText) +
                                                                      QLatin1String("MMM")));
        auto* label = new QLabel(QString::fromLatin1(labels[i]));
        label->setBuddy(field);
        fields->addWidget(label, static_cast<int>(i), 0);
        fields->addWidget(field, static_cast<int>(i), 1);
        txtBrennik_[i] = field;
    }

    ProgressBar1_->setObjectName(QStringLiteral("ProgressBar1"));
    ProgressBar1_->setAccessibleName(QStringLiteral("Progress of the file"));
    ProgressBar1_->setRange(0, 100);
    ProgressBar1_->setValue(0);
    auto* Frame1 = new QGroupBox;
    Frame1->setObjectName(QStringLiteral("Frame1"));
    (new QVBoxLayout(Frame1))->addWidget(ProgressBar1_);

    auto* Command1 = new QPushButton(QStringLiteral("Cancel Communications"));
    Command1->setObjectName(QStringLiteral("Command1"));
    // An Enter that was meant for the window before this one must not cancel the run.
    Command1->setAutoDefault(false);
    connect(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    buttons->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(Frame1);
    layout->addStretch();
    layout->addLayout(buttons);
    txtBrennik_.front()->setFocus();
}

void frmBrennikStatus::SetFieldColours() {
    for (QLineEdit* field : txtBrennik_) {
        QPalette colours = field->palette();
        colours.setColor(QPalette::Base, palette().color(QPalette::Button));
        colours.setColor(QPalette::Text, palette().color(QPalette::ButtonText));
        field->setPalette(colours);
    }
}

void frmBrennikStatus::SetField(size_t nField, std::string_view strText) {
    const QString strShown = LineText(strText);
    // What doesn't change keeps the user's selection and costs no repaint.
    if (txtBrennik_[nField]->text() != strShown)
        txtBrennik_[nField]->setText(strShown);
}

void frmBrennikStatus::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && txtBrennik_.back() != nullptr)
        SetFieldColours();
}

void frmBrennikStatus::reject() {
    if (!bBusy_)
        QDialog::reject();
}

void frmBrennikStatus::tmrStart_Timer() {
    tmrStart_.stop();
    bBusy_ = true;
    const QString strCaption = oMainWindow_.windowTitle();
    Quietly([&] { RunProfile(); });
    oMainWindow_.setWindowTitle(strCaption);
    bBusy_ = false;
    accept();
}

void frmBrennikStatus::RunProfile() {
    oProtocol = std::make_unique<TBrennikProtocol>();
    tmrUpdate_.start(kUpdateInterval);
    lNextFile_ = 0;
    if (oConfig->lOperatingMode() == kModeSerialPassThru)
        oMainWindow_.setWindowTitle(
            oMainWindow_.windowTitle() +
            QStringLiteral(" [COM PORT = COM%1]").arg(oConfig->iClientComPort()));
    const int32_t lResult =
        oProtocol->DoBrennikProtocol(*oConfig, CurrentHost().processes.ProgramFolder(), lProfileId);
    if (lResult != 0) {
        ShowMessageBox(this, QMessageBox::Warning,
                       "Communications with Brennik Server failed.\r\n" +
                           oProtocol->strErrorMessage());
        return;
    }
    if (oConfig->lOperatingMode() == kModeTcpClient && oConfig->bExecuteScriptFile())
        RunScript();
    // Whatever became of the script, and in every mode: it is meant so.
    ShowMessageBox(this, QMessageBox::Information,
                   "Communications with Brennik Server completed successfully");
}

void frmBrennikStatus::RunScript() {
    SetField(0, kScriptText);
    SetField(1, oConfig->strWorkingFolder());
    SetField(2, oConfig->strScriptFileName());
    // No event is handled while the script runs.
    repaint();
    RunDownloadedScript(oProtocol->strBaseFolder());
}

void frmBrennikStatus::tmrUpdate_Timer() {
    Quietly([&] {
        const BrennikState state = oProtocol->lCurrentState();
        SetField(0, TextOf(state));
        if (state == BrennikState::WaitingForDeviceReboot)
            ProgressBar1_->setValue(0);
        SetField(1, oProtocol->strCurrentFolder());
        SetField(2, oProtocol->strDownloadFileName());
        SetField(3, std::to_string(oProtocol->lDownloadFileSize()));
        UpdateProgressBar(*ProgressBar1_, 0, 100, oProtocol->lFileBytesDownloaded(),
                          oProtocol->lDownloadFileSize());
        ListNewFiles();
    });
}

void frmBrennikStatus::UpdateProgressBar(QProgressBar& oBar, int32_t lMin, int32_t lMax,
                                         int32_t lValue, int32_t lTotal) {
    oBar.setRange(lMin, lMax);
    if (lTotal < 1)
        return;
    const double dValue = static_cast<double>(lValue) / lTotal * lMax;
    if (dValue >= lMin && dValue <= lMax)
        oBar.setValue(static_cast<int>(dValue));
}

void frmBrennikStatus::ListNewFiles() {
    for (; lNextFile_ < oProtocol->lNumFilesDownloaded(); ++lNextFile_)
        oMainWindow_.AddDownloadedFile(oProtocol->GetFolderFromDownloadArray(lNextFile_),
                                       oProtocol->GetFileNameFromDownloadArray(lNextFile_));
}

void frmBrennikStatus::Command1_Click() {
    // Recorded, no more: the engine below on the stack looks at it at its next pass. In the moment
    // before the run begins it reaches the engine that the run replaces: it is meant so.
    oProtocol->bCancelComms(true);
}

} // namespace brennik
