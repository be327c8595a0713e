#include "PageTextAccessible.h"

#include <QAbstractTextDocumentLayout>
#include <QLabel>
#include <QScrollArea>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

PageTextAccessible::PageTextAccessible(QLabel* label)
    : QAccessibleWidget(label, QAccessible::StaticText)
{}

QAccessibleInterface* PageTextAccessible::create(const QString& className, QObject* object)
{
    auto* label = qobject_cast<QLabel*>(object);
    if (className != QLatin1String("QLabel") || !label
        || label->objectName() != QLatin1String("pageText"))
        return nullptr;
    return new PageTextAccessible(label);
}

void* PageTextAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString PageTextAccessible::text(QAccessible::Text type) const
{
    // The name is the text, as Qt gives it for any label.
    if (type == QAccessible::Name)
        return plainText();
    return QAccessibleWidget::text(type);
}

void PageTextAccessible::selection(int selectionIndex, int* startOffset, int* endOffset) const
{
    *startOffset = *endOffset = 0;
    if (selectionIndex != 0 || !label()->hasSelectedText())
        return;
    *startOffset = label()->selectionStart();
    *endOffset = *startOffset + int(label()->selectedText().size());
}

int PageTextAccessible::selectionCount() const
{
    return label()->hasSelectedText() ? 1 : 0;
}

void PageTextAccessible::addSelection(int startOffset, int endOffset)
{
    setSelection(0, startOffset, endOffset);
}

void PageTextAccessible::removeSelection(int selectionIndex)
{
    if (selectionIndex == 0)
        label()->setSelection(0, 0);
}

void PageTextAccessible::setSelection(int selectionIndex, int startOffset, int endOffset)
{
    if (selectionIndex == 0 && endOffset >= startOffset)
        label()->setSelection(startOffset, endOffset - startOffset);
}

int PageTextAccessible::cursorPosition() const
{
    return label()->hasSelectedText() ? label()->selectionStart() : 0;
}

void PageTextAccessible::setCursorPosition(int)
{
    // The text is read-only; its only caret is the focused link.
}

QString PageTextAccessible::text(int startOffset, int endOffset) const
{
    return plainText().mid(startOffset, endOffset - startOffset);
}

int PageTextAccessible::characterCount() const
{
    return int(plainText().size());
}

QRect PageTextAccessible::characterRect(int offset) const
{
    QTextDocument document;
    layOut(document);
    const QTextBlock block = document.findBlock(offset);
    const QTextLayout* layout = block.layout();
    if (!block.isValid() || !layout)
        return {};
    const int position = offset - block.position();
    const QTextLine line = layout->lineForTextPosition(position);
    if (!line.isValid())
        return {};
    const QRectF box = document.documentLayout()->blockBoundingRect(block);
    const qreal left = line.cursorToX(position);
    const qreal right = line.cursorToX(position + 1);
    const QRect local(QPointF(box.left() + left, box.top() + line.y()).toPoint(),
                      QSizeF(std::max<qreal>(right - left, 1), line.height()).toSize());
    return local.translated(label()->mapToGlobal(label()->contentsRect().topLeft()));
}

int PageTextAccessible::offsetAtPoint(const QPoint& point) const
{
    QTextDocument document;
    layOut(document);
    const QPoint local = point - label()->mapToGlobal(label()->contentsRect().topLeft());
    return document.documentLayout()->hitTest(local, Qt::FuzzyHit);
}

void PageTextAccessible::scrollToSubstring(int startIndex, int)
{
    for (QWidget* parent = label()->parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent)) {
            const QRect box = characterRect(startIndex);
            const QPoint inLabel = label()->mapFromGlobal(box.center());
            area->ensureVisible(inLabel.x(), inLabel.y());
            return;
        }
    }
}

QString PageTextAccessible::attributes(int, int* startOffset, int* endOffset) const
{
    *startOffset = 0;
    *endOffset = characterCount();
    return {};
}

QLabel* PageTextAccessible::label() const
{
    return static_cast<QLabel*>(widget());
}

void PageTextAccessible::layOut(QTextDocument& document) const
{
    document.setDefaultFont(label()->font());
    document.setDocumentMargin(0);
    document.setHtml(label()->text());
    document.setTextWidth(label()->contentsRect().width());
}

QString PageTextAccessible::plainText() const
{
    QTextDocument document;
    document.setHtml(label()->text());
    return document.toPlainText();
}
