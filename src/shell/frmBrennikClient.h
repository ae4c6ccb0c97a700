// The main window: one menu, and the list of the files that have come down.
// It picks a profile with frmSelectProfile and runs it in frmBrennikStatus, which adds to the list;
// frmBrennikProfiles, behind "Configuration", edits them.
// Stands on the shell's oConfig and lProfileId, over the current host, which tests replace.
#pragma once

#include <QMainWindow>
#include <cstdint>
#include <string_view>

class QAction;
class QTreeWidget;

namespace brennik {

class frmBrennikClient : public QMainWindow {
  public:
    frmBrennikClient();

    /// Adds a line to lstFiles, with the date and time of this moment.
    void AddDownloadedFile(std::string_view strFolder, std::string_view strFileName);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Refused while a window is open on top, and so during a run.
    void closeEvent(QCloseEvent* event) override;

  private:
    QAction* AddMenuItem(int32_t lIndex, const char* strText, const char* strShortcut);
    void BuildList();
    void ArrangeList();
    void ArrangeColumns();
    void TakeColumnWidth(int nSection, int nWidth);

    void mnuActionItem_Click(int32_t lIndex);
    void RunBrennikProfile();

    QTreeWidget* lstFiles_;
    double dFolderShare_ = 0.6; ///< of the width beside the dates, as the user has set it
    bool bArranging_ = false;
    bool bWindowOnTop_ = false;
};

} // namespace brennik
