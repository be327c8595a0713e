#pragma once

#include "SupportTab.h"

#include <memory>

class PageLinesView;

// The permissions page: the collector's list, and a look at the permissions of any file or folder
// the user picks.
class SupportPermissionsTab : public SupportTab
{
    Q_OBJECT

public:
    explicit SupportPermissionsTab(SupportData* collector, QWidget* parent = nullptr);
    ~SupportPermissionsTab() override;

    void updateContent() override;

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void slotCheckFile();
    void slotCheckFolder();

private:
    PageLinesView* createView();
    void showList();
    void showPermissions(const QString& path);

    struct Private;
    std::unique_ptr<Private> d;
};
