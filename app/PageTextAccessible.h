#pragma once

#include <QAccessibleWidget>

class QLabel;
class QTextDocument;

// A page's text as assistive tools read it: the whole text through the accessible Text
// interface, with the link that has the keyboard focus as its selection and caret, so a screen
// reader can say which of several "Remove" links is the one in hand. Qt gives a label neither.
class PageTextAccessible : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit PageTextAccessible(QLabel* label);

    // For QAccessible::installFactory: the interface of labels named "pageText".
    static QAccessibleInterface* create(const QString& className, QObject* object);

    void* interface_cast(QAccessible::InterfaceType type) override;
    QString text(QAccessible::Text type) const override;

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
    QLabel* label() const;
    // The label's text laid out as the label lays it out.
    void layOut(QTextDocument& document) const;
    QString plainText() const;
};
