#include "SupportTaskManager.h"
#include "SupportTaskRunner.h"

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

QProgressDialog* progressDialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QProgressDialog*>(widget))
            return dialog;
    }
    return nullptr;
}

void clickCancel()
{
    QProgressDialog* dialog = progressDialog();
    QVERIFY(dialog && dialog->isVisible());
    const auto buttons = dialog->findChildren<QPushButton*>();
    QCOMPARE(buttons.size(), 1);
    buttons.first()->click();
}

// Runs its steps, writing each to the journal, until the manager's flag is set; reports the
// number of steps it ran. The hook runs after the given step.
class StepTask : public SupportTask
{
public:
    StepTask(const QString& name, int steps, QStringList* journal, int hookStep = -1,
             std::function<void()> hook = {})
        : m_name(name)
        , m_steps(steps)
        , m_journal(journal)
        , m_hookStep(hookStep)
        , m_hook(std::move(hook))
    {}
    ~StepTask() override { m_journal->append(u"deleted "_s + m_name); }

    QString report() const override { return u"%1:%2;"_s.arg(m_name).arg(m_done); }

    void run() override
    {
        if (QThread::currentThread() != qApp->thread())
            m_journal->append(u"off the GUI thread"_s);
        for (int step = 0; step < m_steps && !*cancelFlag(); ++step) {
            m_journal->append(m_name + QString::number(step));
            ++m_done;
            runner()->progress(step + 1, 0, m_steps, m_name);
            if (step == m_hookStep)
                m_hook();
        }
        runner()->finish(report());
    }

private:
    QString m_name;
    int m_steps;
    QStringList* m_journal;
    int m_hookStep;
    std::function<void()> m_hook;
    int m_done = 0;
};

} // namespace

class tst_SupportTaskManager : public QObject
{
    Q_OBJECT

private slots:
    // The dialog's own show timer must not bring it up after an empty batch.
    void emptyQueueFinishesAtOnce()
    {
        SupportTaskManager manager;
        QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
        manager.start();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(manager.report(), QString());
        QTest::qWait(4500);
        QVERIFY(progressDialog() && !progressDialog()->isVisible());
        QCOMPARE(finished.count(), 1);
    }

    void tasksRunInOrderAndBatchesAppend()
    {
        QStringList journal;
        SupportTaskManager manager;
        QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
        manager.addTask(new StepTask(u"a"_s, 3, &journal, 1, [&] {
            journal.append(progressDialog()->isVisible() ? u"shown"_s : u"hidden"_s);
        }));
        manager.addTask(new StepTask(u"b"_s, 2, &journal));
        manager.start();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(manager.report(), u"a:3;b:2;"_s);
        QCOMPARE(journal,
                 QStringList({"a0", "a1", "shown", "a2", "deleted a", "b0", "b1", "deleted b"}));
        QVERIFY(!progressDialog()->isVisible());

        manager.addTask(new StepTask(u"c"_s, 1, &journal));
        manager.start();
        QCOMPARE(finished.count(), 2);
        QCOMPARE(manager.report(), u"a:3;b:2;c:1;"_s);
    }

    // The click arrives through the modal dialog's event processing while the task reports
    // progress; the queued task stays for the next start.
    void cancelEndsTheBatch()
    {
        QStringList journal;
        {
            SupportTaskManager manager;
            QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
            manager.addTask(new StepTask(u"a"_s, 10, &journal, 1,
                                         [] { QTimer::singleShot(0, qApp, clickCancel); }));
            manager.addTask(new StepTask(u"b"_s, 2, &journal));
            manager.addTask(new StepTask(u"c"_s, 1, &journal));
            manager.start();
            QCOMPARE(finished.count(), 1);
            QCOMPARE(manager.report(), u"a:3;"_s);
            QCOMPARE(journal, QStringList({"a0", "a1", "a2", "deleted a"}));
            QVERIFY(!progressDialog()->isVisible());

            journal.clear();
            manager.addTask(new StepTask(u"d"_s, 5, &journal, 0, [&] { clickCancel(); }));
            manager.addTask(new StepTask(u"e"_s, 1, &journal));
            manager.start();
            QCOMPARE(finished.count(), 2);
            QCOMPARE(manager.report(), u"a:3;b:2;c:1;d:1;"_s);
            QCOMPARE(journal,
                     QStringList({"b0", "b1", "deleted b", "c0", "deleted c", "d0", "deleted d"}));
            journal.clear();
        }
        // Still queued, and deleted with the manager.
        QCOMPARE(journal, QStringList{u"deleted e"_s});
    }

    void startWhileRunningDoesNothingMore()
    {
        QStringList journal;
        SupportTaskManager manager;
        QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
        manager.addTask(new StepTask(u"a"_s, 2, &journal, 0, [&] {
            manager.addTask(new StepTask(u"b"_s, 1, &journal));
            manager.start();
            journal.append(u"started again"_s);
        }));
        manager.start();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(journal,
                 QStringList({"a0", "started again", "a1", "deleted a", "b0", "deleted b"}));
        QCOMPARE(manager.report(), u"a:2;b:1;"_s);
    }
};

QTEST_MAIN(tst_SupportTaskManager)
#include "tst_supporttaskmanager.moc"
