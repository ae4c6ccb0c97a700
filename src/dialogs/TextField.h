// A text box over bytes, as the windows of the configuration edit them: text is UTF-8, and what the
// user did not edit comes back byte for byte, also when its bytes aren't UTF-8 or when it is longer
// than the box may take. A standard line edit of the toolkit; tests use it as it is.
#pragma once

#include <QLineEdit>
#include <string>
#include <string_view>

namespace brennik {

class TextField : public QLineEdit {
  public:
    /// Of that object name, for at most that many characters typed (0: no limit of its own).
    explicit TextField(const char* strName, int nMaxLength = 0);

    /// Shows the bytes. No edit: textEdited isn't signalled.
    void SetBytes(std::string_view strBytes);

    /// The bytes that were set, as long as the box shows what it showed then; otherwise what it
    /// shows, as UTF-8. Of bytes that are longer than the box, an edit leaves what was shown.
    std::string Bytes() const;

  private:
    std::string strBytes_;
    QString strShown_;
};

} // namespace brennik
