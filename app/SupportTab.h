#pragma once

#include <QWidget>

#include <memory>

class QGridLayout;
class QLabel;
class QLayout;
class SupportData;

// A page showing one collector's fragment. "#" links are repair actions for the collector; every
// other link is revealed in the file manager.
class SupportTab : public QWidget
{
    Q_OBJECT

public:
    explicit SupportTab(SupportData* collector, QWidget* parent = nullptr);
    ~SupportTab() override;

    SupportData* supportData() const;

    virtual void updateContent();
    virtual void linkHandled(const QString& link);

signals:
    // An action of this page may have changed the product's files, settings, associations or
    // environment: every collector whose facts it may change must load again.
    void signalRepaired();

public slots:
    void onLinkActivated(const QString& link);

protected:
    // Tells the tabs after an action; a page on its own loads its collector again itself.
    void repaired();
    QLabel* createLabel();
    // The usual page: the collector's text in a scroll area with the given controls below it.
    // Returns the text label.
    QLabel* createPage(QLayout* below, Qt::Alignment belowAlignment = {});
    // Shows the collector's current fragment in the given label.
    void showText(QLabel* label) const;
    // A row for the page's buttons, spaced as the style spaces them.
    QGridLayout* createButtonRow() const;
    // Says in the main window's status bar what an action did.
    void showStatus(const QString& text) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
