#pragma once

#include "SupportTab.h"

#include <memory>

// The installation page: the collector's findings and four repair buttons. The buttons act at
// once, without asking; their tooltips say what they do. Everything they remove goes to the trash,
// and what the trash refuses stays, with a message saying why.
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
    void slotRepairFinished();
    void slotRemovePreferences();
    void slotRemoveAllApplicationData();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
