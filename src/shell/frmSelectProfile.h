// The picker that decides what a run will do: a profile, and the application and terminal id that
// are written into it for good. Loads the shell's oConfig and sets lProfileId.
// Works on the configuration file in the program's own folder, over the current host.
#pragma once

#include <QDialog>

class QComboBox;
class QLineEdit;
class QListWidget;

namespace brennik {

class frmSelectProfile : public QDialog {
  public:
    explicit frmSelectProfile(QWidget* parent);

    /// "Cancel", Esc and the close button alike: no profile is picked, and oConfig stays.
    void reject() override;

  private:
    void BuildControls();
    void LoadProfiles();
    void LoadApplications();
    /// The application as it is to be written.
    std::string ApplicationName() const;

    void cmdSelect_Click();
    void TakeProfile();

    QListWidget* lstProfile_;
    QComboBox* cboAppName_;
    QLineEdit* txtTid_;
};

} // namespace brennik
