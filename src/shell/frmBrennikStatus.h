// The status window: runs the picked profile inside the handler of its start timer and shows what
// the engine is doing. All else (updates, the cancel button) runs nested inside the engine's
// pumping of events and only records or copies. Stands on the shell's oConfig, oProtocol and
// lProfileId, over the current host, which tests replace.
#pragma once

#include <QDialog>
#include <QTimer>
#include <array>
#include <cstdint>

class QLineEdit;
class QProgressBar;

namespace brennik {

class frmBrennikClient;

class frmBrennikStatus : public QDialog {
  public:
    /// The main window, whose list and caption the run changes; it must outlive this.
    explicit frmBrennikStatus(frmBrennikClient& oMainWindow);

    /// Every way to close the window ends here, Esc and the close button alike. Refused while a run
    /// is on.
    void reject() override;

    /// Shows how much of a file has come: lValue of lTotal, as a part of lMax. A total of 0 or less
    /// and a value outside the bar leave it where it was.
    static void UpdateProgressBar(QProgressBar& oBar, int32_t lMin, int32_t lMax, int32_t lValue,
                                  int32_t lTotal);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    static constexpr size_t kFields = 4;

    void BuildControls();
    void SetFieldColours();
    void SetField(size_t nField, std::string_view strText);

    void tmrStart_Timer();
    void RunProfile();
    void RunScript();
    void tmrUpdate_Timer();
    void ListNewFiles();
    void Command1_Click();

    frmBrennikClient& oMainWindow_;
    std::array<QLineEdit*, kFields> txtBrennik_{};
    QProgressBar* ProgressBar1_;
    QTimer tmrStart_;
    QTimer tmrUpdate_;
    bool bBusy_ = false;
    int32_t lNextFile_ = 0; ///< the first entry of the download array that isn't in the list yet
};

} // namespace brennik
