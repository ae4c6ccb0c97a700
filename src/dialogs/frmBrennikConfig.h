// The window in which one profile is added or edited: lProfileId says which, -1 a new one. Edits
// through the shell's oConfig; Apply saves it, and closing loads it again, so that what was not
// applied is dropped. Works on the configuration file in the program's own folder, over the current
// host. ConfigControls tells what there is to see.
#pragma once

#include "dialogs/ConfigControls.h"

#include <QDialog>
#include <QMessageBox>
#include <cstdint>
#include <string>

namespace brennik {

struct OperatingMode;

/// Whether the window has saved a profile: set here, cleared and looked at by whoever opens it.
extern bool bProfileSaved;

/// cmdApply is enabled exactly when there is something to save; there is no other mark of that.
/// Handlers stand on what the user does. Filling by code runs those alone that the fill calls.
class frmBrennikConfig : public QDialog {
  public:
    /// Filled with the profile lProfileId, or blank for -1.
    explicit frmBrennikConfig(QWidget* parent);

    /// Shows the window. When the profile could not be filled in, shows a warning instead.
    int exec() override;

    /// Every way to close ends here: loads lProfileId into oConfig again. Asks nothing.
    void done(int nResult) override;

  protected:
    /// Enter presses the button that has the focus, and nothing else.
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void ConnectHandlers();
    void ConnectEdits();
    void MarkDirty();

    void InitialiseFields();
    void FillLists();
    /// False after a failure, which then stands in strFailure_.
    bool FillFieldsFromConfig();
    void FillFromConfig();
    /// Throws for a mode that there isn't.
    void SelectMode(int32_t lMode);
    void FillUploadTypes();
    void CopyFieldsToConfig();
    void CopyUploadTypesToConfig();
    void Tell(QMessageBox::Icon icon, const std::string& strText);

    const OperatingMode& Mode() const;
    /// Applies the operating mode to the other controls.
    void SetModeControls();
    bool bUploadChosen() const;
    void SetUploadBoxesEnabled(bool bEnabled);

    void cboPassThruType_Click();
    void chkUploadAllFiles_Click();
    void chkInjectPublicKey_Click();
    void chkNewFolder_Click();
    void cboPlatForm_Click();
    void Browse(TextField& field, const char* strTitle);
    void cmdComms_Click();
    void cmdClientComms_Click();
    void cmdApply_Click();
    void cmdClose_Click();

    ConfigControls controls_;
    bool bLoaded_ = true;
    std::string strFailure_; ///< the last failure of a load
};

} // namespace brennik
