#include "SupportTaskManager.h"
#include "SupportTaskRunner.h"

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

QProgressDialog* progressDialog()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    auto found = std::find_if(windows.cbegin(), windows.cend(),
                              [](QWidget* w) { return qobject_cast<QProgressDialog*>(w); });
    return found == windows.cend() ? nullptr : static_cast<QProgressDialog*>(*found);
}

void clickCancel()
{
    QVERIFY(progressDialog() && progressDialog()->isVisible());
    progressDialog()->findChild<QPushButton*>()->click();
}

// Journals each step until the manager's flag is set and reports "name:steps run;". The hook runs
// after every step with the step's number.
class StepTask : public SupportTask
{
public:
    StepTask(
        const QString& name, int steps, QStringList* journal,
        std::function<void(int)> hook = [](int) {})
        : m_name(name)
        , m_steps(steps)
        , m_journal(journal)
        , m_hook(std::move(hook))
    {}
    ~StepTask() override { m_journal->append("deleted " + m_name); }

    QString report() const override { return u"%1:%2;"_s.arg(m_name).arg(m_done); }

    void run() override
    {
        if (QThread::currentThread() != qApp->thread())
            m_journal->append(u"off the GUI thread"_s);
        for (; m_done < m_steps && !*cancelFlag(); ++m_done) {
            m_journal->append(m_name + QString::number(m_done));
            runner()->progress(m_done + 1, 0, m_steps, m_name);
            m_hook(m_done);
        }
        runner()->finish(report());
    }

private:
    QString m_name;
    int m_steps;
    QStringList* m_journal;
    std::function<void(int)> m_hook;
    int m_done = 0;
};

} // namespace

class tst_SupportTaskManager : public QObject
{
    Q_OBJECT

    QStringList m_journal;

private slots:
    void init() { m_journal.clear(); }

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
        SupportTaskManager manager;
        QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
        manager.addTask(new StepTask(u"a"_s, 2, &m_journal, [this](int step) {
            if (step == 0)
                m_journal.append(progressDialog()->isVisible() ? u"shown"_s : u"hidden"_s);
        }));
        manager.addTask(new StepTask(u"b"_s, 1, &m_journal));
        manager.start();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(manager.report(), u"a:2;b:1;"_s);
        QCOMPARE(m_journal, QStringList({"a0", "shown", "a1", "deleted a", "b0", "deleted b"}));
        QVERIFY(!progressDialog()->isVisible());

        manager.addTask(new StepTask(u"c"_s, 1, &m_journal));
        manager.start();
        QCOMPARE(finished.count(), 2);
        QCOMPARE(manager.report(), u"a:2;b:1;c:1;"_s);
    }

    // The first click arrives through the modal dialog's event processing while the task reports
    // progress. Tasks still queued after a cancel wait for the next start, or die with the manager.
    void cancelEndsTheBatch()
    {
        {
            SupportTaskManager manager;
            QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
            manager.addTask(new StepTask(u"a"_s, 10, &m_journal, [](int step) {
                if (step == 1)
                    QTimer::singleShot(0, qApp, clickCancel);
            }));
            manager.addTask(new StepTask(u"b"_s, 1, &m_journal));
            manager.start();
            QCOMPARE(finished.count(), 1);
            QCOMPARE(manager.report(), u"a:3;"_s);
            QVERIFY(!progressDialog()->isVisible());

            manager.addTask(new StepTask(u"c"_s, 5, &m_journal, [](int) { clickCancel(); }));
            manager.addTask(new StepTask(u"d"_s, 1, &m_journal));
            manager.start();
            QCOMPARE(finished.count(), 2);
            QCOMPARE(manager.report(), u"a:3;b:1;c:1;"_s);
        }
        QCOMPARE(m_journal, QStringList({"a0", "a1", "a2", "deleted a", "b0", "deleted b", "c0",
                                         "deleted c", "deleted d"}));
    }

    void startWhileRunningDoesNothingMore()
    {
        SupportTaskManager manager;
        QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
        manager.addTask(new StepTask(u"a"_s, 2, &m_journal, [&](int step) {
            if (step > 0)
                return;
            manager.addTask(new StepTask(u"b"_s, 1, &m_journal));
            manager.start();
            m_journal.append(u"started again"_s);
        }));
        manager.start();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(m_journal,
                 QStringList({"a0", "started again", "a1", "deleted a", "b0", "deleted b"}));
        QCOMPARE(manager.report(), u"a:2;b:1;"_s);
    }
};

QTEST_MAIN(tst_SupportTaskManager)
#include "tst_supporttaskmanager.moc"
