#include "SupportCorvantaTab.h"

#include "RemovalDialogs.h"
#include "SupportCorvantaData.h"
#include "SupportRepairPreferencesTask.h"
#include "SupportTaskManager.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

struct SupportCorvantaTab::Private
{
    QLabel* label = nullptr;
    QPushButton* associationsButton = nullptr;
    QPushButton* repairButton = nullptr;
    QPushButton* preferencesButton = nullptr;
    QPushButton* appDataButton = nullptr;
    std::unique_ptr<SupportTaskManager> repair;
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
    const std::pair<QPushButton*, bool> states[] = {
        {d->associationsButton, corvanta && corvanta->hasAssociations()},
        {d->preferencesButton, QFileInfo::exists(SupportCorvantaData::settingsFileName(product))},
        {d->appDataButton, QFileInfo(SupportCorvantaData::productAppDataPath(product)).isDir()},
    };
    // A focused button that is disabled hands the focus on to the next one, which may remove far
    // more: a second key press would act on it. The focus goes to the page's text instead.
    for (const auto& [button, enabled] : states) {
        if (!enabled && window()->focusWidget() == button)
            d->label->setFocus(Qt::OtherFocusReason);
    }
    for (const auto& [button, enabled] : states)
        button->setEnabled(enabled);
}

void SupportCorvantaTab::slotRemoveAllAssociations()
{
    if (auto* corvanta = dynamic_cast<SupportCorvantaData*>(supportData()))
        corvanta->removeAllAssociations();
    repaired();
}

// A large file takes a while; the repair runs behind the benchmark's progress dialog.
void SupportCorvantaTab::slotRepairPreferences()
{
    d->repair = std::make_unique<SupportTaskManager>();
    connect(d->repair.get(), &SupportTaskManager::signalFinished, this,
            &SupportCorvantaTab::slotRepairFinished);
    d->repair->addTask(new SupportRepairPreferencesTask(
        SupportCorvantaData::settingsFileName(supportData()->name())));
    d->repair->start();
}

void SupportCorvantaTab::slotRepairFinished()
{
    repaired();
    QMessageBox::information(this, tr("Repair Preferences"), d->repair->report());
}

void SupportCorvantaTab::slotRemovePreferences()
{
    trashForUser({SupportCorvantaData::settingsFileName(supportData()->name())});
    repaired();
}

// Whatever the trash refuses stays, and the associations go only with the data.
void SupportCorvantaTab::slotRemoveAllApplicationData()
{
    const QString product = supportData()->name();
    QStringList paths{SupportCorvantaData::productAppDataPath(product)};
    paths << SupportCorvantaData::furtherDataPaths(product)
          << SupportCorvantaData::settingsFileName(product);
    const bool trashed = trashForUser(paths);
    auto* corvanta = dynamic_cast<SupportCorvantaData*>(supportData());
    if (trashed && corvanta)
        corvanta->removeAllAssociations();
    repaired();
}
