// A plug-in of the toolkit that tells a test what a real program shows: loaded into the unchanged
// program by the environment, it writes what stands in the windows to a file, again and again.
#pragma once

#include <QGenericPlugin>
#include <QTimer>

namespace brennik::windows {

class WindowWatch : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "WindowWatch.json")

  public:
    /// What follows the colon of the name of the plug-in is the path of the file.
    QObject* create(const QString& strKey, const QString& strFile) override;
};

/// One line for each visible window, then those of its parts that hold text:
///     window Download Status
///     field txtBrennik(0) IDLE
///     box Communications...         (line ends as blanks)
///     focus Command1                (of the active window)
///     file C:\srv\|readme.txt
class WindowWriter : public QObject {
    Q_OBJECT

  public:
    explicit WindowWriter(QString strFile);

  private:
    void Write();

    QString strFile_;
    QByteArray last_;
    QTimer timer_;
};

} // namespace brennik::windows
