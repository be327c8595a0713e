#pragma once

#include "SupportTab.h"

#include <memory>

class SupportDisplayTab : public SupportTab
{
    Q_OBJECT

public:
    explicit SupportDisplayTab(SupportData* collector, QWidget* parent = nullptr);
    ~SupportDisplayTab() override;

    // Screens can change while the program runs, so the collector is gathered again each time.
    void updateContent() override;

private slots:
    void slotApplyDpiWorkaround();
    void slotRemoveDpiWorkaround();

private:
    void showWorkaroundPresent(bool present);

    struct Private;
    std::unique_ptr<Private> d;
};
