#include "SupportFontsTab.h"

#include "SupportFontsData.h"

#include <QGridLayout>
#include <QLabel>

struct SupportFontsTab::Private
{
    QLabel* label = nullptr;
    std::array<QLabel*, 4> sampleLabels{};
    std::array<QLabel*, 4> nameLabels{};
};

SupportFontsTab::SupportFontsTab(SupportData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{}

SupportFontsTab::~SupportFontsTab() = default;

void SupportFontsTab::updateContent()
{
    if (!d->label) {
        auto* samples = new QGridLayout;
        samples->setContentsMargins(10, 10, 10, 10);
        samples->setSpacing(10);
        for (int row = 0; row < int(d->nameLabels.size()); ++row) {
            d->nameLabels[size_t(row)] = new QLabel;
            d->sampleLabels[size_t(row)] = new QLabel;
            samples->addWidget(d->nameLabels[size_t(row)], row, 0);
            samples->addWidget(d->sampleLabels[size_t(row)], row, 1);
        }
        samples->setColumnStretch(2, 1);

        d->label = createPage(samples);
    }
    const auto* fonts = dynamic_cast<const SupportFontsData*>(supportData());
    for (int row = 0; row < int(d->nameLabels.size()); ++row) {
        const SupportFontsData::FontSlot fontSlot =
            fonts ? fonts->slot(row) : SupportFontsData::FontSlot();
        QLabel* nameLabel = d->nameLabels[size_t(row)];
        QLabel* sampleLabel = d->sampleLabels[size_t(row)];
        const bool present = !fontSlot.font.isNull();
        nameLabel->setVisible(present);
        sampleLabel->setVisible(present);
        if (!present)
            continue;
        nameLabel->setText(fontSlot.name + QLatin1Char(':'));
        sampleLabel->setFont(*fontSlot.font);
        sampleLabel->setText(SupportFontsData::sampleText());
    }
    showText(d->label);
}
