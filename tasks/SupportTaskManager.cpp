#include "SupportTaskManager.h"

#include "SupportTaskRunner.h"

#include <QProgressDialog>
#include <QThread>

#include <deque>

namespace {

// Destroying a running thread aborts the program, so it is stopped and joined first.
struct ThreadStopper
{
    void operator()(QThread* thread) const
    {
        thread->quit();
        thread->wait();
        delete thread;
    }
};

} // namespace

// Members are destroyed from the last up: the thread, the queued tasks, the runner, the text, then
// the dialog. The runner hands the address of cancelled to every task.
struct SupportTaskManager::Private
{
    bool cancelled = false;
    std::unique_ptr<QProgressDialog> dialog;
    QString report;
    std::unique_ptr<SupportTaskRunner> runner;
    std::deque<std::unique_ptr<SupportTask>> queue;
    std::unique_ptr<QThread, ThreadStopper> thread;
};

SupportTaskManager::SupportTaskManager(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    qRegisterMetaType<SupportTask*>();
}

SupportTaskManager::~SupportTaskManager() = default;

void SupportTaskManager::addTask(SupportTask* task)
{
    d->queue.emplace_back(task);
}

void SupportTaskManager::start()
{
    setUp();
    if (d->cancelled || d->queue.empty())
        endBatch();
    else if (!d->runner->isRunning())
        runFrontTask();
}

QString SupportTaskManager::report() const
{
    return d->report;
}

void SupportTaskManager::slotCancelClicked()
{
    d->cancelled = true;
}

void SupportTaskManager::slotProgress(int current, int min, int max, const QString& msg)
{
    d->dialog->setRange(min, max);
    d->dialog->setValue(current);
    d->dialog->setLabelText(msg);
}

void SupportTaskManager::slotTaskFinished(SupportTask* task, const QString& errors)
{
    // Only the front task ever runs, so it is the one that finished.
    Q_ASSERT(d->queue.empty() || d->queue.front().get() == task);
    if (!d->queue.empty())
        d->queue.pop_front();
    d->report += errors;
    setUp();
    if (d->cancelled || d->queue.empty())
        endBatch();
    else if (!d->runner->isRunning())
        runFrontTask();
}

void SupportTaskManager::setUp()
{
    if (!d->dialog) {
        d->dialog = std::make_unique<QProgressDialog>();
        connect(d->dialog.get(), &QProgressDialog::canceled, this,
                &SupportTaskManager::slotCancelClicked);
        d->dialog->setMinimumDuration(0);
        d->dialog->setMinimumWidth(350);
        d->dialog->setWindowTitle(QStringLiteral("Corvanta Support"));
        d->dialog->setWindowModality(Qt::ApplicationModal);
    }
    if (!d->thread) {
        d->thread.reset(new QThread);
        d->thread->start(QThread::InheritPriority);
    }
    if (!d->runner) {
        d->runner = std::make_unique<SupportTaskRunner>(&d->cancelled);
        connect(d->runner.get(), &SupportTaskRunner::signalProgress, this,
                &SupportTaskManager::slotProgress);
        connect(d->runner.get(), &SupportTaskRunner::signalTaskFinished, this,
                &SupportTaskManager::slotTaskFinished);
        d->runner->moveToThread(d->thread.get());
    }
}

void SupportTaskManager::runFrontTask()
{
    d->dialog->show();
    d->dialog->raise();
    d->runner->setTask(d->queue.front().get());
    d->runner->start();
}

void SupportTaskManager::endBatch()
{
    // reset() also stops the dialog's own show timer, which would otherwise bring it back later.
    d->dialog->reset();
    d->dialog->hide();
    d->cancelled = false;
    emit signalFinished();
}
