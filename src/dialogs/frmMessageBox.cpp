#include "dialogs/frmMessageBox.h"

#include "dialogs/frmText.h"

namespace brennik {

void ShowMessageBox(QWidget* parent, QMessageBox::Icon icon, std::string_view strText) {
    QMessageBox box(icon, QString::fromLatin1(kWindowCaption), QString(), QMessageBox::Ok, parent);
    box.setObjectName(QStringLiteral("MessageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setText(MessageText(strText));
    box.exec();
}

} // namespace brennik
