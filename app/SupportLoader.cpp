#include "SupportLoader.h"

#include "SupportLoaderWorker.h"

#include <QKeyEvent>
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
    // The filter goes first: the dialog sends events while it is destroyed, when it is no longer
    // a QProgressDialog that the filter could look at.
    if (d->dialog) {
        d->dialog->removeEventFilter(this);
        delete d->dialog.data();
    }
    // A quit during a load waits for the collector in hand, however long it takes: destroying the
    // thread under it would abort the program. Waits that watch for it, such as the connectivity
    // probe, give up at once.
    d->thread.requestInterruption();
    d->thread.quit();
    d->thread.wait();
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
    d->dialog->installEventFilter(this);
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

bool SupportLoader::eventFilter(QObject* watched, QEvent* event)
{
    // Esc would reject the dialog and a close request close it; either ends the program's only
    // window, and so the program, in the middle of a load.
    if (watched == d->dialog.data()) {
        if (event->type() == QEvent::Close) {
            event->ignore();
            return true;
        }
        if (event->type() == QEvent::KeyPress
            && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
            return true;
    }
    return QObject::eventFilter(watched, event);
}
