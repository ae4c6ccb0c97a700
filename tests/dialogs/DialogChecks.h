// What the tests of the configuration's windows ask each of them: its labels, what its fields hold,
// the way of the Tab key through it, and what its lists offer.
#pragma once

#include "tests/windows/WindowsWorld.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <memory>
#include <string>
#include <vector>

namespace brennik::dialogs {

/// "label: field" for each label of a window that belongs to a field, in the order of their making.
inline std::vector<std::string> Labels(const QWidget& window) {
    std::vector<std::string> labels;
    for (const QLabel* label : window.findChildren<QLabel*>()) {
        if (label->buddy() != nullptr)
            labels.push_back(label->text().toStdString() + ": " +
                             label->buddy()->objectName().toStdString());
    }
    return labels;
}

/// "name=content" for each field, list and check box of a window, in the order of their making.
inline std::vector<std::string> Contents(const QWidget& window) {
    std::vector<std::string> contents;
    for (const QWidget* control : window.findChildren<QWidget*>()) {
        const std::string strName = control->objectName().toStdString();
        const std::string strKind = strName.substr(0, 3);
        if (strKind == "txt")
            contents.push_back(strName + "=" +
                               dynamic_cast<const QLineEdit&>(*control).text().toStdString());
        else if (strKind == "cbo")
            contents.push_back(
                strName + "=" +
                dynamic_cast<const QComboBox&>(*control).currentText().toStdString());
        else if (strKind == "chk")
            contents.push_back(strName + "=" +
                               (dynamic_cast<const QCheckBox&>(*control).isChecked() ? "1" : "0"));
    }
    return contents;
}

/// The names of the controls that have the focus one after the other, once round the window.
inline std::vector<std::string> TabOrder(QWidget& window) {
    std::vector<std::string> names;
    const QWidget* first = window.focusWidget();
    do {
        names.push_back(window.focusWidget()->objectName().toStdString());
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    } while (window.focusWidget() != first && names.size() < 100);
    return names;
}

inline std::vector<std::string> Entries(const QComboBox& list) {
    std::vector<std::string> entries;
    for (int i = 0; i < list.count(); ++i)
        entries.push_back(list.itemText(i).toStdString());
    return entries;
}

/// Makes a window and shows it.
template <class Window>
std::unique_ptr<Window> Opened() {
    auto window = std::make_unique<Window>(nullptr);
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    return window;
}

} // namespace brennik::dialogs
