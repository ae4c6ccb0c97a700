// The folder picker of the configuration, which can also create the folder typed into it. Start
// folder, title and result pass through two strings that its callers share with it.
// Works over the folders and drives of the current host; paths show in drive form.
#pragma once

#include <QDialog>
#include <cstdint>
#include <functional>
#include <string>

class QListWidget;

namespace brennik {

class ListField;
class TextField;

/// The folder to start at, empty for the current one; afterwards the chosen folder, empty when
/// nothing was chosen.
extern std::string strSelDirPath;

/// The title of the picker.
extern std::string strSelDirTitle;

class frmSelDir : public QDialog {
  public:
    /// Opens at strSelDirPath; exec() shows it. "Cancel" empties strSelDirPath, Esc and the close
    /// button leave it as it was: both are meant.
    explicit frmSelDir(QWidget* parent);

  private:
    void BuildControls();
    void OpenAtStart();
    void FillDrives();
    /// Moves Dir1 there, and Drive1 with it. Throws PathNotFound and leaves both as they were.
    void ShowFolders(const std::string& strFolder);
    void ShowDrive();
    /// The path of what is selected in Dir1; empty without a selection.
    std::string SelectedFolder() const;
    /// Runs the body; False when it failed, which a box has told then.
    bool Available(const std::function<void()>& body);

    void Dir1_Select();
    void Dir1_Open();
    void Drive1_Change();
    void btOK_Click();
    void btCancel_Click();

    /// Whether the process could work in that folder. Leaves the current folder as it was.
    static bool PathExists(const std::string& strFullPath);
    /// Makes the folder with all those above it. 0 done, 1 failed; what was made stays.
    static int16_t CreateDir(const std::string& strFullPath);

    TextField* TxtDir_;
    QListWidget* Dir1_;
    ListField* Drive1_;
    std::string strFolder_; ///< the path of Dir1
    std::string strDrive_;  ///< the drive shown last
};

} // namespace brennik
