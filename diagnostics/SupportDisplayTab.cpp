#include "SupportDisplayTab.h"

#include "RegistryTools.h"
#include "SupportData.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace {

const QString scaleFactorVariable = QStringLiteral("QT_AUTO_SCREEN_SCALE_FACTOR");

} // namespace

struct SupportDisplayTab::Private
{
    QLabel* label = nullptr;
    QPushButton* applyButton = nullptr;
    QPushButton* removeButton = nullptr;
};

SupportDisplayTab::SupportDisplayTab(SupportData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{}

SupportDisplayTab::~SupportDisplayTab() = default;

void SupportDisplayTab::updateContent()
{
    if (!d->label) {
        d->applyButton = new QPushButton(tr("Apply DPI Workaround"));
        d->removeButton = new QPushButton(tr("Remove DPI Workaround"));
        connect(d->applyButton, &QPushButton::clicked, this,
                &SupportDisplayTab::slotApplyDpiWorkaround);
        connect(d->removeButton, &QPushButton::clicked, this,
                &SupportDisplayTab::slotRemoveDpiWorkaround);
        QGridLayout* buttons = createButtonRow();
        buttons->addWidget(d->removeButton, 0, 0);
        buttons->addWidget(d->applyButton, 0, 1);
        buttons->setColumnStretch(2, 1);

        d->label = createPage(buttons, Qt::AlignCenter);

        showWorkaroundPresent(!environmentVariable(scaleFactorVariable).isEmpty());
    }
    supportData()->load();
    showText(d->label);
}

void SupportDisplayTab::slotApplyDpiWorkaround()
{
    if (!setEnvironmentVariable(scaleFactorVariable, QStringLiteral("0"))) {
        showStatus(tr("The DPI workaround could not be applied."));
        return;
    }
    showWorkaroundPresent(true);
    showStatus(tr("DPI workaround applied. It takes effect at your next sign-in."));
}

void SupportDisplayTab::slotRemoveDpiWorkaround()
{
    if (!removeEnvironmentVariable(scaleFactorVariable)) {
        showStatus(tr("The DPI workaround could not be removed."));
        return;
    }
    showWorkaroundPresent(false);
    showStatus(tr("DPI workaround removed. This takes effect at your next sign-in."));
}

void SupportDisplayTab::showWorkaroundPresent(bool present)
{
    d->applyButton->setEnabled(!present);
    d->removeButton->setEnabled(present);
}
