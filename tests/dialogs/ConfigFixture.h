// The configuration window over the simulated host, and what a user does with its controls, each by
// its name. Modal windows that it opens are left to the ModalUser of the windows' world.
#pragma once

#include "dialogs/frmBrennikConfig.h"
#include "tests/windows/WindowsWorld.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QTabWidget>
#include <memory>
#include <string>
#include <vector>

namespace brennik::dialogs {

inline constexpr const char* kSaved = "Application configuration successfully saved.";

class ConfigTest : public windows::WindowsTest {
  protected:
    /// The configuration file of the program's folder, with the settings of each profile as told.
    void WriteSections(const std::vector<std::vector<std::string>>& profiles,
                       const std::string& strMore = "");

    /// Opens the window for that profile, once an earlier one is gone.
    frmBrennikConfig& Open(int32_t lNumber);
    frmBrennikConfig& Window() { return window_ == nullptr ? Open(1) : *window_; }
    /// By the window manager.
    void CloseWindow() { window_->close(); }

    template <class Control>
    Control& The(const std::string& strName) {
        return windows::Named<Control>(Window(), strName.c_str());
    }
    QWidget& Frame(int nFrame) {
        return The<QWidget>("fraBrennik(" + std::to_string(nFrame) + ")");
    }

    bool bDirty() { return The<QPushButton>("cmdApply").isEnabled(); }
    bool bChecked(const std::string& strName) { return The<QCheckBox>(strName).isChecked(); }
    /// Enabled by itself, whatever the frame around it is.
    bool bEnabled(const std::string& strName);
    /// What the field or list shows.
    std::string Shown(const std::string& strName);
    std::vector<std::string> Items(const std::string& strList);

    // As a user does it, on the tab of the control.
    void ShowTabOf(QWidget& control);
    void Click(const std::string& strName);
    void Check(const std::string& strName, bool bCheck);
    void Pick(const std::string& strList, int nItem);
    /// Replaces the text.
    void Type(const std::string& strField, const std::string& strText);

    /// Presses Apply and takes note of the box.
    void Apply();
    /// A question is coming, and this is the answer.
    void Answer(QMessageBox::StandardButton answer);
    /// The picker is coming: the user picks that folder, or leaves it by Esc.
    void ExpectFolderPick(const std::string& strTitle, const std::string& strStart,
                          const std::string& strFolder);

    /// The value of a key of a section as it stands in the file; "-" when there is none.
    std::string Stored(const std::string& strSection, const std::string& strKey) const;

  private:
    std::unique_ptr<frmBrennikConfig> window_;
};

} // namespace brennik::dialogs
