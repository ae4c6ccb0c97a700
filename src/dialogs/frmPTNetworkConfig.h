// The window with the TCP/IP values of a profile's first link: three addresses with their ports,
// and the connection time-out. Edits the shell's oConfig, never the file.
// Tests look at its controls by their names.
#pragma once

#include <QDialog>
#include <array>

class QCheckBox;
class QGroupBox;

namespace brennik {

class DigitField;
class TextField;

class frmPTNetworkConfig : public QDialog {
  public:
    /// Filled from oConfig; exec() shows it. "OK" copies the fields back, anything else nothing.
    explicit frmPTNetworkConfig(QWidget* parent);

  private:
    void BuildControls();
    QGroupBox* TimeoutFrame();
    void FillFields();

    void chkNonBlock_Click();
    void cmdOK_Click();

    std::array<TextField*, 3> txtIP_{};
    std::array<DigitField*, 3> txtPort_{};
    QCheckBox* chkNonBlock_;
    DigitField* txtConnTimeout_;
};

} // namespace brennik
