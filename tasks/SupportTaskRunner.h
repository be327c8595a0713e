#pragma once

#include "SupportTask.h"

#include <QObject>

#include <memory>

// Runs one task at a time for a SupportTaskManager and relays its progress and its finished report
// as signals. The task runs on the thread that calls start().
class SupportTaskRunner : public QObject
{
    Q_OBJECT

public:
    // cancelled is the manager's flag, handed to every task as its cancelFlag.
    explicit SupportTaskRunner(bool* cancelled);
    ~SupportTaskRunner() override;

    void setTask(SupportTask* task);
    void start();
    bool isRunning() const;
    void progress(int current, int min, int max, const QString& msg);
    void finish(const QString& report);

signals:
    void signalProgress(int current, int min, int max, QString msg);
    void signalTaskFinished(SupportTask* task, QString report);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
