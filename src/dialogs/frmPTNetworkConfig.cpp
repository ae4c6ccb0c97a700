#include "dialogs/frmPTNetworkConfig.h"

#include "config/TBrennikClientConfig.h"
#include "dialogs/DialogParts.h"
#include "dialogs/DigitField.h"
#include "shell/BrennikClnt.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/OstrandString.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <string>

namespace brennik {

namespace {

constexpr int kAddressLength = 100;
constexpr int kAddressShown = 15; ///< of it at least
constexpr int kPortLength = 6;
constexpr int kTimeoutLength = 2;

std::string PortText(int32_t lPort) {
    return lPort == 0 ? std::string() : ToDecimal(lPort);
}

int32_t Number(const TextField& oField) {
    return OstrandString::StrToLong(oField.Bytes());
}

} // namespace

frmPTNetworkConfig::frmPTNetworkConfig(QWidget* parent)
    : QDialog(parent),
      chkNonBlock_(new QCheckBox(QStringLiteral("Use non-blocking socket creation"))),
      txtConnTimeout_(new DigitField("txtConnTimeout", kTimeoutLength)) {
    setObjectName(QStringLiteral("frmPTNetworkConfig"));
    setWindowTitle(QStringLiteral("Network Settings"));
    BuildControls();
    Quietly([&] { FillFields(); });
    txtIP_.front()->setFocus();
}

void frmPTNetworkConfig::BuildControls() {
    auto* fraConnection = new QGroupBox;
    fraConnection->setObjectName(QStringLiteral("fraConnection"));
    auto* fields = new QGridLayout(fraConnection);
    for (size_t n = 0; n < txtIP_.size(); ++n) {
        const std::string strNumber = ToDecimal(n + 1);
        const int nRow = static_cast<int>(n);
        txtIP_[n] = new TextField(("txtIP" + strNumber).c_str(), kAddressLength);
        txtPort_[n] = new DigitField(("txtPort" + strNumber).c_str(), kPortLength);
        txtIP_[n]->setMinimumWidth(WidthOf(*txtIP_[n], kAddressShown));
        txtPort_[n]->setMaximumWidth(WidthOf(*txtPort_[n], kPortLength));
        fields->addWidget(LabelOf("IP Address " + strNumber, txtIP_[n]), nRow, 0);
        fields->addWidget(txtIP_[n], nRow, 1);
        fields->addWidget(LabelOf("Port " + strNumber, txtPort_[n]), nRow, 2);
        fields->addWidget(txtPort_[n], nRow, 3);
    }
    const int nBelow = static_cast<int>(txtIP_.size());
    chkNonBlock_->setObjectName(QStringLiteral("chkNonBlock"));
    fields->addWidget(chkNonBlock_, nBelow, 0, 1, 4);
    fields->addWidget(TimeoutFrame(), nBelow + 1, 0, 1, 4);
    fields->setColumnStretch(1, 1);
    fields->setRowStretch(nBelow + 2, 1);
    // Only what the user clicks; filling runs the handler by itself.
    connect(chkNonBlock_, &QCheckBox::clicked, this, [this] { chkNonBlock_Click(); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(fraConnection, 1);
    layout->addLayout(OkAndCancel(*this, "cmdOK", "cmdCancel", [this] { cmdOK_Click(); }));
    resize(460, sizeHint().height());
}

QGroupBox* frmPTNetworkConfig::TimeoutFrame() {
    auto* frame = new QGroupBox;
    auto* fields = new QHBoxLayout(frame);
    txtConnTimeout_->setMaximumWidth(WidthOf(*txtConnTimeout_, kPortLength));
    fields->addWidget(LabelOf("Connection Timeout", txtConnTimeout_));
    fields->addWidget(txtConnTimeout_);
    fields->addWidget(LabelOf("(Seconds)", txtConnTimeout_));
    fields->addStretch();
    return frame;
}

void frmPTNetworkConfig::FillFields() {
    txtIP_[0]->SetBytes(oConfig->strServerIPAddress1());
    txtIP_[1]->SetBytes(oConfig->strServerIPAddress2());
    txtIP_[2]->SetBytes(oConfig->strServerIPAddress3());
    txtPort_[0]->SetBytes(PortText(oConfig->lServerPort1()));
    txtPort_[1]->SetBytes(PortText(oConfig->lServerPort2()));
    txtPort_[2]->SetBytes(PortText(oConfig->lServerPort3()));
    txtConnTimeout_->SetBytes(ToDecimal(oConfig->lServerConnectTimeout()));
    chkNonBlock_->setChecked(!oConfig->bServerBlockedSocket());
    chkNonBlock_Click();
}

// A time-out in force is meant to vanish with the check mark: OK then keeps 0.
void frmPTNetworkConfig::chkNonBlock_Click() {
    if (!chkNonBlock_->isChecked())
        txtConnTimeout_->SetBytes({});
    txtConnTimeout_->setEnabled(chkNonBlock_->isChecked());
}

void frmPTNetworkConfig::cmdOK_Click() {
    Quietly([&] {
        oConfig->strServerIPAddress1(txtIP_[0]->Bytes());
        oConfig->strServerIPAddress2(txtIP_[1]->Bytes());
        oConfig->strServerIPAddress3(txtIP_[2]->Bytes());
        oConfig->lServerPort1(Number(*txtPort_[0]));
        oConfig->lServerPort2(Number(*txtPort_[1]));
        oConfig->lServerPort3(Number(*txtPort_[2]));
        oConfig->lServerConnectTimeout(Number(*txtConnTimeout_));
        oConfig->bServerBlockedSocket(!chkNonBlock_->isChecked());
        accept();
    });
}

} // namespace brennik
