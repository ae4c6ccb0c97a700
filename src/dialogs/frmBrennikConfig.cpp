#include "dialogs/frmBrennikConfig.h"

#include "config/OperatingMode.h"
#include "config/TBrennikClientConfig.h"
#include "dialogs/DigitField.h"
#include "dialogs/FieldColours.h"
#include "dialogs/ListField.h"
#include "dialogs/MessageBoxes.h"
#include "dialogs/OperatingModes.h"
#include "dialogs/ProfileFields.h"
#include "dialogs/frmPTNetworkConfig.h"
#include "dialogs/frmPTSerialConfig.h"
#include "dialogs/frmSelDir.h"
#include "platform/Host.h"
#include "platform/RuntimeFailure.h"
#include "shell/BrennikClnt.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/OstrandString.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

namespace brennik {

bool bProfileSaved = false;

namespace {

/// A shape of the pointer, for as long as the object lives.
class PointerShape {
  public:
    explicit PointerShape(Qt::CursorShape shape) { QGuiApplication::setOverrideCursor(shape); }
    ~PointerShape() { QGuiApplication::restoreOverrideCursor(); }
    PointerShape(const PointerShape&) = delete;
    PointerShape& operator=(const PointerShape&) = delete;
};

constexpr size_t kClientFrame = 2;

// Of lUploadFileType.
constexpr int32_t kUploadAllFiles = 0;
constexpr int32_t kUploadLogFiles = 1;
constexpr int32_t kUploadTransactionFile = 2;

std::string ConfigFileLoc() {
    return CurrentHost().processes.ProgramFolder();
}

void SetFieldEnabled(QWidget* field, bool bEnabled) {
    FieldColours colours(*field);
    SetControlEnabled(bEnabled, colours);
}

} // namespace

frmBrennikConfig::frmBrennikConfig(QWidget* parent) : QDialog(parent), controls_(*this) {
    setObjectName(QStringLiteral("frmBrennikConfig"));
    setWindowTitle(QStringLiteral("Ostrand Brennik Client Configuration"));
    ConnectHandlers();
    ConnectEdits();
    bProfileSaved = false;
    controls_.txtProfileName->setFocus();
    Quietly([&] { InitialiseFields(); });
    if (lProfileId >= 0)
        bLoaded_ = FillFieldsFromConfig();
    controls_.cmdApply->setEnabled(false);
}

void frmBrennikConfig::ConnectHandlers() {
    const auto onPick = [this](ListField* list, void (frmBrennikConfig::*handler)()) {
        connect(list, &QComboBox::activated, this,
                [this, handler] { Quietly([&] { (this->*handler)(); }); });
    };
    const auto onClick = [this](QAbstractButton* button, void (frmBrennikConfig::*handler)()) {
        connect(button, &QAbstractButton::clicked, this,
                [this, handler] { Quietly([&] { (this->*handler)(); }); });
    };
    const auto onBrowse = [this](QAbstractButton* button, TextField* field, const char* strTitle) {
        connect(button, &QAbstractButton::clicked, this,
                [this, field, strTitle] { Quietly([&] { Browse(*field, strTitle); }); });
    };
    onPick(controls_.cboOperatingMode, &frmBrennikConfig::SetModeControls);
    onPick(controls_.cboPassThruType, &frmBrennikConfig::cboPassThruType_Click);
    onPick(controls_.cboPlatForm, &frmBrennikConfig::cboPlatForm_Click);
    onClick(controls_.chkUploadAllFiles, &frmBrennikConfig::chkUploadAllFiles_Click);
    onClick(controls_.chkInjectPublicKey, &frmBrennikConfig::chkInjectPublicKey_Click);
    onClick(controls_.chkNewFolder, &frmBrennikConfig::chkNewFolder_Click);
    onClick(controls_.cmdComms, &frmBrennikConfig::cmdComms_Click);
    onClick(controls_.cmdClientComms, &frmBrennikConfig::cmdClientComms_Click);
    onClick(controls_.cmdApply, &frmBrennikConfig::cmdApply_Click);
    onClick(controls_.cmdClose, &frmBrennikConfig::cmdClose_Click);
    onBrowse(controls_.cmdBrowse, controls_.txtBaseFolder, "Select Brennik base folder");
    onBrowse(controls_.cmdLogBrowse, controls_.txtLogPath, "Select Brennik logfile folder");
    onBrowse(controls_.cmdKeyFileLoc, controls_.txtKeyFileLoc, "Select public key file folder");
}

// Every edit that has no handler of its own.
void frmBrennikConfig::ConnectEdits() {
    for (const TextSetting& setting : TextSettings())
        connect(setting.field(controls_), &QLineEdit::textEdited, this, [this] { MarkDirty(); });
    for (const NumberSetting& setting : NumberSettings())
        connect(setting.field(controls_), &QLineEdit::textEdited, this, [this] { MarkDirty(); });
    connect(controls_.cboApp->lineEdit(), &QLineEdit::textEdited, this, [this] { MarkDirty(); });
    for (ListField* list : {controls_.cboApp, controls_.cboDlType, controls_.cboEprom})
        connect(list, &QComboBox::activated, this, [this] { MarkDirty(); });
    for (QCheckBox* box :
         {controls_.chkUploadLogFiles, controls_.chkUploadTransactionFile, controls_.chkPedDownload,
          controls_.chkDeleteFolder, controls_.chkExecuteScript, controls_.chkLogging,
          controls_.chkLogControlPkt, controls_.chkLogProcessPkt})
        connect(box, &QCheckBox::clicked, this, [this] { MarkDirty(); });
}

void frmBrennikConfig::MarkDirty() {
    controls_.cmdApply->setEnabled(true);
}

int frmBrennikConfig::exec() {
    if (bLoaded_)
        return QDialog::exec();
    ShowMessageBox(parentWidget(), QMessageBox::Warning,
                   "Failed filling form fields from application configuration file.\r\n" +
                       strFailure_);
    done(Rejected);
    return Rejected;
}

void frmBrennikConfig::done(int nResult) {
    // A failure isn't tested: the profile can't be edited further in any case.
    Quietly([&] { static_cast<void>(oConfig->GetConfiguration(ConfigFileLoc(), lProfileId)); });
    QDialog::done(nResult);
}

void frmBrennikConfig::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        QDialog::keyPressEvent(event);
    else if (auto* button = dynamic_cast<QPushButton*>(focusWidget()))
        button->click();
}

void frmBrennikConfig::InitialiseFields() {
    FillLists();
    for (const TextSetting& setting : TextSettings())
        setting.field(controls_)->SetBytes("");
    for (const NumberSetting& setting : NumberSettings())
        setting.field(controls_)->SetBytes("");
    for (const CheckSetting& setting : CheckSettings())
        (controls_.*setting.box)->setChecked(setting.box == &ConfigControls::chkLogging);
    for (QCheckBox* box : {controls_.chkUploadAllFiles, controls_.chkUploadLogFiles,
                           controls_.chkUploadTransactionFile})
        box->setChecked(false);
    SetModeControls();
    chkUploadAllFiles_Click();
    cboPassThruType_Click();
    cboPlatForm_Click();
    chkInjectPublicKey_Click();
    chkNewFolder_Click();
}

void frmBrennikConfig::FillLists() {
    for (const OperatingMode& mode : OperatingModes())
        controls_.cboOperatingMode->AddItem(mode.strLabel);
    for (const char* strType : PassThruTypes())
        controls_.cboPassThruType->AddItem(strType);
    // The platforms are added to those of the openings before, which thus show once more: meant.
    oConfig->GetPlatforms(ConfigFileLoc());
    for (int32_t i = 0; i < oConfig->lPlatformCount(); ++i)
        controls_.cboPlatForm->AddItem(oConfig->GetPlatFormName(i));
    for (const char* strType : {"Full", "Partial"})
        controls_.cboDlType->AddItem(strType);
    for (ListField* list : {controls_.cboOperatingMode, controls_.cboPassThruType,
                            controls_.cboPlatForm, controls_.cboDlType})
        list->ChooseFirst();
}

bool frmBrennikConfig::FillFieldsFromConfig() {
    return GuardedWithText(strFailure_, "", false, [&] {
        if (oConfig->GetConfiguration(ConfigFileLoc(), lProfileId) != 0) {
            strFailure_ = oConfig->strErrorMessage();
            return false;
        }
        FillFromConfig();
        return true;
    });
}

// No event of a control is waited for: what a handler must do to the fields is called here.
void frmBrennikConfig::FillFromConfig() {
    SelectMode(oConfig->lOperatingMode());
    SetModeControls();
    // The lists that depend on the platform are filled before anything is chosen in them.
    controls_.cboPlatForm->SetBytes(oConfig->strPlatformName());
    cboPlatForm_Click();
    controls_.cboEprom->SetBytes(oConfig->strEpromID());
    controls_.cboApp->SetBytes(oConfig->strApplicationID());
    controls_.cboDlType->setCurrentIndex(oConfig->lDownloadType() == 0 ? 0 : 1);
    for (const TextSetting& setting : TextSettings())
        setting.field(controls_)->SetBytes((oConfig.get()->*setting.get)());
    for (const NumberSetting& setting : NumberSettings())
        setting.field(controls_)->SetBytes(ToDecimal((oConfig.get()->*setting.get)()));
    // What is to be deleted stands as stored although the handler has just unchecked it.
    controls_.chkNewFolder->setChecked(oConfig->bFolderperDownloadAttempt());
    chkNewFolder_Click();
    for (const CheckSetting& setting : CheckSettings())
        (controls_.*setting.box)->setChecked((oConfig.get()->*setting.get)());
    controls_.cboPassThruType->setCurrentIndex(PassThruTypeOf(oConfig->lPassThruType()));
    FillUploadTypes();
    chkUploadAllFiles_Click();
    cboPassThruType_Click();
}

void frmBrennikConfig::SelectMode(int32_t lMode) {
    if (lMode < 0 || lMode >= static_cast<int32_t>(OperatingModes().size()))
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    controls_.cboOperatingMode->setCurrentIndex(lMode);
}

void frmBrennikConfig::FillUploadTypes() {
    const int32_t lTypes = oConfig->lUploadFileType();
    if (lTypes == 0) {
        controls_.chkUploadAllFiles->setChecked(true);
        return;
    }
    controls_.chkUploadLogFiles->setChecked((lTypes & kUploadLogFiles) != 0);
    controls_.chkUploadTransactionFile->setChecked((lTypes & kUploadTransactionFile) != 0);
}

const OperatingMode& frmBrennikConfig::Mode() const {
    return OperatingModes()[static_cast<size_t>(controls_.cboOperatingMode->currentIndex())];
}

void frmBrennikConfig::SetModeControls() {
    const OperatingMode& mode = Mode();
    controls_.cmdComms->setEnabled(true);
    controls_.cmdClientComms->setEnabled(mode.bClientComms);
    controls_.capDescription->setText(QString::fromLatin1(mode.strDescription));
    controls_.fraBrennik[kClientFrame]->setEnabled(mode.bClientFrame);
    // Not the last word in most modes, since the handler below decides anew: meant.
    controls_.chkInjectPublicKey->setEnabled(mode.bInjectPublicKey);
    SetFieldEnabled(controls_.cboPassThruType, mode.bPassThruType);
    cboPassThruType_Click();
    MarkDirty();
}

bool frmBrennikConfig::bUploadChosen() const {
    return UploadsFiles(controls_.cboOperatingMode->currentIndex(),
                        controls_.cboPassThruType->currentIndex());
}

void frmBrennikConfig::cboPassThruType_Click() {
    if (bUploadChosen()) {
        controls_.chkUploadAllFiles->setEnabled(true);
        controls_.chkInjectPublicKey->setEnabled(false);
    } else {
        SetUploadBoxesEnabled(false);
        controls_.chkInjectPublicKey->setEnabled(true);
    }
    chkInjectPublicKey_Click();
    chkUploadAllFiles_Click();
    MarkDirty();
}

void frmBrennikConfig::SetUploadBoxesEnabled(bool bEnabled) {
    controls_.chkUploadAllFiles->setEnabled(bEnabled);
    controls_.chkUploadLogFiles->setEnabled(bEnabled);
    controls_.chkUploadTransactionFile->setEnabled(bEnabled);
}

void frmBrennikConfig::chkUploadAllFiles_Click() {
    if (bUploadChosen()) {
        const bool bSingly = !controls_.chkUploadAllFiles->isChecked();
        controls_.chkUploadLogFiles->setEnabled(bSingly);
        controls_.chkUploadTransactionFile->setEnabled(bSingly);
    } else {
        SetUploadBoxesEnabled(false);
    }
    MarkDirty();
}

void frmBrennikConfig::chkInjectPublicKey_Click() {
    const bool bInject = controls_.chkInjectPublicKey->isChecked();
    SetFieldEnabled(controls_.txtKeyFileLoc, bInject);
    controls_.cmdKeyFileLoc->setEnabled(bInject);
    MarkDirty();
}

void frmBrennikConfig::chkNewFolder_Click() {
    const bool bNewFolder = controls_.chkNewFolder->isChecked();
    controls_.chkDeleteFolder->setEnabled(bNewFolder);
    if (!bNewFolder)
        controls_.chkDeleteFolder->setChecked(false);
    MarkDirty();
}

void frmBrennikConfig::cboPlatForm_Click() {
    const int32_t lPlatform = controls_.cboPlatForm->currentIndex();
    if (lPlatform < 0)
        return;
    controls_.cboEprom->Clear();
    controls_.cboApp->Clear();
    for (int32_t i = 0; i < oConfig->GetEpromCount(lPlatform); ++i)
        controls_.cboEprom->AddItem(oConfig->GetEpromName(lPlatform, i));
    controls_.cboEprom->ChooseFirst();
    for (int32_t i = 0; i < oConfig->GetApplicationCount(lPlatform); ++i)
        controls_.cboApp->AddItem(oConfig->GetApplicationName(lPlatform, i));
    controls_.cboApp->ChooseFirst();
    MarkDirty();
}

// A picker left by Esc gives the start folder back, as if it had been chosen: meant.
void frmBrennikConfig::Browse(TextField& field, const char* strTitle) {
    strSelDirTitle = strTitle;
    strSelDirPath = field.Bytes();
    frmSelDir(this).exec();
    if (strSelDirPath.empty())
        return;
    field.SetBytes(strSelDirPath);
    MarkDirty();
}

// The mode that is written here tells the serial dialog its side; Apply and closing put it right.
void frmBrennikConfig::cmdComms_Click() {
    if (Mode().bSerialServer) {
        oConfig->lOperatingMode(kSerialServerSide);
        frmPTSerialConfig(this).exec();
    } else {
        oConfig->lOperatingMode(kModeTcpClient);
        frmPTNetworkConfig(this).exec();
    }
    MarkDirty();
}

void frmBrennikConfig::cmdClientComms_Click() {
    oConfig->lOperatingMode(kSerialClientSide);
    frmPTSerialConfig(this).exec();
    MarkDirty();
}

void frmBrennikConfig::cmdApply_Click() {
    const PointerShape hourglass(Qt::WaitCursor);
    CopyFieldsToConfig();
    const bool bNewProfile = lProfileId == -1;
    if (oConfig->SaveConfiguration(ConfigFileLoc(), lProfileId, bNewProfile) != 0) {
        Tell(QMessageBox::Warning,
             "Failed saving application configuration.\r\n" + oConfig->strErrorMessage());
        return;
    }
    Tell(QMessageBox::Information, "Application configuration successfully saved.");
    // Not the number that the profile was given but 0, where another Apply then goes: meant.
    if (bNewProfile)
        lProfileId = oConfig->lNewProfileId();
    controls_.cmdApply->setEnabled(false);
    bProfileSaved = true;
}

void frmBrennikConfig::Tell(QMessageBox::Icon icon, const std::string& strText) {
    const PointerShape arrow(Qt::ArrowCursor); // there is nothing to wait for while a box is open
    ShowMessageBox(this, icon, strText);
}

void frmBrennikConfig::CopyFieldsToConfig() {
    const OperatingMode& mode = Mode();
    oConfig->lOperatingMode(controls_.cboOperatingMode->currentIndex());
    oConfig->lServerMode(mode.lServerMode);
    if (mode.lClientMode)
        oConfig->lClientMode(*mode.lClientMode);
    oConfig->strPlatformName(controls_.cboPlatForm->Bytes());
    oConfig->strEpromID(controls_.cboEprom->Bytes());
    oConfig->strApplicationID(controls_.cboApp->Bytes());
    oConfig->lDownloadType(controls_.cboDlType->currentIndex());
    for (const TextSetting& setting : TextSettings())
        (oConfig.get()->*setting.set)(setting.field(controls_)->Bytes());
    for (const NumberSetting& setting : NumberSettings())
        (oConfig.get()->*setting.set)(OstrandString::StrToLong(setting.field(controls_)->Bytes()));
    for (const CheckSetting& setting : CheckSettings())
        (oConfig.get()->*setting.set)((controls_.*setting.box)->isChecked());
    oConfig->lPassThruType(controls_.cboPassThruType->currentIndex());
    CopyUploadTypesToConfig();
}

// A disabled box counts by its check mark like any other.
void frmBrennikConfig::CopyUploadTypesToConfig() {
    oConfig->AddUploadFileType(kUploadAllFiles);
    if (controls_.chkUploadAllFiles->isChecked())
        return;
    if (controls_.chkUploadLogFiles->isChecked())
        oConfig->AddUploadFileType(kUploadLogFiles);
    if (controls_.chkUploadTransactionFile->isChecked())
        oConfig->AddUploadFileType(kUploadTransactionFile);
}

void frmBrennikConfig::cmdClose_Click() {
    if (controls_.cmdApply->isEnabled() && AskYesNo(this, "Save changes to Brennik Profile?"))
        Quietly([&] { cmdApply_Click(); });
    reject();
}

} // namespace brennik
