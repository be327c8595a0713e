#include "SupportDisplayTab.h"

#include "SupportData.h"

#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>

struct SupportDisplayTab::Private
{
    QLabel* label = nullptr;
};

SupportDisplayTab::SupportDisplayTab(SupportData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{}

SupportDisplayTab::~SupportDisplayTab() = default;

void SupportDisplayTab::updateContent()
{
    if (!d->label) {
        d->label = createLabel();
        auto* scrollArea = new QScrollArea;
        scrollArea->setWidgetResizable(true);
        scrollArea->setWidget(d->label);
        auto* layout = new QGridLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(scrollArea, 0, 0);
    }
    supportData()->load();
    showText(d->label);
}
