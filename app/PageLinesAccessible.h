#pragma once

#include <QAccessibleWidget>

class PageLinesView;

// A long page's text as assistive tools read it: the whole text through the accessible Text
// interface, with the link that has the keyboard focus as its selection and caret.
class PageLinesAccessible : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit PageLinesAccessible(PageLinesView* view);

    // For QAccessible::installFactory.
    static QAccessibleInterface* create(const QString& className, QObject* object);

    void* interface_cast(QAccessible::InterfaceType type) override;

    void selection(int selectionIndex, int* startOffset, int* endOffset) const override;
    int selectionCount() const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    QString text(int startOffset, int endOffset) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint& point) const override;
    void scrollToSubstring(int startIndex, int endIndex) override;
    QString attributes(int offset, int* startOffset, int* endOffset) const override;

private:
    PageLinesView* view() const;
};
