// The window with the serial values of one side of a profile. Which side follows from the
// lOperatingMode that stands in the shell's oConfig when the window opens. Edits oConfig, never
// the file. Tests look at its controls by their names.
#pragma once

#include <QDialog>
#include <cstdint>

class QCheckBox;

namespace brennik {

class ListField;

/// What lOperatingMode says to this window: 1 is the Server side, any other value the Client side.
inline constexpr int32_t kSerialServerSide = 1;
inline constexpr int32_t kSerialClientSide = 2;

class frmPTSerialConfig : public QDialog {
  public:
    /// Filled from oConfig; exec() shows it. "OK" copies the fields back, anything else nothing.
    explicit frmPTSerialConfig(QWidget* parent);

  private:
    void BuildControls();
    void FillLists();
    void FillFields();

    void cmdOK_Click();

    bool bServerSide_; ///< as it was on opening
    ListField* cboPort_;
    ListField* cboBaudRate_;
    ListField* cboParity_;
    ListField* cboDatabits_;
    ListField* cboStopbit_;
    ListField* cboFlowControl_;
    QCheckBox* chkAutobaud_;
};

} // namespace brennik
