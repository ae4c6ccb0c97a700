#include "dialogs/frmSelDir.h"

#include "dialogs/DialogParts.h"
#include "dialogs/ListField.h"
#include "dialogs/MessageBoxes.h"
#include "dialogs/TextField.h"
#include "dialogs/WindowText.h"
#include "platform/Host.h"
#include "platform/IniText.h"
#include "platform/Paths.h"
#include "support/AsciiText.h"
#include "support/Failure.h"

#include <QByteArray>
#include <QGroupBox>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

namespace brennik {

std::string strSelDirPath;
std::string strSelDirTitle;

namespace {

constexpr const char* kUnavailable = "Device unavailable";
constexpr size_t kDriveRoot = 3; ///< the length of "C:\"

/// A list from which Enter doesn't go on to the default button.
template <class List>
class KeepingEnter : public List {
  public:
    using List::List;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        List::keyPressEvent(event);
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            event->accept();
    }
};

QGroupBox* FrameAround(const char* strHeading, QWidget* control) {
    auto* frame = new QGroupBox(QString::fromLatin1(strHeading));
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(control);
    control->setAccessibleName(frame->title());
    return frame;
}

std::string InDriveForm(const std::string& strText) {
    return DriveForm(strText, CurrentHost().files.Drives());
}

std::string CurrentFolder() {
    return CurrentHost().processes.CurrentDirectory();
}

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

/// "C:" of a path in drive form, otherwise nothing.
std::string DriveOf(const std::string& strPath) {
    const bool bDrive =
        strPath.size() > 1 && strPath[1] == ':' && (strPath.size() == 2 || IsSeparator(strPath[2]));
    return bDrive ? UpperCase(strPath.substr(0, 2)) : std::string();
}

/// Where the names of a path begin: behind "C:\", or behind the first separator.
size_t LengthOfRoot(const std::string& strPath) {
    if (!DriveOf(strPath).empty())
        return kDriveRoot;
    return !strPath.empty() && IsSeparator(strPath.front()) ? 1 : 0;
}

std::string Joined(const std::string& strFolder, const std::string& strName) {
    if (!strFolder.empty() && IsSeparator(strFolder.back()))
        return strFolder + strName;
    return strFolder + (strFolder.starts_with('/') ? '/' : '\\') + strName;
}

/// The path as the list has it: whole, in drive form, and without separators at its end unless it
/// is a root.
std::string Whole(const std::string& strText) {
    std::string strPath = strText;
    if (strPath.starts_with('\\') && !strPath.starts_with("\\\\"))
        strPath.front() = '/'; // a root by either separator
    else if (LengthOfRoot(strPath) == 0)
        strPath = Joined(CurrentFolder(), strPath);
    strPath = InDriveForm(strPath);
    if (strPath.size() < LengthOfRoot(strPath))
        strPath += '\\'; // "C:"
    while (strPath.size() > LengthOfRoot(strPath) && IsSeparator(strPath.back()))
        strPath.pop_back();
    return strPath;
}

/// The folder above; a root has none.
std::string ParentOf(const std::string& strPath) {
    const size_t nRoot = LengthOfRoot(strPath);
    if (strPath.size() <= nRoot)
        return {};
    return strPath.substr(0, std::max(strPath.find_last_of("\\/"), nRoot));
}

/// The names of the folders in a folder. Throws PathNotFound for one that can't be listed.
std::vector<std::string> SubFolders(const std::string& strFolder) {
    // A folder that can be read finds at least itself.
    const std::vector<FoundFile> found = CurrentHost().files.Find(Joined(strFolder, "*"));
    if (found.empty())
        throw RuntimeFailure(FailureKind::PathNotFound);
    std::vector<std::string> names;
    for (const FoundFile& entry : found) {
        const std::string& strName = entry.strName;
        // No text leads to a name with a "\" in it, and a profile can't hold one of two lines.
        if (entry.bFolder && strName != "." && strName != ".." &&
            strName.find('\\') == std::string::npos && CanStandOnOneLine(strName))
            names.push_back(strName);
    }
    return names;
}

} // namespace

frmSelDir::frmSelDir(QWidget* parent)
    : QDialog(parent),
      TxtDir_(new TextField("TxtDir")),
      Dir1_(new KeepingEnter<QListWidget>),
      Drive1_(new KeepingEnter<ListField>("Drive1", ListKind::Fixed)) {
    setObjectName(QStringLiteral("frmSelDir"));
    BuildControls();
    FillDrives();
    OpenAtStart();
}

void frmSelDir::BuildControls() {
    Dir1_->setObjectName(QStringLiteral("Dir1"));
    Dir1_->setUniformItemSizes(true);
    connect(Dir1_, &QListWidget::itemSelectionChanged, this, [this] { Dir1_Select(); });
    connect(Dir1_, &QListWidget::itemActivated, this, [this] { Dir1_Open(); });
    connect(Drive1_, &QComboBox::activated, this, [this] { Drive1_Change(); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(FrameAround("Path", TxtDir_));
    layout->addWidget(FrameAround("Directory", Dir1_), 1);
    layout->addWidget(FrameAround("Drive", Drive1_));
    layout->addLayout(OkAndCancel(
        *this, "btOK", "btCancel", [this] { btOK_Click(); }, [this] { btCancel_Click(); }));
    resize(420, 440);
}

void frmSelDir::FillDrives() {
    for (const auto& [letter, strFolder] : CurrentHost().files.Drives())
        Drive1_->AddItem(std::string(1, letter) + ":");
}

void frmSelDir::OpenAtStart() {
    setWindowTitle(LineText(strSelDirTitle));
    const bool bOpened = Available([&] {
        ShowFolders(strSelDirPath.empty() ? CurrentFolder() : strSelDirPath);
        TxtDir_->SetBytes(strFolder_);
    });
    // The list itself then stands on the current folder, as long as that can be shown.
    if (!bOpened && !strSelDirPath.empty())
        Quietly([&] { ShowFolders(CurrentFolder()); });
}

void frmSelDir::ShowFolders(const std::string& strFolder) {
    const std::string strWhole = Whole(strFolder);
    const std::vector<std::string> names = SubFolders(strWhole);
    const QSignalBlocker blocker(Dir1_);
    Dir1_->clear();
    const auto add = [&](const std::string& strName, const std::string& strPath) {
        auto* item = new QListWidgetItem(LineText(strName), Dir1_);
        item->setData(Qt::UserRole, QByteArray::fromStdString(strPath));
    };
    const std::string strParent = ParentOf(strWhole);
    if (!strParent.empty())
        add("..", Whole(strParent));
    for (const std::string& strName : names)
        add(strName, Whole(Joined(strWhole, strName)));
    strFolder_ = strWhole;
    strDrive_ = DriveOf(strWhole);
    ShowDrive();
}

void frmSelDir::ShowDrive() {
    if (strDrive_.empty())
        Drive1_->setCurrentIndex(-1); // a native path that lies under no drive
    else
        Drive1_->SetBytes(strDrive_);
}

std::string frmSelDir::SelectedFolder() const {
    const QList<QListWidgetItem*> items = Dir1_->selectedItems();
    return items.isEmpty() ? std::string()
                           : items.front()->data(Qt::UserRole).toByteArray().toStdString();
}

bool frmSelDir::Available(const std::function<void()>& body) {
    return Guarded(
        [&] {
            body();
            return true;
        },
        [&](const std::string&) {
            ShowMessageBox(isVisible() ? this : parentWidget(), QMessageBox::Critical, kUnavailable,
                           strSelDirTitle);
            return false;
        });
}

void frmSelDir::Dir1_Select() {
    const std::string strFolder = SelectedFolder();
    if (!strFolder.empty())
        TxtDir_->SetBytes(strFolder);
}

void frmSelDir::Dir1_Open() {
    const std::string strFolder = SelectedFolder();
    if (strFolder.empty())
        return;
    Available([&] {
        ShowFolders(strFolder);
        TxtDir_->SetBytes(strFolder_);
    });
}

void frmSelDir::Drive1_Change() {
    const bool bShown = Available([&] {
        ShowFolders(Drive1_->Bytes() + "\\");
        TxtDir_->SetBytes(strFolder_);
    });
    if (!bShown)
        ShowDrive();
}

void frmSelDir::btOK_Click() {
    const std::string strPath = InDriveForm(TxtDir_->Bytes());
    if (strPath != TxtDir_->Bytes())
        TxtDir_->SetBytes(strPath);
    if (!PathExists(strPath)) {
        if (!AskYesNo(this, strPath + " does not exist.\r\nWould you like to create it?"))
            return;
        if (CreateDir(strPath) != 0) {
            ShowMessageBox(this, QMessageBox::Warning, "Unable to create directory");
            strSelDirPath.clear();
            return;
        }
    }
    strSelDirPath = strPath;
    accept();
}

// Not what Esc does: that leaves strSelDirPath as it was, and this is meant.
void frmSelDir::btCancel_Click() {
    strSelDirPath.clear();
    reject();
}

bool frmSelDir::PathExists(const std::string& strFullPath) {
    return Guarded(
        [&] {
            Processes& processes = CurrentHost().processes;
            const std::string strBefore = processes.CurrentDirectory();
            // Nothing is left that couldn't be returned to.
            processes.ChangeDirectory(strBefore);
            processes.ChangeDirectory(strFullPath);
            processes.ChangeDirectory(strBefore);
            return true;
        },
        [](const std::string&) { return false; });
}

int16_t frmSelDir::CreateDir(const std::string& strFullPath) {
    const auto create = [](const std::string& strFolder) {
        if (!PathExists(strFolder))
            CurrentHost().files.CreateFolder(strFolder);
    };
    return Guarded(
        [&]() -> int16_t {
            size_t nRootEnd = kDriveRoot - 1;
            if (strFullPath.starts_with('\\'))
                nRootEnd = strFullPath.find('\\', 2);
            // Without such a backslash the root is empty.
            const size_t nRest = nRootEnd == std::string::npos ? 0 : nRootEnd + 1;
            const std::string strRoot = strFullPath.substr(0, nRest);
            const std::string strRest =
                nRest < strFullPath.size() ? strFullPath.substr(nRest) : std::string();
            for (size_t n = strRest.find('\\'); n != std::string::npos && n + 1 < strRest.size();
                 n = strRest.find('\\', n + 1))
                create(strRoot + Trim(strRest.substr(0, n)));
            create(strFullPath);
            return 0;
        },
        [](const std::string&) -> int16_t { return 1; });
}

} // namespace brennik
