#include "SupportTab.h"

#include "BaseApplication.h"
#include "FileDirTools.h"
#include "PageTextAccessible.h"
#include "ReportFragments.h"
#include "SupportData.h"

#include <QAccessible>
#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMetaMethod>
#include <QScrollArea>
#include <QStatusBar>
#include <QStyle>

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
    // Assistive tools read the page through its own interface.
    static const bool accessible = (QAccessible::installFactory(PageTextAccessible::create), true);
    Q_UNUSED(accessible)
    auto* label = new QLabel;
    label->setObjectName(QStringLiteral("pageText"));
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
    // The area itself shows no focus; the text's links take it instead.
    scrollArea->setFocusPolicy(Qt::NoFocus);
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(scrollArea, 0, 0);
    layout->addLayout(below, 1, 0, belowAlignment);
    return label;
}

QGridLayout* SupportTab::createButtonRow() const
{
    auto* row = new QGridLayout;
    row->setContentsMargins(5, 5, 5, 5);
    // Set here: a nested layout would take the page's spacing, which is none.
    int spacing = style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing);
    if (spacing < 0)
        spacing = style()->layoutSpacing(QSizePolicy::PushButton, QSizePolicy::PushButton,
                                         Qt::Horizontal);
    // Qt's own default where the style leaves it to the layout.
    row->setSpacing(spacing < 0 ? 6 : spacing);
    return row;
}

void SupportTab::showStatus(const QString& text) const
{
    if (auto* main = qobject_cast<QMainWindow*>(window()))
        main->statusBar()->showMessage(text);
}

void SupportTab::showText(QLabel* label) const
{
    if (!label || !d->data)
        return;
    const QString& text = *d->data->text();
    label->setText(preformatted(text));
    // Focus on a text without links would show nowhere.
    label->setFocusPolicy(text.contains(QLatin1String("<a ")) ? Qt::StrongFocus : Qt::NoFocus);
}
