#pragma once

#include "SupportTask.h"

#include <QCoreApplication>

#include <memory>

// Repairs the product's preferences file (SettingsRepair) on a thread of its own, so that a file
// of any size leaves the window free behind the task's progress dialog. Its report tells the user
// what was changed, that nothing needed repair, or why the file could not be repaired.
class SupportRepairPreferencesTask : public SupportTask
{
    Q_DECLARE_TR_FUNCTIONS(SupportRepairPreferencesTask)

public:
    explicit SupportRepairPreferencesTask(const QString& path);
    ~SupportRepairPreferencesTask() override;

    QString report() const override;
    void run() override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
