#include "shell/frmBrennikClient.h"

#include "dialogs/MessageBoxes.h"
#include "dialogs/WindowText.h"
#include "dialogs/frmBrennikProfiles.h"
#include "generated/Version.h"
#include "platform/Clock.h"
#include "shell/BrennikClnt.h"
#include "shell/frmBrennikStatus.h"
#include "shell/frmSelectProfile.h"
#include "support/Failure.h"

#include <QAction>
#include <QCloseEvent>
#include <QDate>
#include <QHeaderView>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QTreeWidget>
#include <algorithm>

namespace brennik {

namespace {

constexpr int kTwipsPerPixel = 15;
constexpr int kListMarginWidth = 100 / kTwipsPerPixel;  ///< the list is narrower than the window
constexpr int kListMarginHeight = 700 / kTwipsPerPixel; ///< and lower
constexpr int kLeastShown = 60;

enum Column { kDate, kFolder, kFileName };

QString TwoDigits(int32_t iNumber) {
    return QStringLiteral("%1").arg(iNumber, 2, 10, QLatin1Char('0'));
}

QString DateAndTimeText(const DateTime& moment) {
    const QDate date(moment.iYear, moment.iMonth, moment.iDay);
    return QLocale().toString(date, QLocale::ShortFormat) + QLatin1Char(' ') +
           TwoDigits(moment.iHour) + QLatin1Char(':') + TwoDigits(moment.iMinute) +
           QLatin1Char(':') + TwoDigits(moment.iSecond);
}

// A tool tip guesses its format; escaped inside a paragraph of ours, the text is never taken for
// more than it is.
QString PlainToolTip(const QString& strText) {
    return QStringLiteral("<p style='white-space:pre'>%1</p>").arg(strText.toHtmlEscaped());
}

QString CaptionWithVersion() {
    return QStringLiteral("%1 v%2.%3.%4")
        .arg(QLatin1String(kWindowCaption))
        .arg(kVersionMajor)
        .arg(kVersionMinor)
        .arg(kVersionRevision);
}

} // namespace

frmBrennikClient::frmBrennikClient() : lstFiles_(new QTreeWidget(this)) {
    setObjectName(QStringLiteral("frmBrennikClient"));
    setWindowTitle(CaptionWithVersion());
    QMenu* mnuAction = menuBar()->addMenu(QStringLiteral("&Action"));
    mnuAction->setObjectName(QStringLiteral("mnuAction"));
    mnuAction->addAction(AddMenuItem(0, "&Configuration", "Ctrl+C"));
    mnuAction->addAction(AddMenuItem(1, "&Run Brennik Profile", "Ctrl+D"));
    mnuAction->addAction(AddMenuItem(2, "Clear Items in &List", "Ctrl+L"));
    mnuAction->addAction(AddMenuItem(3, "&Quit", "Ctrl+Q"));
    BuildList();
    resize(720, 420);
}

QAction* frmBrennikClient::AddMenuItem(int32_t lIndex, const char* strText,
                                       const char* strShortcut) {
    auto* mnuActionItem = new QAction(QString::fromLatin1(strText), this);
    mnuActionItem->setObjectName(QStringLiteral("mnuActionItem(%1)").arg(lIndex));
    mnuActionItem->setShortcut(QKeySequence(QString::fromLatin1(strShortcut)));
    // By its place alone: no platform moves or renames it for the sake of its text.
    mnuActionItem->setMenuRole(QAction::NoRole);
    connect(mnuActionItem, &QAction::triggered, this,
            [this, lIndex] { Quietly([&] { mnuActionItem_Click(lIndex); }); });
    return mnuActionItem;
}

void frmBrennikClient::BuildList() {
    lstFiles_->setObjectName(QStringLiteral("lstFiles"));
    lstFiles_->setAccessibleName(QStringLiteral("Downloaded files"));
    lstFiles_->setHeaderLabels(
        {QStringLiteral("Date"), QStringLiteral("Download Folder"), QStringLiteral("File Name")});
    lstFiles_->setRootIsDecorated(false);
    lstFiles_->setItemsExpandable(false);
    lstFiles_->setUniformRowHeights(true);
    lstFiles_->setAllColumnsShowFocus(true);
    lstFiles_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstFiles_->setTextElideMode(Qt::ElideMiddle);
    lstFiles_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QHeaderView* header = lstFiles_->header();
    header->setSectionsMovable(false);
    header->setMinimumSectionSize(kLeastShown);
    header->resizeSection(kDate,
                          lstFiles_->fontMetrics().horizontalAdvance(
                              DateAndTimeText({2028, 12, 28, 20, 48, 58}) + QStringLiteral("MMM")));
    // No column is ever out of sight.
    setMinimumSize(header->sectionSize(kDate) + 3 * kLeastShown, 3 * kLeastShown);
    header->setStretchLastSection(false);
    connect(header, &QHeaderView::sectionResized, this,
            [this](int nSection, int, int nWidth) { TakeColumnWidth(nSection, nWidth); });
    // The viewport follows the window late, and a scroll bar narrows it.
    lstFiles_->viewport()->installEventFilter(this);
    lstFiles_->setFocus();
}

void frmBrennikClient::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    ArrangeList();
}

void frmBrennikClient::ArrangeList() {
    const int nTop = menuBar()->height();
    const int nWidth = std::max(width() - kListMarginWidth, 0);
    // A menu in a huge font leaves less than the rule gives.
    const int nHeight = std::clamp(height() - kListMarginHeight, 0, std::max(height() - nTop, 0));
    lstFiles_->setGeometry(kListMarginWidth / 2, nTop, nWidth, nHeight);
}

bool frmBrennikClient::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize)
        ArrangeColumns();
    return QMainWindow::eventFilter(watched, event);
}

void frmBrennikClient::ArrangeColumns() {
    QHeaderView* header = lstFiles_->header();
    const int nRest = lstFiles_->viewport()->width() - header->sectionSize(kDate);
    const int nFolder = std::clamp(static_cast<int>(nRest * dFolderShare_), kLeastShown,
                                   std::max(nRest - kLeastShown, kLeastShown));
    bArranging_ = true;
    header->resizeSection(kFolder, nFolder);
    header->resizeSection(kFileName, std::max(nRest - nFolder, kLeastShown));
    bArranging_ = false;
}

// The user moves the border of folder and name; a wider window then widens both.
void frmBrennikClient::TakeColumnWidth(int nSection, int nWidth) {
    if (bArranging_)
        return;
    const int nRest = lstFiles_->viewport()->width() - lstFiles_->header()->sectionSize(kDate);
    if (nSection == kFolder && nRest > 0)
        dFolderShare_ = double(nWidth) / nRest;
    ArrangeColumns();
}

void frmBrennikClient::closeEvent(QCloseEvent* event) {
    if (bWindowOnTop_)
        event->ignore();
    else
        QMainWindow::closeEvent(event);
}

void frmBrennikClient::AddDownloadedFile(std::string_view strFolder, std::string_view strFileName) {
    const QScrollBar* bar = lstFiles_->verticalScrollBar();
    const bool bAtEnd = bar->value() == bar->maximum();
    auto* line = new QTreeWidgetItem(
        {DateAndTimeText(LocalNow()), LineText(strFolder), LineText(strFileName)});
    line->setData(kDate, Qt::UserRole,
                  QStringLiteral("K%1").arg(lstFiles_->topLevelItemCount() + 1));
    for (const int nColumn : {kFolder, kFileName})
        line->setToolTip(nColumn, PlainToolTip(line->text(nColumn)));
    lstFiles_->addTopLevelItem(line);
    // Who has scrolled back to look at something isn't torn away from it.
    if (bAtEnd)
        lstFiles_->scrollToItem(line);
}

void frmBrennikClient::mnuActionItem_Click(int32_t lIndex) {
    // A window on top is modal; what comes here all the same comes too late.
    if (bWindowOnTop_)
        return;
    bWindowOnTop_ = true;
    Quietly([&] {
        if (lIndex == 0)
            frmBrennikProfiles(this).exec();
        else if (lIndex == 1)
            RunBrennikProfile();
    });
    bWindowOnTop_ = false;
    if (lIndex == 2)
        lstFiles_->clear();
    else if (lIndex == 3)
        close();
}

void frmBrennikClient::RunBrennikProfile() {
    lProfileId = -1;
    frmSelectProfile(this).exec();
    // 0, of a file without profiles, is run as well: it is meant so.
    if (lProfileId > -1)
        frmBrennikStatus(*this).exec();
}

} // namespace brennik
