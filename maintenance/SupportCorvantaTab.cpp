#include "SupportCorvantaTab.h"

#include "FileDirTools.h"
#include "SettingsRepair.h"
#include "SupportCorvantaData.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace {

// A missing path would only cost the trash's retries.
void trashExisting(const QStringList& paths)
{
    QStringList existing;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.exists() || info.isSymLink())
            existing.append(path);
    }
    moveAllToRecycleBin(existing);
}

} // namespace

struct SupportCorvantaTab::Private
{
    QLabel* label = nullptr;
    QPushButton* associationsButton = nullptr;
    QPushButton* repairButton = nullptr;
    QPushButton* preferencesButton = nullptr;
    QPushButton* appDataButton = nullptr;
};

SupportCorvantaTab::SupportCorvantaTab(SupportData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{}

SupportCorvantaTab::~SupportCorvantaTab() = default;

void SupportCorvantaTab::updateContent()
{
    const QString product = supportData()->name();
    if (!d->label) {
        d->associationsButton = new QPushButton(tr("Remove All Associations"));
        d->associationsButton->setToolTip(
            tr("All %1 file associations will be removed.").arg(product));
        d->repairButton = new QPushButton(tr("Repair Preferences"));
        d->preferencesButton = new QPushButton(tr("Remove Preferences"));
        d->preferencesButton->setToolTip(
            tr("All %1 preferences will be put into the trash bin.").arg(product));
        d->appDataButton = new QPushButton(tr("Remove All Application Data"));
        d->appDataButton->setToolTip(
            tr("All %1 file associations, preferences, temporary files,\ncached lists of online "
               "plasmids, crash reports,\nand custom common features will be put into the trash "
               "bin.")
                .arg(product));
        connect(d->associationsButton, &QPushButton::clicked, this,
                &SupportCorvantaTab::slotRemoveAllAssociations);
        connect(d->repairButton, &QPushButton::clicked, this,
                &SupportCorvantaTab::slotRepairPreferences);
        connect(d->preferencesButton, &QPushButton::clicked, this,
                &SupportCorvantaTab::slotRemovePreferences);
        connect(d->appDataButton, &QPushButton::clicked, this,
                &SupportCorvantaTab::slotRemoveAllApplicationData);

        // The one button that acts on the associations stands apart on the left.
        QGridLayout* buttons = createButtonRow();
        buttons->addWidget(d->associationsButton, 0, 0);
        buttons->setColumnStretch(1, 1);
        buttons->addWidget(d->repairButton, 0, 2);
        buttons->addWidget(d->preferencesButton, 0, 3);
        buttons->addWidget(d->appDataButton, 0, 4);

        d->label = createPage(buttons);
    }
    showText(d->label);
    const auto* corvanta = dynamic_cast<const SupportCorvantaData*>(supportData());
    d->associationsButton->setEnabled(corvanta && corvanta->hasAssociations());
    d->preferencesButton->setEnabled(
        QFileInfo::exists(SupportCorvantaData::settingsFileName(product)));
    d->appDataButton->setEnabled(
        QFileInfo(SupportCorvantaData::productAppDataPath(product)).isDir());
}

void SupportCorvantaTab::slotRemoveAllAssociations()
{
    if (auto* corvanta = dynamic_cast<SupportCorvantaData*>(supportData()))
        corvanta->removeAllAssociations();
    updateContent();
}

void SupportCorvantaTab::slotRepairPreferences()
{
    repairSettingsFile(SupportCorvantaData::settingsFileName(supportData()->name()));
}

void SupportCorvantaTab::slotRemovePreferences()
{
    trashExisting({SupportCorvantaData::settingsFileName(supportData()->name())});
    updateContent();
}

void SupportCorvantaTab::slotRemoveAllApplicationData()
{
    const QString product = supportData()->name();
    trashExisting({SupportCorvantaData::productAppDataPath(product)});
    trashExisting(SupportCorvantaData::furtherDataPaths(product));
    trashExisting({SupportCorvantaData::settingsFileName(product)});
    if (auto* corvanta = dynamic_cast<SupportCorvantaData*>(supportData()))
        corvanta->removeAllAssociations();
    else
        supportData()->load();
    updateContent();
}
