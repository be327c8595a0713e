#include "SupportTabs.h"

#include "SupportLoader.h"
#include "SupportRegistry.h"
#include "SupportTab.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPolygonF>
#include <QTabBar>

#include <map>

namespace {

// Painted once and kept: a yellow warning triangle with a black exclamation mark.
const QIcon& attentionIcon()
{
    static const QIcon icon = [] {
        QPixmap pixmap(32, 32);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(120, 90, 0), 1));
        painter.setBrush(QBrush(QColor(248, 212, 82, 255), Qt::SolidPattern));
        const QPolygonF triangle({QPointF(16, 2), QPointF(30, 28), QPointF(2, 28)});
        painter.drawPolygon(triangle, Qt::OddEvenFill);
        painter.setBrush(QBrush(Qt::black, Qt::SolidPattern));
        painter.setPen(QPen(Qt::black, 1));
        painter.drawEllipse(15, 20, 2, 2);
        QPen stroke(Qt::black);
        stroke.setWidth(3);
        painter.setPen(stroke);
        painter.drawLine(QPoint(16, 10), QPoint(16, 16));
        painter.end();
        return QIcon(pixmap);
    }();
    return icon;
}

// The pages' titles in the user's language; the collectors' names stay English in the report.
const char* const pageTitles[] = {
    QT_TRANSLATE_NOOP("SupportTabs", "Display"), QT_TRANSLATE_NOOP("SupportTabs", "Fonts"),
    QT_TRANSLATE_NOOP("SupportTabs", "Permissions"), QT_TRANSLATE_NOOP("SupportTabs", "System")};

QString pageTitle(const SupportTab* page)
{
    const QString name = page->supportData()->name();
    for (const char* title : pageTitles) {
        if (name == QLatin1String(title))
            return QCoreApplication::translate("SupportTabs", title);
    }
    return name;
}

// The collectors of the product's files, preferences and associations, which repairs change.
const QList<int>& repairedKinds()
{
    static const QList<int> kinds{PermissionsDataKind, CorvantaDataKind};
    return kinds;
}

const QList<int>& allKinds()
{
    static const QList<int> kinds{0, 1, 2, 3, 4, 5};
    return kinds;
}

} // namespace

struct SupportTabs::Private
{
    SupportDataTable table;
    TabFactory createTab;
    std::unique_ptr<SupportLoader> loader;
    std::map<int, SupportTab*> pages;
};

SupportTabs::SupportTabs(QWidget* parent)
    : SupportTabs(createSupportDataTable(), createSupportTab, parent)
{}

SupportTabs::SupportTabs(const SupportDataTable& table, const TabFactory& createTab,
                         QWidget* parent)
    : QTabWidget(parent)
    , d(std::make_unique<Private>())
{
    d->table = table;
    d->createTab = createTab;
}

SupportTabs::~SupportTabs()
{
    // The pages point at collectors: they go before the table can.
    for (const auto& [kind, page] : d->pages)
        delete page;
    d->pages.clear();
    d->loader.reset();
}

SupportDataTable SupportTabs::table() const
{
    return d->table;
}

void SupportTabs::load()
{
    d->loader = std::make_unique<SupportLoader>(d->table.toWeakRef());
    connect(d->loader.get(), &SupportLoader::signalFinished, this,
            &SupportTabs::slotLoaderFinished);
    d->loader->start();
}

void SupportTabs::slotLoaderFinished()
{
    if (d->pages.empty()) {
        for (const int kind : allKinds()) {
            SupportData* collector = findSupportData(*d->table, kind);
            if (SupportTab* page = collector ? d->createTab(collector) : nullptr) {
                d->pages.emplace(kind, page);
                connect(page, &SupportTab::signalRepaired, this, &SupportTabs::slotRepaired);
            }
        }
    }
    for (const auto& [kind, page] : d->pages)
        page->updateContent();
    arrangePages();
    emit signalLoadFinished();
}

void SupportTabs::slotRepaired()
{
    auto* acting = qobject_cast<SupportTab*>(sender());
    for (const auto& [kind, page] : d->pages) {
        if (repairedKinds().contains(kind) || page == acting) {
            page->supportData()->load();
            page->updateContent();
        }
    }
    arrangePages();
}

// Pages with errors first, each with the warning icon. Pages are moved, not taken out and put
// back, so the page in view and the keyboard focus stay where they are.
void SupportTabs::arrangePages()
{
    QList<SupportTab*> withErrors;
    QList<SupportTab*> withoutErrors;
    for (const auto& [kind, page] : d->pages)
        (page->supportData()->errors().isEmpty() ? withoutErrors : withErrors).append(page);
    const QList<SupportTab*> order = withErrors + withoutErrors;
    for (int position = 0; position < order.size(); ++position) {
        SupportTab* page = order.at(position);
        const int at = indexOf(page);
        if (at < 0)
            insertTab(position, page, pageTitle(page));
        else if (at != position)
            tabBar()->moveTab(at, position);
        setTabIcon(position, position < withErrors.size() ? attentionIcon() : QIcon());
    }
}
