#include "SupportTask.h"

struct SupportTask::Private
{
    bool* cancelFlag = nullptr;
    SupportTaskRunner* runner = nullptr;
};

SupportTask::SupportTask()
    : d(std::make_unique<Private>())
{}

SupportTask::~SupportTask() = default;

bool* SupportTask::cancelFlag() const
{
    return d->cancelFlag;
}

SupportTaskRunner* SupportTask::runner() const
{
    return d->runner;
}

void SupportTask::setContext(bool* cancelFlag, SupportTaskRunner* runner)
{
    d->cancelFlag = cancelFlag;
    d->runner = runner;
}
