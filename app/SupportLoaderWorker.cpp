#include "SupportLoaderWorker.h"

struct SupportLoaderWorker::Private
{
    SupportDataTableRef table;
};

SupportLoaderWorker::SupportLoaderWorker(const SupportDataTableRef& table)
    : d(std::make_unique<Private>())
{
    d->table = table;
}

SupportLoaderWorker::~SupportLoaderWorker() = default;

void SupportLoaderWorker::startItem(int type)
{
    const SupportDataTable table = d->table.toStrongRef();
    SupportData* data = table ? findSupportData(*table, type) : nullptr;
    if (data && data->needsMainThreadWork()) {
        // finishItem() follows once the GUI thread has done its part.
        emit signalStartMainThreadItemWork(type);
        return;
    }
    finishItem(type);
}

void SupportLoaderWorker::finishItem(int type)
{
    const SupportDataTable table = d->table.toStrongRef();
    if (SupportData* data = table ? findSupportData(*table, type) : nullptr)
        data->load();
    emit signalItemFinished(type);
}
