#include "dialogs/WindowText.h"

namespace brennik {

namespace {

constexpr char16_t kControlPictures = 0x2400; ///< of the characters 0 to 31, in their order
constexpr char16_t kDeletePicture = 0x2421;

bool TurnsDirection(char16_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E ||
           c == 0x200F || c == 0x061C;
}

bool BreaksLine(char16_t c) {
    return c == 0x2028 || c == 0x2029;
}

QChar Visible(QChar character) {
    const char16_t c = character.unicode();
    if (c < 0x20)
        return QChar(static_cast<char16_t>(kControlPictures + c));
    if (c == 0x7F)
        return QChar(kDeletePicture);
    if ((c >= 0x80 && c < 0xA0) || TurnsDirection(c) || BreaksLine(c))
        return QChar(QChar::ReplacementCharacter);
    return character;
}

} // namespace

QString LineText(std::string_view strBytes) {
    QString strText = QString::fromUtf8(strBytes.data(), static_cast<qsizetype>(strBytes.size()));
    for (QChar& c : strText)
        c = Visible(c);
    return strText;
}

QString MessageText(std::string_view strBytes) {
    QString strText;
    while (true) {
        const size_t nEnd = strBytes.find('\n');
        std::string_view strLine = strBytes.substr(0, nEnd);
        if (nEnd != std::string_view::npos && strLine.ends_with('\r'))
            strLine.remove_suffix(1);
        strText += LineText(strLine);
        if (nEnd == std::string_view::npos)
            return strText;
        strText += QChar(u'\n');
        strBytes.remove_prefix(nEnd + 1);
    }
}

std::string BytesOf(const QString& strText) {
    const std::string strBytes = strText.toStdString();
    return strBytes.substr(0, strBytes.find_first_of(std::string_view("\r\n\0", 3)));
}

} // namespace brennik
