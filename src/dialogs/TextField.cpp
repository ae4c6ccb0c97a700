#include "dialogs/TextField.h"

#include "dialogs/WindowText.h"

namespace brennik {

TextField::TextField(const char* strName, int nMaxLength) {
    setObjectName(QString::fromLatin1(strName));
    if (nMaxLength > 0)
        setMaxLength(nMaxLength);
}

void TextField::SetBytes(std::string_view strBytes) {
    strBytes_ = strBytes;
    setText(LineText(strBytes));
    strShown_ = text();
}

std::string TextField::Bytes() const {
    return text() == strShown_ ? strBytes_ : BytesOf(text());
}

} // namespace brennik
