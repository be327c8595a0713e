#pragma once

#include "SupportTab.h"

#include <memory>

class SupportSystemData;

class SupportSystemTab : public SupportTab
{
    Q_OBJECT

public:
    explicit SupportSystemTab(SupportSystemData* collector, QWidget* parent = nullptr);
    ~SupportSystemTab() override;

    // Gathers the collector again: the clock, the addresses and the network change while the
    // program runs. The connectivity probe runs off the GUI thread; its answer shows when it ends.
    void updateContent() override;

private slots:
    // Shows an answer the collector has rendered, without gathering again, so the address service
    // is asked once per load.
    void slotNetworkAnswered();
    void slotBenchmarkClicked();
    // Shows every benchmark run so far: the manager's report is never cleared.
    void slotBenchmarkFinished();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
