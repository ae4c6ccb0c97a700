// A drop-down list over bytes, fixed or with typed text, as the windows of the configuration offer
// platforms, modes and serial settings. Entries are UTF-8 and come back byte for byte, also when
// they aren't. A standard combo box of the toolkit; tests use it as it is.
#pragma once

#include "support/ListControl.h"

#include <QComboBox>
#include <string>
#include <string_view>

namespace brennik {

enum class ListKind {
    Fixed, ///< takes no text that it doesn't hold
    Typed, ///< takes any text
};

/// Handlers stand on what the user does: activated, and textEdited of the line edit. Filling it and
/// choosing by code signals neither.
class ListField : public QComboBox, public ListControl {
  public:
    ListField(const char* strName, ListKind kind);

    void Clear() override;
    void AddItem(const std::string& strItem) override;

    /// Selects the first entry, if there is one.
    void ChooseFirst();

    /// Shows the text. A fixed list throws InvalidProcedureCall for a text that it doesn't hold and
    /// keeps its choice; one without any entry shows the empty text and so takes that one.
    void SetBytes(std::string_view strBytes);

    /// The chosen entry, or what was typed; empty when nothing is chosen.
    std::string Bytes() const;

  protected:
    /// Ctrl+Tab belongs to the tabs around it; the toolkit would look for an entry of that name.
    void keyPressEvent(QKeyEvent* event) override;

  private:
    std::string ItemBytes(int nIndex) const;

    std::string strTyped_; ///< set by code and not among the entries
    QString strTypedShown_;
};

} // namespace brennik
