#pragma once

#include <QMetaType>
#include <QString>

#include <memory>

class SupportTaskRunner;

// A long-running support job. A SupportTaskManager owns it and hands it to its runner, which calls
// run() on the manager's thread; run() tests *cancelFlag() between steps, reports progress through
// runner() and ends by calling runner()->finish() with the report text. The manager deletes the
// task from inside finish(), so run() returns right after it.
class SupportTask
{
public:
    SupportTask();
    virtual ~SupportTask();
    SupportTask(const SupportTask&) = delete;
    SupportTask& operator=(const SupportTask&) = delete;

    virtual QString report() const = 0;
    virtual void run() = 0;

    // The manager's cancelled flag; null until the task is handed to a runner.
    bool* cancelFlag() const;
    SupportTaskRunner* runner() const;
    void setContext(bool* cancelFlag, SupportTaskRunner* runner);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

Q_DECLARE_METATYPE(SupportTask*)
