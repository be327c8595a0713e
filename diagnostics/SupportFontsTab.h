#pragma once

#include "SupportTab.h"

#include <memory>

// The fonts fragment with a live sample line in each font that was found.
class SupportFontsTab : public SupportTab
{
    Q_OBJECT

public:
    explicit SupportFontsTab(SupportData* collector, QWidget* parent = nullptr);
    ~SupportFontsTab() override;

    // Shows what the loader found; the fonts are not looked up again.
    void updateContent() override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
