#include "SupportLoader.h"

#include "SupportLoaderWorker.h"

#include <QPointer>
#include <QProgressDialog>
#include <QThread>

struct SupportLoader::Private
{
    SupportDataTableRef table;
    QPointer<QProgressDialog> dialog;
    QList<int> queue;
    QThread thread;
    std::unique_ptr<SupportLoaderWorker> worker;
};

SupportLoader::SupportLoader(const SupportDataTableRef& table, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    d->table = table;
    d->thread.setObjectName(QStringLiteral("SupportLoader"));
}

SupportLoader::~SupportLoader()
{
    d->thread.quit();
    d->thread.wait(10000);
    delete d->dialog.data();
}

void SupportLoader::start()
{
    const SupportDataTable table = d->table.toStrongRef();
    if (!table)
        return;

    d->queue.clear();
    for (const auto& [kind, data] : *table) {
        if (data)
            d->queue.append(data->type());
    }

    delete d->dialog.data();
    d->dialog = new QProgressDialog;
    d->dialog->setCancelButton(nullptr);
    d->dialog->setMaximum(d->queue.size());
    d->dialog->setWindowModality(Qt::ApplicationModal);
    d->dialog->setMinimumDuration(0);
    d->dialog->setMinimumWidth(300);
    d->dialog->setWindowTitle(QStringLiteral("Corvanta Support"));
    d->dialog->setAttribute(Qt::WA_DeleteOnClose, true);
    d->dialog->raise();

    // A later pass reuses the worker, its connections and the running thread.
    if (!d->worker) {
        d->worker = std::make_unique<SupportLoaderWorker>(d->table);
        d->worker->moveToThread(&d->thread);
        connect(this, &SupportLoader::signalStartWorkerItem, d->worker.get(),
                &SupportLoaderWorker::startItem);
        connect(this, &SupportLoader::signalMainThreadItemWorkFinished, d->worker.get(),
                &SupportLoaderWorker::finishItem);
        connect(d->worker.get(), &SupportLoaderWorker::signalStartMainThreadItemWork, this,
                &SupportLoader::slotStartMainThreadItemWork);
        connect(d->worker.get(), &SupportLoaderWorker::signalItemFinished, this,
                &SupportLoader::slotStartNextWorkerItem);
    }
    if (!d->thread.isRunning())
        d->thread.start(QThread::InheritPriority);
    slotStartNextWorkerItem();
}

void SupportLoader::slotStartMainThreadItemWork(int type)
{
    const SupportDataTable table = d->table.toStrongRef();
    if (SupportData* data = table ? findSupportData(*table, type) : nullptr)
        data->loadOnMainThread();
    emit signalMainThreadItemWorkFinished(type);
}

void SupportLoader::slotStartNextWorkerItem()
{
    const SupportDataTable table = d->table.toStrongRef();
    if (!d->queue.isEmpty() && table) {
        const int remaining = d->queue.size();
        const int kind = d->queue.takeFirst();
        const SupportData* data = findSupportData(*table, kind);
        if (d->dialog) {
            d->dialog->setLabelText(tr("Loading %1 data...").arg(data ? data->name() : QString()));
            d->dialog->setValue(d->dialog->maximum() - remaining);
        }
        emit signalStartWorkerItem(kind);
        return;
    }
    if (d->dialog) {
        // A quick pass can end before the dialog's own show timer fires; reset() stops that timer
        // so the dialog cannot appear over the finished window.
        d->dialog->reset();
        d->dialog->hide();
    }
    emit signalFinished();
}
