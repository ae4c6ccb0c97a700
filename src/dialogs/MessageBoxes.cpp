#include "dialogs/MessageBoxes.h"

#include "dialogs/WindowText.h"

namespace brennik {

namespace {

int Shown(QWidget* parent, QMessageBox::Icon icon, std::string_view strText,
          std::string_view strTitle, QMessageBox::StandardButtons buttons) {
    QMessageBox box(icon, LineText(strTitle), QString(), buttons, parent);
    box.setObjectName(QStringLiteral("MessageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setText(MessageText(strText));
    if ((buttons & QMessageBox::Yes) != 0) {
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::No);
    }
    return box.exec();
}

} // namespace

void ShowMessageBox(QWidget* parent, QMessageBox::Icon icon, std::string_view strText,
                    std::string_view strTitle) {
    Shown(parent, icon, strText, strTitle, QMessageBox::Ok);
}

bool AskYesNo(QWidget* parent, std::string_view strText, std::string_view strTitle) {
    return Shown(parent, QMessageBox::Question, strText, strTitle,
                 QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

} // namespace brennik
