#include "SupportTab.h"

#include "BaseApplication.h"
#include "FileDirTools.h"
#include "ReportFragments.h"
#include "SupportData.h"

#include <QGridLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QScrollArea>

struct SupportTab::Private
{
    SupportData* data = nullptr;
};

SupportTab::SupportTab(SupportData* collector, QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>())
{
    d->data = collector;
}

SupportTab::~SupportTab() = default;

SupportData* SupportTab::supportData() const
{
    return d->data;
}

void SupportTab::updateContent() {}

void SupportTab::linkHandled(const QString&) {}

void SupportTab::onLinkActivated(const QString& link)
{
    const QString target = decodedLink(link);
    if (target.startsWith(QLatin1Char('#'))) {
        if (d->data)
            d->data->handleLink(target.mid(1));
        repaired();
        return;
    }
    revealInExplorer(target);
}

void SupportTab::repaired()
{
    if (isSignalConnected(QMetaMethod::fromSignal(&SupportTab::signalRepaired))) {
        emit signalRepaired();
        return;
    }
    if (d->data)
        d->data->load();
    updateContent();
}

QLabel* SupportTab::createLabel()
{
    auto* label = new QLabel;
    QFont font = BaseApplication::monospaceFont();
    font.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
    label->setFont(font);
    label->setMargin(5);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse
                                   | Qt::LinksAccessibleByKeyboard);
    label->setAlignment(Qt::AlignTop);
    QPalette palette = label->palette();
    palette.setBrush(QPalette::All, QPalette::Window, Qt::white);
    palette.setBrush(QPalette::All, QPalette::WindowText, Qt::black);
    label->setPalette(palette);
    label->setAutoFillBackground(true);
    connect(label, &QLabel::linkActivated, this, &SupportTab::onLinkActivated);
    return label;
}

QLabel* SupportTab::createPage(QLayout* below, Qt::Alignment belowAlignment)
{
    QLabel* label = createLabel();
    auto* scrollArea = new QScrollArea;
    scrollArea->setWidgetResizable(true);
    scrollArea->setWidget(label);
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(scrollArea, 0, 0);
    layout->addLayout(below, 1, 0, belowAlignment);
    return label;
}

void SupportTab::showText(QLabel* label) const
{
    if (label && d->data)
        label->setText(preformatted(*d->data->text()));
}
