#include "dialogs/DialogParts.h"

#include "dialogs/WindowText.h"

#include <QDialog>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <utility>

namespace brennik {

QLabel* LabelOf(const std::string& strText, QWidget* field) {
    auto* label = new QLabel(LineText(strText));
    label->setBuddy(field);
    return label;
}

QPushButton* ButtonOf(const char* strName, const char* strText, std::function<void()> onClick) {
    auto* button = new QPushButton(QString::fromLatin1(strText));
    button->setObjectName(QString::fromLatin1(strName));
    if (onClick)
        QObject::connect(button, &QPushButton::clicked, button, std::move(onClick));
    return button;
}

QBoxLayout* OkAndCancel(QDialog& window, const char* strOk, const char* strCancel,
                        std::function<void()> onOk, std::function<void()> onCancel) {
    if (!onCancel)
        onCancel = [&window] { window.reject(); };
    auto* ok = ButtonOf(strOk, "&OK", std::move(onOk));
    ok->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(ButtonOf(strCancel, "&Cancel", std::move(onCancel)));
    return buttons;
}

int WidthOf(const QWidget& field, int nDigits) {
    constexpr int kFrame = 4; // digits more, for frame and margins
    return field.fontMetrics().horizontalAdvance(QChar(u'0')) * (nDigits + kFrame);
}

} // namespace brennik
