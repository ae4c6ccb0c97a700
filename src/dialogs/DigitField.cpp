#include "dialogs/DigitField.h"

#include "dialogs/TextBoxFormat.h"

#include <QInputMethodEvent>
#include <QKeyEvent>

namespace brennik {

namespace {

QString Filtered(const QString& strTyped) {
    QString strTaken;
    for (const QChar c : strTyped) {
        const int16_t iKey = TextBoxFormat::NumericBox(static_cast<int16_t>(c.unicode()), 0, 0, 0);
        if (iKey != 0)
            strTaken += QChar(static_cast<char16_t>(iKey));
    }
    return strTaken;
}

/// Text that a line edit would take in, not a command to it.
bool IsTyped(const QKeyEvent& event) {
    const bool bCommand = event.modifiers() == Qt::ControlModifier ||
                          event.modifiers() == (Qt::ControlModifier | Qt::ShiftModifier);
    return !bCommand && !event.text().isEmpty() &&
           event.text().front().category() != QChar::Other_Control;
}

} // namespace

void DigitField::keyPressEvent(QKeyEvent* event) {
    if (!IsTyped(*event)) {
        TextField::keyPressEvent(event);
        return;
    }
    const QString strTaken = Filtered(event->text());
    if (strTaken.isEmpty()) {
        event->accept();
        return;
    }
    QKeyEvent digits(event->type(), event->key(), event->modifiers(), strTaken,
                     event->isAutoRepeat());
    TextField::keyPressEvent(&digits);
}

void DigitField::inputMethodEvent(QInputMethodEvent* event) {
    QInputMethodEvent digits(event->preeditString(), event->attributes());
    digits.setCommitString(Filtered(event->commitString()), event->replacementStart(),
                           event->replacementLength());
    TextField::inputMethodEvent(&digits);
}

} // namespace brennik
