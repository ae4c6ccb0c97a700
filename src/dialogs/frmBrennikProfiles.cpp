#include "dialogs/frmBrennikProfiles.h"

#include "config/TBrennikClientConfig.h"
#include "dialogs/DialogParts.h"
#include "dialogs/MessageBoxes.h"
#include "dialogs/WindowText.h"
#include "dialogs/frmBrennikConfig.h"
#include "platform/Host.h"
#include "shell/BrennikClnt.h"
#include "support/Failure.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <string>
#include <vector>

namespace brennik {

frmBrennikProfiles::frmBrennikProfiles(QWidget* parent)
    : QDialog(parent),
      lstProfiles_(new QListWidget),
      cmdModify_(ButtonOf("cmdModify", "&Modify", [this] { Quietly([&] { cmdModify_Click(); }); })),
      cmdDelete_(
          ButtonOf("cmdDelete", "&Delete", [this] { Quietly([&] { cmdDelete_Click(); }); })) {
    setObjectName(QStringLiteral("frmBrennikProfiles"));
    setWindowTitle(QStringLiteral("Ostrand Brennik Profiles"));
    BuildControls();
    Quietly([&] { FillProfileList(); });
    lstProfiles_->setFocus();
}

void frmBrennikProfiles::BuildControls() {
    lstProfiles_->setObjectName(QStringLiteral("lstProfiles"));
    lstProfiles_->setAccessibleName(QStringLiteral("Brennik Profiles"));
    lstProfiles_->setUniformItemSizes(true);
    auto* frame = new QGroupBox(QStringLiteral("Brennik Profiles"));
    auto* list = new QVBoxLayout(frame);
    list->addWidget(lstProfiles_);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frame, 1);
    auto* buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    buttons->addStretch();
    buttons->addWidget(ButtonOf("cmdAdd", "&Add", [this] { Quietly([&] { cmdAdd_Click(); }); }));
    buttons->addWidget(cmdModify_);
    buttons->addWidget(cmdDelete_);
    buttons->addWidget(ButtonOf("cmdClose", "&Close", [this] { reject(); }));
    // Enter or a double click on a profile opens it, as lists of documents do everywhere.
    cmdModify_->setDefault(true);
    connect(lstProfiles_, &QListWidget::itemDoubleClicked, cmdModify_, &QPushButton::click);
    resize(420, 360);
}

void frmBrennikProfiles::FillProfileList() {
    lstProfiles_->clear();
    TBrennikClientConfig oFileConfig;
    std::vector<std::string> strNames;
    int32_t lCount = 0;
    // Whatever could be read is shown.
    Quietly([&] {
        static_cast<void>(oFileConfig.GetProfileNamesAndCount(
            CurrentHost().processes.ProgramFolder(), strNames, lCount));
    });
    for (const std::string& strName : strNames)
        lstProfiles_->addItem(LineText(strName));
    if (lstProfiles_->count() > 0)
        lstProfiles_->setCurrentRow(0);
    SetButtonStates();
}

void frmBrennikProfiles::SetButtonStates() {
    const bool bAnyProfile = lstProfiles_->count() > 0;
    cmdModify_->setEnabled(bAnyProfile);
    cmdDelete_->setEnabled(bAnyProfile);
}

void frmBrennikProfiles::EditProfile(int32_t lNumber) {
    lProfileId = lNumber;
    bProfileSaved = false;
    frmBrennikConfig(this).exec();
    if (bProfileSaved)
        FillProfileList();
}

void frmBrennikProfiles::cmdAdd_Click() {
    EditProfile(-1);
}

void frmBrennikProfiles::cmdModify_Click() {
    EditProfile(lstProfiles_->currentRow() + 1);
}

// Profiles aren't removed: their numbers must stay without gaps, and scripts run them by number.
// The text is meant.
void frmBrennikProfiles::cmdDelete_Click() {
    ShowMessageBox(this, QMessageBox::Information, "to do");
}

} // namespace brennik
