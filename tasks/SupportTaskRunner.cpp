#include "SupportTaskRunner.h"

struct SupportTaskRunner::Private
{
    bool* cancelled = nullptr;
    bool running = false;
    SupportTask* task = nullptr;
};

SupportTaskRunner::SupportTaskRunner(bool* cancelled)
    : d(std::make_unique<Private>())
{
    d->cancelled = cancelled;
}

SupportTaskRunner::~SupportTaskRunner() = default;

void SupportTaskRunner::setTask(SupportTask* task)
{
    d->task = task;
    if (task)
        task->setContext(d->cancelled, this);
}

void SupportTaskRunner::start()
{
    if (!d->task)
        return;
    d->running = true;
    d->task->run();
}

bool SupportTaskRunner::isRunning() const
{
    return d->running;
}

void SupportTaskRunner::progress(int current, int min, int max, const QString& msg)
{
    emit signalProgress(current, min, max, msg);
}

void SupportTaskRunner::finish(const QString& report)
{
    d->running = false;
    emit signalTaskFinished(d->task, report);
}
