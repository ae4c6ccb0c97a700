// The message box of the windows: plain text, one button, and the system's name as its title.
// Tests find it as the active modal window.
#pragma once

#include <QMessageBox>
#include <string_view>

class QWidget;

namespace brennik {

/// The name under which the system shows itself.
inline constexpr const char* kWindowCaption = "Ostrand Brennik Client";

/// Shows the text (bytes, lines ending in CR LF) over its parent, if any, and waits until the user
/// has closed the box; events go on meanwhile.
void ShowMessageBox(QWidget* parent, QMessageBox::Icon icon, std::string_view strText);

} // namespace brennik
