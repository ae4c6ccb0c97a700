#include "shell/frmSelectProfile.h"

#include "config/TBrennikClientConfig.h"
#include "dialogs/WindowText.h"
#include "platform/Host.h"
#include "shell/BrennikClnt.h"
#include "support/Failure.h"

#include <QByteArray>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <vector>

namespace brennik {

namespace {

std::string ProgramFolder() {
    return CurrentHost().processes.ProgramFolder();
}

void AddLabelled(QVBoxLayout* layout, const char* strLabel, QWidget* field) {
    auto* label = new QLabel(QString::fromLatin1(strLabel));
    label->setBuddy(field);
    layout->addWidget(label);
    layout->addWidget(field);
}

} // namespace

frmSelectProfile::frmSelectProfile(QWidget* parent)
    : QDialog(parent),
      lstProfile_(new QListWidget),
      cboAppName_(new QComboBox),
      txtTid_(new QLineEdit) {
    setObjectName(QStringLiteral("frmSelectProfile"));
    setWindowTitle(QStringLiteral("Select Brennik Profile"));
    BuildControls();
    Quietly([&] { LoadProfiles(); });
    Quietly([&] { LoadApplications(); });
    lstProfile_->setFocus();
}

void frmSelectProfile::BuildControls() {
    lstProfile_->setObjectName(QStringLiteral("lstProfile"));
    lstProfile_->setUniformItemSizes(true);
    cboAppName_->setObjectName(QStringLiteral("cboAppName"));
    cboAppName_->setEditable(true);
    cboAppName_->setInsertPolicy(QComboBox::NoInsert);
    cboAppName_->setCompleter(nullptr); // free text is taken as it stands
    txtTid_->setObjectName(QStringLiteral("txtTid"));

    auto* Frame1 = new QGroupBox;
    Frame1->setObjectName(QStringLiteral("Frame1"));
    auto* fields = new QVBoxLayout(Frame1);
    AddLabelled(fields, "Select Profile", lstProfile_);
    AddLabelled(fields, "Brennik Application Name", cboAppName_);
    AddLabelled(fields, "Brennik Terminal ID", txtTid_);
    fields->setStretchFactor(lstProfile_, 1);

    auto* cmdSelect = new QPushButton(QStringLiteral("&Run Profile"));
    cmdSelect->setObjectName(QStringLiteral("cmdSelect"));
    cmdSelect->setDefault(true);
    connect(cmdSelect, &QPushButton::clicked, this, [this] { cmdSelect_Click(); });
    auto* cmdCancel = new QPushButton(QStringLiteral("&Cancel"));
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cmdCancel, &QPushButton::clicked, this, [this] { reject(); });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdSelect);
    buttons->addWidget(cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Frame1);
    layout->addLayout(buttons);
    resize(380, 380);
}

void frmSelectProfile::LoadProfiles() {
    TBrennikClientConfig oFileConfig;
    std::vector<std::string> strNames;
    int32_t lCount = 0;
    // Whatever could be read is shown.
    static_cast<void>(oFileConfig.GetProfileNamesAndCount(ProgramFolder(), strNames, lCount));
    for (const std::string& strName : strNames)
        lstProfile_->addItem(LineText(strName));
    if (lstProfile_->count() > 0)
        lstProfile_->setCurrentRow(0);
}

void frmSelectProfile::LoadApplications() {
    TBrennikClientConfig oFileConfig;
    std::vector<std::string> strApplications;
    int32_t lCount = 0;
    cboAppName_->clear();
    cboAppName_->addItem(QString());
    static_cast<void>(oFileConfig.ReadApplications(ProgramFolder(), strApplications, lCount));
    for (const std::string& strName : strApplications)
        cboAppName_->addItem(LineText(strName), QByteArray::fromStdString(strName));
    cboAppName_->setCurrentIndex(0);
}

std::string frmSelectProfile::ApplicationName() const {
    // An entry that was only picked gives back the bytes of the file, not their picture.
    const int nEntry = cboAppName_->currentIndex();
    if (nEntry > 0 && cboAppName_->itemText(nEntry) == cboAppName_->currentText())
        return cboAppName_->itemData(nEntry).toByteArray().toStdString();
    return BytesOf(cboAppName_->currentText());
}

void frmSelectProfile::reject() {
    lProfileId = -1;
    QDialog::reject();
}

void frmSelectProfile::cmdSelect_Click() {
    Quietly([&] { TakeProfile(); });
    accept();
}

void frmSelectProfile::TakeProfile() {
    oConfig = std::make_unique<TBrennikClientConfig>();
    lProfileId = lstProfile_->currentRow() + 1;
    const std::string strApplication = ApplicationName();
    if (!strApplication.empty())
        oConfig->SetApplicationForProfile(ProgramFolder(), lProfileId, strApplication);
    const std::string strTerminalId = BytesOf(txtTid_->text());
    if (!strTerminalId.empty())
        oConfig->SetBrennikTerminalIdForProfile(ProgramFolder(), lProfileId, strTerminalId);
    // A failure isn't tested: the run then fails, or works with what the profile holds.
    static_cast<void>(oConfig->GetConfiguration(ProgramFolder(), lProfileId));
}

} // namespace brennik
