#include "SupportRepairPreferencesTask.h"

#include "FileDirTools.h"
#include "SettingsRepair.h"
#include "SupportTaskRunner.h"

#include <QFileInfo>
#include <QPointer>
#include <QThread>

struct SupportRepairPreferencesTask::Private
{
    QString path;
    QString report; // written by the worker, read after it has finished
    std::unique_ptr<QThread> worker;
    // Receives the worker's end on the GUI thread.
    QPointer<QObject> context;
};

SupportRepairPreferencesTask::SupportRepairPreferencesTask(const QString& path)
    : d(std::make_unique<Private>())
{
    d->path = path;
    d->context = new QObject;
}

SupportRepairPreferencesTask::~SupportRepairPreferencesTask()
{
    if (d->worker)
        d->worker->wait();
    // The task is deleted from inside the context's own call.
    if (d->context)
        d->context->deleteLater();
}

QString SupportRepairPreferencesTask::report() const
{
    return d->report;
}

void SupportRepairPreferencesTask::run()
{
    runner()->progress(0, 0, 0, tr("Repairing %1...").arg(d->path));
    const QString path = d->path;
    QString* text = &d->report;
    d->worker.reset(QThread::create([path, text] {
        if (!QFileInfo::exists(path)) {
            *text = tr("There are no preferences to repair: \"%1\" does not exist.").arg(path);
            return;
        }
        if (!isSafeToRead(path)) {
            *text = tr("\"%1\" is not a file, so it was left alone.").arg(path);
            return;
        }
        int emptied = 0;
        QString reason;
        if (!repairSettingsFile(path, &emptied, &reason))
            *text = tr("Could not repair \"%1\": %2").arg(path, reason);
        else if (emptied == 0)
            *text = tr("Nothing in \"%1\" needed repair.").arg(path);
        else
            *text = tr("Stored dates and times emptied in \"%1\": %2.")
                        .arg(path, QString::number(emptied));
    }));
    QObject::connect(d->worker.get(), &QThread::finished, d->context,
                     [this] { runner()->finish(report()); });
    d->worker->start();
}
