// Parts that the windows of the configuration share: labels that belong to their fields, and the
// row of buttons. Standard controls of the toolkit; tests meet them in the windows.
#pragma once

#include <functional>
#include <string>

class QBoxLayout;
class QDialog;
class QLabel;
class QPushButton;
class QWidget;

namespace brennik {

/// A label with that text, which belongs to the field. Both are the caller's to place.
QLabel* LabelOf(const std::string& strText, QWidget* field);

/// A button of that object name; onClick, if any, runs at each click.
QPushButton* ButtonOf(const char* strName, const char* strText, std::function<void()> onClick = {});

/// A row with "&OK", the button that Enter presses, and "&Cancel", which closes the window unless
/// something else is given for it.
QBoxLayout* OkAndCancel(QDialog& window, const char* strOk, const char* strCancel,
                        std::function<void()> onOk, std::function<void()> onCancel = {});

/// The width at which a field shows so many digits.
int WidthOf(const QWidget& field, int nDigits);

} // namespace brennik
