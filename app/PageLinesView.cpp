#include "PageLinesView.h"

#include "PageLinesAccessible.h"

#include <QAbstractTextDocumentLayout>
#include <QAccessible>
#include <QHash>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

namespace {

const int margin = 5; // a label's margin, or the browser's document margin

// The characters a line shows: its text without tags, an entity counting as one.
// The line as shown: without its tags, its entities as their characters.
QString shownLine(QStringView line)
{
    QString shown;
    shown.reserve(line.size());
    bool inTag = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (inTag) {
            inTag = c != QLatin1Char('>');
        } else if (c == QLatin1Char('<')) {
            inTag = true;
        } else if (c == QLatin1Char('&')) {
            static const QList<QPair<QLatin1String, QChar>> entities{
                {QLatin1String("&amp;"), QLatin1Char('&')},
                {QLatin1String("&lt;"), QLatin1Char('<')},
                {QLatin1String("&gt;"), QLatin1Char('>')},
                {QLatin1String("&quot;"), QLatin1Char('"')},
                {QLatin1String("&#39;"), QLatin1Char('\'')}};
            QChar decoded = c;
            for (const auto& [name, character] : entities) {
                if (line.mid(i).startsWith(name)) {
                    decoded = character;
                    i += name.size() - 1;
                    break;
                }
            }
            shown += decoded;
        } else {
            shown += c;
        }
    }
    return shown;
}

qsizetype shownLength(QStringView line)
{
    qsizetype length = 0;
    bool inTag = false;
    bool inEntity = false;
    for (const QChar c : line) {
        if (inTag) {
            inTag = c != QLatin1Char('>');
        } else if (c == QLatin1Char('<')) {
            inTag = true;
        } else if (inEntity) {
            inEntity = c != QLatin1Char(';');
        } else {
            inEntity = c == QLatin1Char('&');
            ++length;
        }
    }
    return length;
}

} // namespace

struct PageLinesView::Private
{
    // The fragment, shared with the collector's text rather than copied, and where each of its
    // lines starts; a line ends where the next one's break begins.
    QString html;
    QList<qsizetype> starts;
    qsizetype lineCount() const { return starts.size(); }
    QStringView line(int index) const
    {
        const qsizetype start = starts.at(index);
        const qsizetype end =
            index + 1 < starts.size() ? starts.at(index + 1) - breakLength : html.size();
        return QStringView(html).mid(start, end - start);
    }
    static constexpr qsizetype breakLength = 4; // "<br>"

    // Laid out on demand, for the lines in sight; dropped when too many are kept.
    mutable QHash<int, std::shared_ptr<QTextDocument>> documents;
    // Where the first line starts inside its own document, and the height of every line: a
    // "<pre>" line never wraps, and the font is the same for all.
    qreal blockTop = 0;
    qreal lineHeight = 1;
    qreal top = margin; // of the first line in the view
    qreal bottom = margin;
    qreal characterWidth = 1;
    int widest = 0;
    // The link in hand from the keyboard: its line, and which of the line's links.
    int focusLine = -1;
    int focusLink = -1;

    std::shared_ptr<QTextDocument> document(const PageLinesView* view, int line) const
    {
        auto found = documents.find(line);
        if (found != documents.end())
            return found.value();
        if (documents.size() > 400)
            documents.clear();
        auto document = std::make_shared<QTextDocument>();
        document->setUndoRedoEnabled(false);
        document->setDefaultFont(view->font());
        document->setDocumentMargin(0);
        document->setHtml(QStringLiteral("<pre>%1</pre>").arg(this->line(line)));
        documents.insert(line, document);
        return document;
    }

    // The character range of the line's index-th link in its document.
    static QPair<int, int> linkRange(const QTextDocument& document, int index)
    {
        QList<QPair<int, int>> links;
        QString current;
        for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                const QTextFragment fragment = it.fragment();
                const QString href = fragment.charFormat().anchorHref();
                const int end = fragment.position() + fragment.length();
                if (!href.isEmpty() && href == current
                    && links.constLast().second == fragment.position())
                    links.last().second = end;
                else if (!href.isEmpty())
                    links.append({fragment.position(), end});
                current = href;
            }
        }
        return links.value(index, {-1, -1});
    }
};

PageLinesView::PageLinesView(QWidget* parent)
    : QAbstractScrollArea(parent)
    , d(std::make_unique<Private>())
{
    // Assistive tools read the text through its own interface.
    static const bool accessible = (QAccessible::installFactory(PageLinesAccessible::create), true);
    Q_UNUSED(accessible)
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setBackgroundRole(QPalette::Base);
    measure();
}

PageLinesView::~PageLinesView() = default;

void PageLinesView::setFragment(const QString& html)
{
    d->documents.clear();
    d->html = html;
    d->starts = {0};
    const QLatin1String lineBreak("<br>");
    for (qsizetype at = html.indexOf(lineBreak); at >= 0; at = html.indexOf(lineBreak, at))
        d->starts.append(at += Private::breakLength);
    // A fragment ending in a break has no line after it.
    if (d->starts.size() > 1 && d->starts.constLast() == html.size())
        d->starts.removeLast();
    qsizetype widest = 0;
    for (int line = 0; line < d->lineCount(); ++line)
        widest = std::max(widest, shownLength(d->line(line)));
    d->widest = int(widest);
    if (d->focusLine >= d->lineCount())
        d->focusLine = d->focusLink = -1;
    updateScrollBars();
    viewport()->update();
}

QString PageLinesView::shownText() const
{
    QString text;
    for (int line = 0; line < d->lineCount(); ++line)
        text += shownLine(d->line(line)) + QLatin1Char('\n');
    return text;
}

QPair<int, int> PageLinesView::focusedLinkRange() const
{
    if (d->focusLine < 0)
        return {-1, -1};
    const auto [start, end] = Private::linkRange(*d->document(this, d->focusLine), d->focusLink);
    if (start < 0)
        return {-1, -1};
    qsizetype before = 0;
    for (int line = 0; line < d->focusLine; ++line)
        before += shownLine(d->line(line)).size() + 1;
    return {int(before + start), int(before + end)};
}

void PageLinesView::measure()
{
    // Two lines laid out as a label lays out a "<pre>" give where lines start and how far apart.
    QTextDocument sample;
    sample.setDefaultFont(font());
    sample.setDocumentMargin(margin);
    sample.setHtml(QStringLiteral("<pre>M\nM</pre>"));
    QAbstractTextDocumentLayout* layout = sample.documentLayout();
    const QRectF first = layout->blockBoundingRect(sample.begin());
    const QRectF second = layout->blockBoundingRect(sample.begin().next());
    d->top = first.top();
    d->lineHeight = std::max<qreal>(1, second.top() - first.top());
    d->bottom = layout->documentSize().height() - second.bottom();
    QTextDocument alone;
    alone.setDefaultFont(font());
    alone.setDocumentMargin(0);
    alone.setHtml(QStringLiteral("<pre>M</pre>"));
    d->blockTop = alone.documentLayout()->blockBoundingRect(alone.begin()).top();
    d->characterWidth = QFontMetricsF(font()).horizontalAdvance(QLatin1Char('M'));
    d->documents.clear();
}

void PageLinesView::updateScrollBars()
{
    const QSize area = viewport()->size();
    const int height = qCeil(d->top + d->lineCount() * d->lineHeight + d->bottom);
    const int width = qCeil(2 * margin + d->widest * d->characterWidth);
    verticalScrollBar()->setRange(0, std::max(0, height - area.height()));
    verticalScrollBar()->setPageStep(area.height());
    verticalScrollBar()->setSingleStep(qRound(d->lineHeight));
    horizontalScrollBar()->setRange(0, std::max(0, width - area.width()));
    horizontalScrollBar()->setPageStep(area.width());
}

int PageLinesView::lineAt(int y) const
{
    const qreal inList = y + verticalScrollBar()->value() - d->top;
    if (inList < 0)
        return -1;
    const int line = int(inList / d->lineHeight);
    return line < d->lineCount() ? line : -1;
}

QString PageLinesView::hrefAt(const QPoint& point) const
{
    const int line = lineAt(point.y());
    if (line < 0)
        return {};
    const auto document = d->document(this, line);
    const QPointF inDocument(point.x() + horizontalScrollBar()->value() - margin,
                             point.y() + verticalScrollBar()->value() - d->top
                                 - line * d->lineHeight + d->blockTop);
    return document->documentLayout()->anchorAt(inDocument);
}

void PageLinesView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    const QRect dirty = event->rect();
    const int first = std::max(0, lineAt(dirty.top()));
    const qreal scrolledTop = d->top - verticalScrollBar()->value();
    const int x = margin - horizontalScrollBar()->value();
    for (int line = first; line < d->lineCount(); ++line) {
        const qreal y = scrolledTop + line * d->lineHeight;
        if (y > dirty.bottom())
            break;
        const auto document = d->document(this, line);
        QAbstractTextDocumentLayout::PaintContext context;
        context.palette = palette();
        if (line == d->focusLine && hasFocus()) {
            const auto [start, end] = Private::linkRange(*document, d->focusLink);
            if (start >= 0) {
                QTextCursor cursor(document.get());
                cursor.setPosition(start);
                cursor.setPosition(end, QTextCursor::KeepAnchor);
                QAbstractTextDocumentLayout::Selection selection;
                selection.cursor = cursor;
                selection.format.setBackground(palette().brush(QPalette::Highlight));
                selection.format.setForeground(palette().brush(QPalette::HighlightedText));
                context.selections << selection;
            }
        }
        painter.save();
        painter.translate(x, y - d->blockTop);
        context.clip = QRectF(-x, d->blockTop, viewport()->width(), d->lineHeight);
        painter.setClipRect(context.clip);
        document->documentLayout()->draw(&painter, context);
        painter.restore();
    }
}

void PageLinesView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

void PageLinesView::mouseMoveEvent(QMouseEvent* event)
{
    viewport()->setCursor(hrefAt(event->position().toPoint()).isEmpty() ? Qt::IBeamCursor
                                                                        : Qt::PointingHandCursor);
    QAbstractScrollArea::mouseMoveEvent(event);
}

void PageLinesView::mouseReleaseEvent(QMouseEvent* event)
{
    const QString href =
        event->button() == Qt::LeftButton ? hrefAt(event->position().toPoint()) : QString();
    if (href.isEmpty()) {
        QAbstractScrollArea::mouseReleaseEvent(event);
        return;
    }
    emit signalLinkActivated(href);
}

void PageLinesView::keyPressEvent(QKeyEvent* event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && d->focusLine >= 0) {
        const auto document = d->document(this, d->focusLine);
        const auto [start, end] = Private::linkRange(*document, d->focusLink);
        if (start >= 0) {
            QTextCursor cursor(document.get());
            cursor.setPosition(start + 1);
            emit signalLinkActivated(cursor.charFormat().anchorHref());
            return;
        }
    }
    QAbstractScrollArea::keyPressEvent(event);
}

bool PageLinesView::focusNextPrevChild(bool next)
{
    // Tab goes from link to link, as in a label, and on past the last one.
    if (hasFocus() && moveLinkFocus(next))
        return true;
    return QAbstractScrollArea::focusNextPrevChild(next);
}

bool PageLinesView::moveLinkFocus(bool forward)
{
    const int step = forward ? 1 : -1;
    int line = d->focusLine;
    int link = d->focusLink + step;
    if (line < 0) {
        line = forward ? 0 : int(d->lineCount()) - 1;
        link = forward ? 0 : -1;
    }
    while (line >= 0 && line < d->lineCount()) {
        const int links = int(d->line(line).count(QStringLiteral("<a ")));
        if (link < 0)
            link = links - 1;
        if (link >= 0 && link < links) {
            d->focusLine = line;
            d->focusLink = link;
            const qreal y = d->top + line * d->lineHeight;
            const int value = verticalScrollBar()->value();
            if (y < value || y + d->lineHeight > value + viewport()->height())
                verticalScrollBar()->setValue(qRound(y - viewport()->height() / 2.0));
            viewport()->update();
            if (QAccessible::isActive()) {
                const auto [start, end] = focusedLinkRange();
                QAccessibleTextSelectionEvent moved(this, start, end);
                QAccessible::updateAccessibility(&moved);
            }
            return true;
        }
        line += step;
        link = forward ? 0 : -1;
    }
    d->focusLine = d->focusLink = -1;
    viewport()->update();
    return false;
}

void PageLinesView::changeEvent(QEvent* event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        measure();
        updateScrollBars();
    }
}
