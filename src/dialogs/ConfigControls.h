// The controls of the configuration window and where they stand: four frames behind a tab strip,
// and two buttons below. Knows no rule and no profile: frmBrennikConfig gives them their life.
// Standard controls of the toolkit, each called by its name; arrays by index, as "txtComms(0)".
#pragma once

#include <array>

class QCheckBox;
class QDialog;
class QGroupBox;
class QLabel;
class QPushButton;
class QTabWidget;

namespace brennik {

class DigitField;
class ListField;
class TextField;

struct ConfigControls {
    /// Builds all controls into the window, which owns them. Empty, unchecked and enabled.
    explicit ConfigControls(QDialog& window);

    QTabWidget* TabStrip1;
    std::array<QGroupBox*, 4> fraBrennik;

    // General Settings
    TextField* txtProfileName;
    ListField* cboOperatingMode;
    QLabel* capDescription;
    ListField* cboPassThruType;
    QCheckBox* chkUploadAllFiles;
    QCheckBox* chkUploadLogFiles;
    QCheckBox* chkUploadTransactionFile;
    QCheckBox* chkPedDownload;

    // Communication Settings
    QPushButton* cmdComms;
    QPushButton* cmdClientComms;
    std::array<DigitField*, 5> txtComms;

    // Client Settings
    ListField* cboPlatForm;
    ListField* cboEprom;
    ListField* cboApp;
    DigitField* txtPTID;
    TextField* txtTid;
    DigitField* txtMemory;
    DigitField* txtBlockSize;
    ListField* cboDlType;
    TextField* txtConfigTitle;
    TextField* txtReleaseTitle;
    TextField* txtBaseFolder;
    QPushButton* cmdBrowse;
    QCheckBox* chkNewFolder;
    QCheckBox* chkDeleteFolder;
    TextField* txtScriptFileName;
    QCheckBox* chkExecuteScript;
    QCheckBox* chkInjectPublicKey;
    TextField* txtKeyFileLoc;
    QPushButton* cmdKeyFileLoc;

    // Logging
    QCheckBox* chkLogging;
    TextField* txtLogPath;
    QPushButton* cmdLogBrowse;
    TextField* txtLogFileName;
    QCheckBox* chkLogControlPkt;
    QCheckBox* chkLogProcessPkt;

    QPushButton* cmdApply;
    QPushButton* cmdClose;

  private:
    void BuildGeneral();
    void BuildComms();
    void BuildClient();
    void BuildLogging();
    void ReserveDescription();
};

} // namespace brennik
