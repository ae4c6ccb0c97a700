#include "tests/windows/watch/WindowWatch.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QSaveFile>
#include <QTreeWidget>

namespace brennik::windows {

namespace {

constexpr int kInterval = 20; // ms

QByteArray Shown(const QWidget& window) {
    QByteArray text = "window " + window.windowTitle().toUtf8() + "\n";
    if (const auto* box = dynamic_cast<const QMessageBox*>(&window))
        text += "box " + box->text().replace(QLatin1Char('\n'), QLatin1Char(' ')).toUtf8() + "\n";
    for (const QLineEdit* field : window.findChildren<QLineEdit*>())
        text += "field " + field->objectName().toUtf8() + " " + field->text().toUtf8() + "\n";
    for (const QTreeWidget* list : window.findChildren<QTreeWidget*>()) {
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            text += "file " + list->topLevelItem(i)->text(1).toUtf8() + "|" +
                    list->topLevelItem(i)->text(2).toUtf8() + "\n";
    }
    if (window.isActiveWindow() && QApplication::focusWidget() != nullptr)
        text += "focus " + QApplication::focusWidget()->objectName().toUtf8() + "\n";
    return text;
}

} // namespace

QObject* WindowWatch::create(const QString&, const QString& strFile) {
    return new WindowWriter(strFile);
}

WindowWriter::WindowWriter(QString strFile) : strFile_(std::move(strFile)) {
    connect(&timer_, &QTimer::timeout, this, [this] { Write(); });
    timer_.start(kInterval);
}

void WindowWriter::Write() {
    QByteArray text;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible())
            text += Shown(*window);
    }
    if (text == last_)
        return;
    QSaveFile file(strFile_);
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        last_ = text;
}

} // namespace brennik::windows
