#pragma once

#include <QMainWindow>

#include <memory>

class SupportTabs;

// The only main window: File, Edit and Help menus over the collector pages. Its report entries
// only emit signals; the application decides what they do.
class SupportMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // The pages come from the given tabs, or from the program's own collectors when null.
    explicit SupportMainWindow(SupportTabs* tabs = nullptr);
    ~SupportMainWindow() override;

    SupportTabs* tabs() const;
    // Says in the status bar what an action did.
    void showStatus(const QString& text);

signals:
    void signalCopyReport();
    void signalSaveReport();
    void signalEmailReport();

public slots:
    void slotShowAbout();
    void showCentered();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
