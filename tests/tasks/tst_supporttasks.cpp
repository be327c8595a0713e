#include "RunAsNobody.h"
#include "SupportBenchmarkFileIoTask.h"
#include "SupportTaskManager.h"
#include "SupportTaskRunner.h"
#include "TestEnvironment.h"

#include <QApplication>
#include <QDir>
#include <QProgressDialog>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <functional>

#include <unistd.h>

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
    QVERIFY(progressDialog() && progressDialog()->isVisible());
    progressDialog()->findChild<QPushButton*>()->click();
}

QStringList journal; // what the step tasks did, in order

// Journals each step until the manager's flag is set and reports "name:steps run;". The hook runs
// after every step with the step's number.
class StepTask : public SupportTask
{
public:
    StepTask(const QString& name, int steps, std::function<void(int)> hook = {})
        : m_name(name)
        , m_steps(steps)
        , m_hook(std::move(hook))
    {}
    ~StepTask() override { journal.append("deleted " + m_name); }

    QString report() const override { return u"%1:%2;"_s.arg(m_name).arg(m_done); }

    void run() override
    {
        if (QThread::currentThread() != qApp->thread())
            journal.append(u"off the GUI thread"_s);
        for (; m_done < m_steps && !*cancelFlag(); ++m_done) {
            journal.append(m_name + QString::number(m_done));
            runner()->progress(m_done + 1, 0, m_steps, m_name);
            if (m_hook)
                m_hook(m_done);
        }
        runner()->finish(report());
    }

private:
    QString m_name;
    int m_steps;
    std::function<void(int)> m_hook;
    int m_done = 0;
};

// One line per operation: its name, its number of timings (its statistics when it has none) and
// its error lines joined with "|".
QStringList summary(const QString& report)
{
    static const QRegularExpression block(
        u"^([A-Z_]+) (min=\\S+ max=\\S+ mean=\\S+)\\n(.*)\\n(?:Errors:\\n((?:(?![A-Z_]+ min=).*\\n)*))?"_s,
        QRegularExpression::MultilineOption);
    QStringList lines;
    for (const auto& match : block.globalMatch(report)) {
        const qsizetype times = match.captured(3).split(',', Qt::SkipEmptyParts).size();
        lines << match.captured(1) + ' ' + (times ? QString::number(times) : match.captured(2))
                     + (match.hasCaptured(4) ? " Errors: " + match.captured(4).replace('\n', '|')
                                             : QString());
    }
    return lines;
}

} // namespace

class tst_SupportTasks : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;

private slots:
    void init() { journal.clear(); }

    // Batches run their tasks in order and add to one report. An empty batch ends at once, and the
    // dialog's own show timer must not bring the dialog up after it. A start from inside a running
    // task only queues. The first cancel click arrives through the modal dialog's event processing;
    // tasks still queued after a cancel wait for the next start, or die with the manager.
    void batches()
    {
        {
            SupportTaskManager manager;
            QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
            manager.start();
            QCOMPARE(finished.count(), 1);
            QTest::qWait(4500);
            QVERIFY(progressDialog() && !progressDialog()->isVisible());

            manager.addTask(new StepTask(u"a"_s, 10, [&](int step) {
                if (step == 1)
                    QTimer::singleShot(0, qApp, clickCancel);
                if (step > 0)
                    return;
                journal.append(progressDialog()->isVisible() ? u"shown"_s : u"hidden"_s);
                manager.addTask(new StepTask(u"b"_s, 1));
                manager.start();
            }));
            manager.start();
            QCOMPARE(finished.count(), 2);
            QCOMPARE(manager.report(), u"a:3;"_s);
            QVERIFY(!progressDialog()->isVisible());

            manager.addTask(new StepTask(u"c"_s, 5, [](int) { clickCancel(); }));
            manager.addTask(new StepTask(u"d"_s, 1));
            manager.start();
            QCOMPARE(finished.count(), 3);
            QCOMPARE(manager.report(), u"a:3;b:1;c:1;"_s);
        }
        QCOMPARE(journal, QStringList({"a0", "shown", "a1", "a2", "deleted a", "b0", "deleted b",
                                       "c0", "deleted c", "deleted d"}));
    }

    void benchmark_data()
    {
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<QString>("cancelAt"); // a progress text
        QTest::addColumn<QStringList>("blocks");
        const QString unmeasured = u"min=1e+30 max=-1e+30 mean=nan"_s;
        QStringList full, cancelled, readOnly;
        for (const QString& name : u"CREATE DLTE MOVE COPY SEQUENTIAL_SEEK SEQUENTIAL_READ "
                                   "SEQUENTIAL_WRITE RANDOM_SEEK"_s.split(u' ')) {
            const bool seeks = name.startsWith(u"S"_s) || name.startsWith(u"R"_s);
            full << name + " 1000";
            cancelled << name + ' ' + (seeks ? unmeasured : name == u"COPY"_s ? u"1"_s : u"1000"_s);
            readOnly << name + ' '
                            + (seeks ? unmeasured + " Errors: Creating seekable file  failed.|"
                                     : u"1000 Errors: 1000 of 1000 failed||"_s);
        }
        QTest::newRow("full") << false << QString() << full;
        QTest::newRow("cancel during copy") << false << u"Copying 1000 files..."_s << cancelled;
        QTest::newRow("read-only folder") << true << QString() << readOnly;
    }

    // The benchmark through a real manager; the ticker sees the dialog whenever the batch lets
    // events through, which is at every progress step.
    void benchmark()
    {
        QFETCH(bool, readOnly);
        QFETCH(QString, cancelAt);
        if (readOnly) {
            RUN_AS_NOBODY_WHEN_ROOT();
        }
        const QString location = m_environment.path(QTest::currentDataTag());
        QVERIFY(QDir().mkpath(location));
        if (readOnly)
            QVERIFY(QFile::setPermissions(location, QFile::ReadOwner | QFile::ExeOwner));

        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&] {
            QProgressDialog* dialog = progressDialog();
            if (!cancelAt.isEmpty() && dialog && dialog->isVisible()
                && dialog->labelText() == cancelAt)
                clickCancel();
        });
        ticker.start(0);
        SupportTaskManager manager;
        manager.addTask(new SupportBenchmarkFileIoTask(location));
        manager.start();
        const QString report = manager.report();
        QVERIFY(readOnly || report.startsWith(location + '\n'));
        QTEST(summary(report), "blocks");
        QCOMPARE(QDir(location).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList());
    }
};

QTEST_MAIN(tst_SupportTasks)
#include "tst_supporttasks.moc"
