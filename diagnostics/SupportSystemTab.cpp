#include "SupportSystemTab.h"

#include "SupportSystemData.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>

struct SupportSystemTab::Private
{
    SupportSystemData* collector = nullptr;
    QPushButton* benchmarkButton = nullptr;
    QLabel* label = nullptr;
};

SupportSystemTab::SupportSystemTab(SupportSystemData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{
    d->collector = collector;
    connect(collector, &SupportSystemData::signalExternalIpFinished, this,
            &SupportSystemTab::slotExternalIpFinished);
}

SupportSystemTab::~SupportSystemTab() = default;

void SupportSystemTab::updateContent()
{
    if (!d->label) {
        d->label = createLabel();
        auto* scrollArea = new QScrollArea;
        scrollArea->setWidgetResizable(true);
        scrollArea->setWidget(d->label);

        d->benchmarkButton = new QPushButton(tr("Benchmark File I/O"));
        d->benchmarkButton->setObjectName(QStringLiteral("benchmarkButton"));
        auto* buttons = new QGridLayout;
        buttons->setContentsMargins(5, 5, 5, 5);
        buttons->setSpacing(10);
        buttons->addWidget(d->benchmarkButton, 0, 0);
        buttons->setColumnStretch(1, 1);

        auto* layout = new QGridLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(scrollArea, 0, 0);
        layout->addLayout(buttons, 1, 0);
    }
    d->collector->load();
    showText(d->label);
}

void SupportSystemTab::slotExternalIpFinished(QNetworkReply* reply)
{
    d->collector->externalIpFinished(reply);
    d->collector->render();
    showText(d->label);
}
