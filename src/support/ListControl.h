// A list-like control as the tables and the INI file fill it: two operations, no toolkit.
// For real a combo or list box of the dialogs stands behind it; tests put a plain list there.
#pragma once

#include <string>

namespace brennik {

class ListControl {
  public:
    virtual ~ListControl() = default;

    virtual void Clear() = 0;
    virtual void AddItem(const std::string& strItem) = 0;
};

} // namespace brennik
