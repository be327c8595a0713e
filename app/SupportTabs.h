#pragma once

#include "SupportData.h"

#include <QTabWidget>

#include <functional>
#include <memory>

class SupportTab;

// The main window's centre: one page per collector, pages whose collector found problems first.
class SupportTabs : public QTabWidget
{
    Q_OBJECT

public:
    using TabFactory = std::function<SupportTab*(SupportData*)>;

    // Without arguments it holds every collector of the program with its page.
    explicit SupportTabs(QWidget* parent = nullptr);
    SupportTabs(const SupportDataTable& table, const TabFactory& createTab,
                QWidget* parent = nullptr);
    ~SupportTabs() override;

    SupportDataTable table() const;
    void load();

signals:
    void signalLoadFinished();

public slots:
    void slotLoaderFinished();
    // After a repair: the collectors of the product's files and of the page that acted load
    // again, and the pages are shown and ordered anew, so that the window and a report copied
    // then describe the same machine.
    void slotRepaired();

private:
    void arrangePages();

    struct Private;
    std::unique_ptr<Private> d;
};
