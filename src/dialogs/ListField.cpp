#include "dialogs/ListField.h"

#include "dialogs/WindowText.h"
#include "platform/RuntimeFailure.h"

#include <QByteArray>
#include <QKeyEvent>

namespace brennik {

ListField::ListField(const char* strName, ListKind kind) {
    setObjectName(QString::fromLatin1(strName));
    if (kind == ListKind::Typed) {
        setEditable(true);
        setInsertPolicy(QComboBox::NoInsert);
        setCompleter(nullptr); // free text is taken as it stands
    }
}

void ListField::Clear() {
    clear();
    if (isEditable())
        clearEditText(); // typed text is no entry, and the toolkit would leave it
    strTyped_.clear();
    strTypedShown_.clear();
}

// The first entry isn't chosen by being added, as the toolkit would have it.
void ListField::AddItem(const std::string& strItem) {
    const int nChosen = currentIndex();
    addItem(LineText(strItem), QByteArray::fromStdString(strItem));
    setCurrentIndex(nChosen);
}

void ListField::ChooseFirst() {
    if (count() > 0)
        setCurrentIndex(0);
}

std::string ListField::ItemBytes(int nIndex) const {
    return itemData(nIndex).toByteArray().toStdString();
}

void ListField::SetBytes(std::string_view strBytes) {
    for (int i = 0; i < count(); ++i) {
        if (ItemBytes(i) == strBytes) {
            setCurrentIndex(i);
            return;
        }
    }
    if (isEditable()) {
        setCurrentIndex(-1);
        strTyped_ = strBytes;
        strTypedShown_ = LineText(strBytes);
        setEditText(strTypedShown_);
    } else if (count() > 0 || !strBytes.empty()) {
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    }
}

std::string ListField::Bytes() const {
    const int nIndex = currentIndex();
    if (!isEditable())
        return nIndex < 0 ? std::string() : ItemBytes(nIndex);
    if (nIndex >= 0 && itemText(nIndex) == currentText())
        return ItemBytes(nIndex);
    return currentText() == strTypedShown_ ? strTyped_ : BytesOf(currentText());
}

void ListField::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab)
        event->ignore();
    else
        QComboBox::keyPressEvent(event);
}

} // namespace brennik
