// The message boxes of the windows: plain text, one button or a question, and the system's name as
// their title unless one is told. Tests find them as the active modal window.
#pragma once

#include <QMessageBox>
#include <string_view>

class QWidget;

namespace brennik {

/// The name under which the system shows itself.
inline constexpr const char* kWindowCaption = "Ostrand Brennik Client";

/// Shows the text (bytes, lines ending in CR LF) over its parent, if any, and waits until the user
/// has closed the box; events go on meanwhile.
void ShowMessageBox(QWidget* parent, QMessageBox::Icon icon, std::string_view strText,
                    std::string_view strTitle = kWindowCaption);

/// The same with the buttons Yes and No, Yes being the one that Enter presses. True for Yes; Esc
/// and the close button are No.
bool AskYesNo(QWidget* parent, std::string_view strText,
              std::string_view strTitle = kWindowCaption);

} // namespace brennik
