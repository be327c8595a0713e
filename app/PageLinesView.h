#pragma once

#include <QAbstractScrollArea>

#include <memory>

// A page's HTML fragment shown line by line ("<br>" ends a line), looking exactly as a label
// shows it inside "<pre>", but laying out only the lines in sight. A list of a hundred thousand
// lines costs a text document gigabytes and seconds; this costs the lines' text. Links are
// followed with the mouse, or from the keyboard with Tab, Shift+Tab and Return.
class PageLinesView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit PageLinesView(QWidget* parent = nullptr);
    ~PageLinesView() override;

    // Keeps the place in the list, as far as the new text reaches.
    void setFragment(const QString& html);

    // For assistive tools: the text as shown, each line ending in "\n", and where in it the link
    // in hand from the keyboard is ({-1, -1} without one).
    QString shownText() const;
    QPair<int, int> focusedLinkRange() const;

signals:
    // The link's href exactly as written in the fragment.
    void signalLinkActivated(const QString& href);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void changeEvent(QEvent* event) override;

private:
    void measure();
    void updateScrollBars();
    int lineAt(int y) const;
    QString hrefAt(const QPoint& point) const;
    // Moves the keyboard's link forward or back; false past the first or the last.
    bool moveLinkFocus(bool forward);

    struct Private;
    std::unique_ptr<Private> d;
};
