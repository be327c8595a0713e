#include "PageLinesAccessible.h"

#include "PageLinesView.h"

PageLinesAccessible::PageLinesAccessible(PageLinesView* view)
    : QAccessibleWidget(view, QAccessible::StaticText)
{}

QAccessibleInterface* PageLinesAccessible::create(const QString& className, QObject* object)
{
    auto* view = qobject_cast<PageLinesView*>(object);
    return className == QLatin1String("PageLinesView") && view ? new PageLinesAccessible(view)
                                                               : nullptr;
}

void* PageLinesAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

void PageLinesAccessible::selection(int selectionIndex, int* startOffset, int* endOffset) const
{
    const auto [start, end] = view()->focusedLinkRange();
    const bool selected = selectionIndex == 0 && start >= 0;
    *startOffset = selected ? start : 0;
    *endOffset = selected ? end : 0;
}

int PageLinesAccessible::selectionCount() const
{
    return view()->focusedLinkRange().first >= 0 ? 1 : 0;
}

// The text is read-only, and only the keyboard moves its one selection, the link in hand.
void PageLinesAccessible::addSelection(int, int) {}

void PageLinesAccessible::removeSelection(int) {}

void PageLinesAccessible::setSelection(int, int, int) {}

int PageLinesAccessible::cursorPosition() const
{
    return std::max(0, view()->focusedLinkRange().first);
}

void PageLinesAccessible::setCursorPosition(int) {}

QString PageLinesAccessible::text(int startOffset, int endOffset) const
{
    return view()->shownText().mid(startOffset, endOffset - startOffset);
}

int PageLinesAccessible::characterCount() const
{
    return int(view()->shownText().size());
}

// Only the lines in sight are laid out, so there is no place to give for the others.
QRect PageLinesAccessible::characterRect(int) const
{
    return {};
}

int PageLinesAccessible::offsetAtPoint(const QPoint&) const
{
    return -1;
}

void PageLinesAccessible::scrollToSubstring(int, int) {}

QString PageLinesAccessible::attributes(int, int* startOffset, int* endOffset) const
{
    *startOffset = 0;
    *endOffset = characterCount();
    return {};
}

PageLinesView* PageLinesAccessible::view() const
{
    return static_cast<PageLinesView*>(widget());
}
