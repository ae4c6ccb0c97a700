#include "dialogs/ConfigControls.h"

#include "dialogs/DialogParts.h"
#include "dialogs/DigitField.h"
#include "dialogs/ListField.h"
#include "dialogs/OperatingModes.h"
#include "dialogs/TextField.h"

#include <QCheckBox>
#include <QDialog>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace brennik {

namespace {

constexpr int kDescriptionWidth = 420;
constexpr int kCommsLength = 3;

QString Text(const char* strText) {
    return QString::fromLatin1(strText);
}

template <class Control>
Control* Named(Control* control, const char* strName) {
    control->setObjectName(Text(strName));
    return control;
}

QCheckBox* CheckBox(const char* strName, const char* strLabel) {
    return Named(new QCheckBox(Text(strLabel)), strName);
}

// None is the default button: Enter in a field changes nothing.
QPushButton* Button(const char* strName, const char* strLabel) {
    auto* button = ButtonOf(strName, strLabel);
    button->setAutoDefault(false);
    return button;
}

QPushButton* BrowseButton(const char* strName) {
    auto* button = Button(strName, "...");
    button->setFixedWidth(WidthOf(*button, 1));
    return button;
}

TextField* ReadOnlyField(const char* strName) {
    auto* field = new TextField(strName);
    field->setReadOnly(true);
    return field;
}

void AddLabelled(QGridLayout* layout, int nRow, int nColumn, const char* strLabel, QWidget* field,
                 int nColumns = 1) {
    layout->addWidget(LabelOf(strLabel, field), nRow, nColumn);
    layout->addWidget(field, nRow, nColumn + 1, 1, nColumns);
}

/// A frame with a check box as its heading.
QGridLayout* FrameBelow(QVBoxLayout* layout, QCheckBox* heading) {
    layout->addWidget(heading);
    auto* frame = new QFrame;
    frame->setFrameShape(QFrame::StyledPanel);
    layout->addWidget(frame);
    return new QGridLayout(frame);
}

std::array<QGroupBox*, 4> Frames() {
    constexpr std::array kCaptions = {"General Settings", "Communication Settings",
                                      "Client Settings", "Logging"};
    std::array<QGroupBox*, 4> frames{};
    for (size_t i = 0; i < frames.size(); ++i) {
        frames[i] = new QGroupBox(Text(kCaptions[i]));
        frames[i]->setObjectName(QStringLiteral("fraBrennik(%1)").arg(i));
    }
    return frames;
}

std::array<DigitField*, 5> CommsFields() {
    return {
        new DigitField("txtComms(0)", kCommsLength), new DigitField("txtComms(1)", kCommsLength),
        new DigitField("txtComms(2)", kCommsLength), new DigitField("txtComms(3)", kCommsLength),
        new DigitField("txtComms(4)", kCommsLength)};
}

} // namespace

ConfigControls::ConfigControls(QDialog& window)
    : TabStrip1(Named(new QTabWidget, "TabStrip1")),
      fraBrennik(Frames()),
      txtProfileName(new TextField("txtProfileName")),
      cboOperatingMode(new ListField("cboOperatingMode", ListKind::Fixed)),
      capDescription(Named(new QLabel, "capDescription")),
      cboPassThruType(new ListField("cboPassThruType", ListKind::Fixed)),
      chkUploadAllFiles(CheckBox("chkUploadAllFiles", "Upload all files from the device")),
      chkUploadLogFiles(CheckBox("chkUploadLogFiles", "Upload log files from the device")),
      chkUploadTransactionFile(
          CheckBox("chkUploadTransactionFile", "Upload offline transaction file from the device")),
      chkPedDownload(CheckBox("chkPedDownload", "This profile is used for downloading peds")),
      cmdComms(Button("cmdComms", "C&onfigure Server Communications")),
      cmdClientComms(Button("cmdClientComms", "Configure Client Communications")),
      txtComms(CommsFields()),
      cboPlatForm(new ListField("cboPlatForm", ListKind::Fixed)),
      cboEprom(new ListField("cboEprom", ListKind::Fixed)),
      cboApp(new ListField("cboApp", ListKind::Typed)),
      txtPTID(new DigitField("txtPTID", 15)),
      txtTid(new TextField("txtTid", 32)),
      txtMemory(new DigitField("txtMemory", 8)),
      txtBlockSize(new DigitField("txtBlockSize", 8)),
      cboDlType(new ListField("cboDlType", ListKind::Fixed)),
      txtConfigTitle(new TextField("txtConfigTitle", 16)),
      txtReleaseTitle(new TextField("txtReleaseTitle", 16)),
      txtBaseFolder(ReadOnlyField("txtBaseFolder")),
      cmdBrowse(BrowseButton("cmdBrowse")),
      chkNewFolder(CheckBox("chkNewFolder", "Generate a new folder for every download attempt")),
      // The blanks at the end of two labels are meant.
      chkDeleteFolder(CheckBox("chkDeleteFolder", "Delete new folders at startup ")),
      txtScriptFileName(new TextField("txtScriptFileName")),
      chkExecuteScript(
          CheckBox("chkExecuteScript", "Execute script file after successful download")),
      chkInjectPublicKey(CheckBox("chkInjectPublicKey", "Inject Public Keyfile")),
      txtKeyFileLoc(ReadOnlyField("txtKeyFileLoc")),
      cmdKeyFileLoc(BrowseButton("cmdKeyFileLoc")),
      chkLogging(CheckBox("chkLogging", "Client Logging Enabled")),
      txtLogPath(ReadOnlyField("txtLogPath")),
      cmdLogBrowse(BrowseButton("cmdLogBrowse")),
      txtLogFileName(new TextField("txtLogFileName")),
      chkLogControlPkt(CheckBox("chkLogControlPkt", "Log control characters ")),
      chkLogProcessPkt(CheckBox("chkLogProcessPkt", "Log Brennik packets")),
      cmdApply(Button("cmdApply", "&Apply")),
      cmdClose(Button("cmdClose", "&Close")) {
    BuildGeneral();
    BuildComms();
    BuildClient();
    BuildLogging();
    // The order in which they join the window is the order in which Tab goes through them.
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(TabStrip1, 1);
    constexpr std::array kTabs = {"General", "Communications", "Client", "Logging"};
    for (size_t i = 0; i < kTabs.size(); ++i) {
        auto* page = new QWidget; // keeps the frame off the border of the tabs
        auto* margins = new QVBoxLayout(page);
        margins->addWidget(fraBrennik[i]);
        TabStrip1->addTab(page, Text(kTabs[i]));
    }
    auto* buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    buttons->addStretch();
    buttons->addWidget(cmdApply);
    buttons->addWidget(cmdClose);
}

void ConfigControls::BuildGeneral() {
    auto* layout = new QGridLayout(fraBrennik[0]);
    AddLabelled(layout, 0, 0, "Brennik Profile Name", txtProfileName);
    AddLabelled(layout, 1, 0, "Operating Mode", cboOperatingMode);
    layout->addWidget(capDescription, 2, 1);
    AddLabelled(layout, 3, 0, "Pass-Thru Type", cboPassThruType);
    layout->addWidget(chkUploadAllFiles, 4, 1);
    layout->addWidget(chkUploadLogFiles, 5, 1);
    layout->addWidget(chkUploadTransactionFile, 6, 1);
    layout->addWidget(chkPedDownload, 7, 1);
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(8, 1);
    ReserveDescription();
}

// As high as the longest description needs, so that nothing jumps when the mode changes.
void ConfigControls::ReserveDescription() {
    QFont bold = capDescription->font();
    bold.setBold(true);
    capDescription->setFont(bold);
    capDescription->setTextFormat(Qt::PlainText);
    capDescription->setWordWrap(true);
    capDescription->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    capDescription->setMinimumWidth(kDescriptionWidth);
    int nHeight = 0;
    for (const OperatingMode& mode : OperatingModes()) {
        const QRect needed = QFontMetrics(bold).boundingRect(
            0, 0, kDescriptionWidth, 0, Qt::TextWordWrap, Text(mode.strDescription));
        nHeight = std::max(nHeight, needed.height());
    }
    capDescription->setMinimumHeight(nHeight);
}

void ConfigControls::BuildComms() {
    constexpr std::array kLabels = {"Single Character Timeout", "Read Packet Timeout",
                                    "Connection Attempts", "Send Packet Attempts",
                                    "Read Packet Attempts"};
    constexpr int kTimeouts = 2; // the first of them
    auto* layout = new QVBoxLayout(fraBrennik[1]);
    auto* buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    buttons->addWidget(cmdComms);
    buttons->addWidget(cmdClientComms);
    buttons->addStretch();
    auto* frame = new QGroupBox(Text("Timeouts / Attempts"));
    auto* fields = new QGridLayout(frame);
    for (int i = 0; i < static_cast<int>(kLabels.size()); ++i) {
        DigitField* field = txtComms[static_cast<size_t>(i)];
        field->setFixedWidth(WidthOf(*field, kCommsLength));
        AddLabelled(fields, i, 0, kLabels[static_cast<size_t>(i)], field);
        if (i < kTimeouts)
            fields->addWidget(LabelOf("(Seconds)", field), i, 2);
    }
    fields->setColumnStretch(3, 1);
    layout->addWidget(frame);
    layout->addStretch();
}

void ConfigControls::BuildClient() {
    auto* layout = new QVBoxLayout(fraBrennik[2]);
    auto* fields = new QGridLayout;
    layout->addLayout(fields);
    fields->setColumnStretch(1, 1);
    fields->setColumnStretch(3, 1);
    AddLabelled(fields, 0, 0, "Platform", cboPlatForm);
    AddLabelled(fields, 0, 2, "Eprom ID", cboEprom);
    AddLabelled(fields, 1, 0, "Application", cboApp);
    AddLabelled(fields, 1, 2, "PTID", txtPTID);
    AddLabelled(fields, 2, 0, "Terminal ID", txtTid);
    AddLabelled(fields, 2, 2, "Memory", txtMemory);
    AddLabelled(fields, 3, 0, "Block Size", txtBlockSize);
    AddLabelled(fields, 3, 2, "Dnld Type", cboDlType);
    AddLabelled(fields, 4, 0, "Config Title", txtConfigTitle);
    AddLabelled(fields, 4, 2, "Release Title", txtReleaseTitle);
    AddLabelled(fields, 5, 0, "Base Folder", txtBaseFolder, 3);
    fields->addWidget(cmdBrowse, 5, 4);
    fields->addWidget(chkNewFolder, 6, 1, 1, 3);
    fields->addWidget(chkDeleteFolder, 7, 1, 1, 3);
    AddLabelled(fields, 8, 0, "Script File Name", txtScriptFileName, 3);
    fields->addWidget(chkExecuteScript, 9, 1, 1, 3);
    QGridLayout* key = FrameBelow(layout, chkInjectPublicKey);
    AddLabelled(key, 0, 0, "Public key file location", txtKeyFileLoc);
    key->addWidget(cmdKeyFileLoc, 0, 2);
    layout->addStretch();
}

void ConfigControls::BuildLogging() {
    auto* layout = new QVBoxLayout(fraBrennik[3]);
    QGridLayout* fields = FrameBelow(layout, chkLogging);
    AddLabelled(fields, 0, 0, "Select log file folder", txtLogPath);
    fields->addWidget(cmdLogBrowse, 0, 2);
    AddLabelled(fields, 1, 0, "Log file name", txtLogFileName);
    fields->addWidget(chkLogControlPkt, 2, 1);
    fields->addWidget(chkLogProcessPkt, 3, 1);
    layout->addStretch();
}

} // namespace brennik
