#pragma once

#include "SupportTab.h"

#include <memory>

class QTextBrowser;

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
    QTextBrowser* createView();
    void showList();
    void showPermissions(const QString& path);

    struct Private;
    std::unique_ptr<Private> d;
};
