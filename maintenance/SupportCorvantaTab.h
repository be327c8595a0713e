#pragma once

#include "SupportTab.h"

#include <memory>

// The installation page: the collector's findings and four repair buttons. The buttons act at
// once, without asking; their tooltips say what they do. Everything they remove goes to the trash.
class SupportCorvantaTab : public SupportTab
{
    Q_OBJECT

public:
    explicit SupportCorvantaTab(SupportData* collector, QWidget* parent = nullptr);
    ~SupportCorvantaTab() override;

    // Shows what the collector last found; the buttons' states are worked out again here only.
    void updateContent() override;

private slots:
    void slotRemoveAllAssociations();
    void slotRepairPreferences();
    void slotRemovePreferences();
    void slotRemoveAllApplicationData();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
