// The list of the profiles, and the door to frmBrennikConfig, which adds or edits one: it sets
// lProfileId before and looks at bProfileSaved afterwards. Profiles are numbered without gaps from
// 1, so that the position in the list tells the number.
// Works on the configuration file in the program's own folder, over the current host.
#pragma once

#include <QDialog>
#include <cstdint>

class QListWidget;
class QPushButton;

namespace brennik {

class frmBrennikProfiles : public QDialog {
  public:
    explicit frmBrennikProfiles(QWidget* parent);

  private:
    void BuildControls();
    void FillProfileList();
    void SetButtonStates();
    /// Opens the editor for that profile, and lists the profiles anew if it has saved something.
    void EditProfile(int32_t lNumber);

    void cmdAdd_Click();
    void cmdModify_Click();
    void cmdDelete_Click();

    QListWidget* lstProfiles_;
    QPushButton* cmdModify_;
    QPushButton* cmdDelete_;
};

} // namespace brennik
