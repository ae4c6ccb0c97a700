#include "dialogs/frmPTSerialConfig.h"

#include "config/TBrennikClientConfig.h"
#include "dialogs/DialogParts.h"
#include "dialogs/ListField.h"
#include "link/CommParms.h"
#include "shell/BrennikClnt.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/OstrandString.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>
#include <string>

namespace brennik {

namespace {

/// The values of one side.
struct SerialValues {
    int16_t iComPort;
    int32_t lBaudRate;
    std::string strParity;
    int16_t iDatabits;
    double dStopBit;
    int16_t iFlowControl;
};

SerialValues ValuesOf(const TBrennikClientConfig& oValues, bool bServerSide) {
    if (bServerSide)
        return {oValues.iServerComPort(),  oValues.lServerBaudRate(), oValues.strServerParity(),
                oValues.iServerDatabits(), oValues.dServerStopBit(),  oValues.iServerFlowControl()};
    return {oValues.iClientComPort(),  oValues.lClientBaudRate(), oValues.strClientParity(),
            oValues.iClientDatabits(), oValues.dClientStopBit(),  oValues.iClientFlowControl()};
}

void SetServerValues(TBrennikClientConfig& oTarget, const SerialValues& values) {
    oTarget.iServerComPort(values.iComPort);
    oTarget.lServerBaudRate(values.lBaudRate);
    oTarget.strServerParity(values.strParity);
    oTarget.iServerDatabits(values.iDatabits);
    oTarget.dServerStopBit(values.dStopBit);
    oTarget.iServerFlowControl(values.iFlowControl);
}

void SetClientValues(TBrennikClientConfig& oTarget, const SerialValues& values) {
    oTarget.iClientComPort(values.iComPort);
    oTarget.lClientBaudRate(values.lBaudRate);
    oTarget.strClientParity(values.strParity);
    oTarget.iClientDatabits(values.iDatabits);
    oTarget.dClientStopBit(values.dStopBit);
    oTarget.iClientFlowControl(values.iFlowControl);
}

} // namespace

frmPTSerialConfig::frmPTSerialConfig(QWidget* parent)
    : QDialog(parent),
      bServerSide_(oConfig->lOperatingMode() == kSerialServerSide),
      cboPort_(new ListField("cboPort", ListKind::Fixed)),
      cboBaudRate_(new ListField("cboBaudRate", ListKind::Fixed)),
      cboParity_(new ListField("cboParity", ListKind::Fixed)),
      cboDatabits_(new ListField("cboDatabits", ListKind::Fixed)),
      cboStopbit_(new ListField("cboStopbit", ListKind::Fixed)),
      cboFlowControl_(new ListField("cboFlowControl", ListKind::Fixed)),
      chkAutobaud_(new QCheckBox(QStringLiteral("Auto baud"))) {
    setObjectName(QStringLiteral("frmPTSerialConfig"));
    setWindowTitle(QStringLiteral("Serial Settings"));
    BuildControls();
    FillLists();
    Quietly([&] { FillFields(); });
    cboPort_->setFocus();
}

void frmPTSerialConfig::BuildControls() {
    auto* Frame1 = new QGroupBox;
    Frame1->setObjectName(QStringLiteral("Frame1"));
    auto* fields = new QGridLayout(Frame1);
    int nRow = 0;
    const auto add = [&](const char* strLabel, ListField* field) {
        fields->addWidget(LabelOf(strLabel, field), nRow, 0);
        fields->addWidget(field, nRow, 1);
        ++nRow;
    };
    add("COM Port ", cboPort_); // with its blank
    add("Baud Rate", cboBaudRate_);
    add("Parity", cboParity_);
    add("Databits", cboDatabits_);
    add("Stopbit", cboStopbit_);
    add("Flow Control", cboFlowControl_);
    // It shows and can be clicked for either side, although the Server side has no use for it.
    chkAutobaud_->setObjectName(QStringLiteral("chkAutobaud"));
    fields->addWidget(chkAutobaud_, nRow, 0, 1, 2);
    fields->setColumnStretch(1, 1);
    fields->setRowStretch(nRow + 1, 1);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Frame1, 1);
    layout->addLayout(OkAndCancel(*this, "cmdOK", "cmdCancel", [this] { cmdOK_Click(); }));
    resize(300, sizeHint().height());
}

void frmPTSerialConfig::FillLists() {
    CommParms::FillBoxWithPorts(*cboPort_, true);
    CommParms::FillBoxWithBaudRates(*cboBaudRate_);
    CommParms::FillBoxWithParity(*cboParity_);
    CommParms::FillBoxWithDatabits(*cboDatabits_);
    CommParms::FillBoxWithStopBits(*cboStopbit_);
    CommParms::FillBoxWithFlowControlTypes(*cboFlowControl_);
    for (ListField* field :
         {cboPort_, cboBaudRate_, cboParity_, cboDatabits_, cboStopbit_, cboFlowControl_})
        field->ChooseFirst();
}

// A value that fails its test leaves the first entry. A port outside the list is refused by it:
// that ends the filling, and all that follows keeps its first entry too.
void frmPTSerialConfig::FillFields() {
    const SerialValues values = ValuesOf(*oConfig, bServerSide_);
    cboPort_->SetBytes("COM" + ToDecimal(values.iComPort));
    if (CommParms::IsValidBaudRate(values.lBaudRate))
        cboBaudRate_->SetBytes(ToDecimal(values.lBaudRate));
    const std::string strParity = CommParms::GetParityStr(values.strParity);
    if (!strParity.empty())
        cboParity_->SetBytes(strParity);
    if (CommParms::IsValidDataBits(values.iDatabits))
        cboDatabits_->SetBytes(ToDecimal(values.iDatabits));
    if (CommParms::IsValidStopbit(values.dStopBit))
        cboStopbit_->SetBytes(ToDecimal(values.dStopBit));
    if (CommParms::IsValidFlowControlID(values.iFlowControl))
        cboFlowControl_->SetBytes(CommParms::GetFlowControlStr(values.iFlowControl));
    if (!bServerSide_)
        chkAutobaud_->setChecked(oConfig->bAutoBaud());
}

void frmPTSerialConfig::cmdOK_Click() {
    Quietly([&] {
        const SerialValues values{CommParms::GetCommPortID(cboPort_->Bytes()),
                                  OstrandString::StrToLong(cboBaudRate_->Bytes()),
                                  cboParity_->Bytes(),
                                  OstrandString::StrToInt(cboDatabits_->Bytes()),
                                  OstrandString::StrToDouble(cboStopbit_->Bytes()),
                                  CommParms::GetFlowControlID(cboFlowControl_->Bytes())};
        if (bServerSide_) {
            SetServerValues(*oConfig, values);
        } else {
            SetClientValues(*oConfig, values);
            oConfig->bAutoBaud(chkAutobaud_->isChecked());
        }
        accept();
    });
}

} // namespace brennik
