// A text box for digits, as the windows of the configuration take ports, times and sizes: each
// character that the user types passes the filter for digits. What is set by code or pasted is
// taken as it is. A standard line edit of the toolkit; tests use it as it is.
#pragma once

#include "dialogs/TextField.h"

class QInputMethodEvent;
class QKeyEvent;

namespace brennik {

class DigitField : public TextField {
  public:
    using TextField::TextField;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    /// What an input method or a dead key makes is typed too.
    void inputMethodEvent(QInputMethodEvent* event) override;
};

} // namespace brennik
