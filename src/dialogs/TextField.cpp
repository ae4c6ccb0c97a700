#include "dialogs/TextField.h"

#include "dialogs/WindowText.h"

namespace brennik {

TextField::TextField(const char* strName, int nMaxLength) {
    setObjectName(QString::fromLatin1(strName));
    if (nMaxLength > 0)
        setMaxLength(nMaxLength);
    // What didn't fit is gone with the first edit: whoever comes back to the same text means that.
    connect(this, &QLineEdit::textEdited, this, [this] {
        if (strShown_ != LineText(strBytes_))
            strBytes_ = BytesOf(strShown_);
    });
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
