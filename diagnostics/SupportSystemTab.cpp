#include "SupportSystemTab.h"

#include "SupportBenchmarkFileIoTask.h"
#include "SupportSystemData.h"
#include "SupportTaskManager.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

struct SupportSystemTab::Private
{
    SupportSystemData* collector = nullptr;
    QPushButton* benchmarkButton = nullptr;
    QLabel* label = nullptr;
    std::unique_ptr<SupportTaskManager> taskManager;
};

SupportSystemTab::SupportSystemTab(SupportSystemData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{
    d->collector = collector;
    connect(collector, &SupportSystemData::signalNetworkAnswered, this,
            &SupportSystemTab::slotNetworkAnswered);
}

SupportSystemTab::~SupportSystemTab() = default;

void SupportSystemTab::updateContent()
{
    if (!d->label) {
        d->benchmarkButton = new QPushButton(tr("Benchmark File I/O"));
        d->benchmarkButton->setObjectName(QStringLiteral("benchmarkButton"));
        connect(d->benchmarkButton, &QPushButton::clicked, this,
                &SupportSystemTab::slotBenchmarkClicked);
        QGridLayout* buttons = createButtonRow();
        buttons->addWidget(d->benchmarkButton, 0, 0);
        buttons->setColumnStretch(1, 1);

        d->label = createPage(buttons);
    }
    d->collector->load();
    showText(d->label);
}

void SupportSystemTab::slotNetworkAnswered()
{
    showText(d->label);
}

void SupportSystemTab::slotBenchmarkClicked()
{
    const QString location = QFileDialog::getExistingDirectory(
        this, tr("Choose Location"), QString(), QFileDialog::ShowDirsOnly);
    if (location.isEmpty())
        return;
    if (!d->taskManager) {
        d->taskManager = std::make_unique<SupportTaskManager>();
        connect(d->taskManager.get(), &SupportTaskManager::signalFinished, this,
                &SupportSystemTab::slotBenchmarkFinished);
    }
    d->taskManager->addTask(new SupportBenchmarkFileIoTask(location));
    d->taskManager->start();
}

void SupportSystemTab::slotBenchmarkFinished()
{
    d->collector->setBenchmarkText(d->taskManager->report());
    updateContent();
    // The result ends the page; it is brought into view once the page has its new height.
    if (auto* area = findChild<QScrollArea*>()) {
        QTimer::singleShot(0, area, [area] {
            area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
        });
    }
}
