#include "RecordingData.h"
#include "RunAsNobody.h"
#include "SupportBenchmarkFileIoTask.h"
#include "SupportLoader.h"
#include "SupportTaskManager.h"
#include "SupportTaskRunner.h"
#include "TestEnvironment.h"

#include <QApplication>
#include <QDir>
#include <QPointer>
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

const QList<int> allKinds{0, 1, 3, 4, 5};

QList<QProgressDialog*> progressDialogs()
{
    QList<QProgressDialog*> dialogs;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* dialog = qobject_cast<QProgressDialog*>(widget))
            dialogs << dialog;
    return dialogs;
}

QProgressDialog* progressDialog()
{
    return progressDialogs().value(0);
}

void clickCancel()
{
    QVERIFY(progressDialog() && progressDialog()->isVisible());
    progressDialog()->findChild<QPushButton*>()->click();
}

QStringList journal; // what the step tasks did, in order

// Journals each step until cancelled; the hook runs after every step.
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

// Per operation: its name, its number of timings (else its statistics) and its errors.
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

    // Empty batches and tables end in start(), vanished ones are ignored; no dialog ever shows.
    void nothingToDo()
    {
        SupportTaskManager manager;
        QSignalSpy batchFinished(&manager, &SupportTaskManager::signalFinished);
        manager.start();
        QCOMPARE(batchFinished.count(), 1);
        RecordingData::Journal loads;
        SupportDataTable vanished = RecordingData::table(allKinds, &loads);
        const SupportDataTable empty = SupportDataTable::create();
        SupportLoader emptyLoader(empty.toWeakRef());
        SupportLoader vanishedLoader(vanished.toWeakRef());
        vanished.reset();
        QSignalSpy emptyFinished(&emptyLoader, &SupportLoader::signalFinished);
        QSignalSpy vanishedFinished(&vanishedLoader, &SupportLoader::signalFinished);
        emptyLoader.start();
        vanishedLoader.start();
        QCOMPARE(emptyFinished.count(), 1);
        QTest::qWait(4500);
        QCOMPARE(batchFinished.count() + emptyFinished.count() + vanishedFinished.count(), 2);
        QVERIFY(loads.snapshot().isEmpty() && !progressDialogs().isEmpty());
        for (const QProgressDialog* dialog : progressDialogs())
            QVERIFY(!dialog->isVisible());
    }

    // One worker thread by kind, main-thread steps just before; the dialog shows at once and
    // resists Esc and close. Quitting while a collector is busy for over 10 s must not abort.
    void loading()
    {
        RecordingData::Journal journal;
        const SupportDataTable table = RecordingData::table(allKinds, &journal);
        RecordingData::in(table, 0)->loadMs = 2000;
        RecordingData::in(table, 1)->mainThreadWork = true;
        RecordingData::in(table, 4)->mainThreadWork = true;
        {
            SupportLoader loader(table.toWeakRef());
            QStringList seen;
            connect(&loader, &SupportLoader::signalStartWorkerItem, this, [&] {
                if (const QProgressDialog* dialog = progressDialog())
                    seen << dialog->labelText() + ' ' + QString::number(dialog->value()) + ' '
                                + QString::number(dialog->isVisible());
            });
            QSignalSpy finished(&loader, &SupportLoader::signalFinished);
            QSignalSpy lastClosed(qApp, &QGuiApplication::lastWindowClosed);
            loader.start();
            const QPointer<QProgressDialog> dialog = progressDialog();
            QTRY_VERIFY(dialog && dialog->isVisible());
            QVERIFY(QTest::qWaitForWindowExposed(dialog));
            QTest::keyClick(dialog, Qt::Key_Escape); // taken at once: a hidden dialog stays hidden
            dialog->windowHandle()->close();
            QTest::qWait(100);
            QVERIFY(dialog && dialog->isVisible());
            QVERIFY(finished.wait(10000));
            QCOMPARE(journal.snapshot(),
                     (QStringList{"begin:0", "end:0", "main:1", "begin:1", "end:1", "begin:3",
                                  "end:3", "main:4", "begin:4", "end:4", "begin:5", "end:5"}));
            QCOMPARE(journal.loadThreads, QList<QThread*>(5, journal.loadThreads.value(0)));
            QVERIFY(journal.loadThreads.first() != QThread::currentThread());
            QCOMPARE(journal.mainThreadStepThreads, QList<QThread*>(2, QThread::currentThread()));
            QCOMPARE(seen.mid(1),
                     (QStringList{"Loading Fonts data... 1 1", "Loading Permissions data... 2 1",
                                  "Loading Corvanta data... 3 1", "Loading System data... 4 1"}));
            QVERIFY(seen.value(0).startsWith(u"Loading Display data... 0 "_s));
            QVERIFY(dialog->findChildren<QPushButton*>().isEmpty() && !dialog->isVisible());
            QVERIFY(finished.count() == 1 && lastClosed.isEmpty());
        }

        RecordingData::in(table, 0)->loadMs = 11000;
        auto slow = std::make_unique<SupportLoader>(table.toWeakRef());
        slow->start();
        QTRY_COMPARE(journal.snapshot().size(), 13);
        slow.reset();
        QCOMPARE(journal.snapshot().mid(12), (QStringList{u"begin:0"_s, u"end:0"_s}));
        QVERIFY(!progressDialog());
    }

    // A start inside a running task only queues; after a cancel, queued tasks wait or die with it.
    void batches()
    {
        {
            SupportTaskManager manager;
            QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
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
            QCOMPARE(finished.count(), 1);
            QCOMPARE(manager.report(), u"a:3;"_s);
            QVERIFY(!progressDialog()->isVisible());

            manager.addTask(new StepTask(u"c"_s, 5, [](int) { clickCancel(); }));
            manager.addTask(new StepTask(u"d"_s, 1));
            manager.start();
            QCOMPARE(finished.count(), 2);
            QCOMPARE(manager.report(), u"a:3;b:1;c:1;"_s);
        }
        QCOMPARE(journal, QStringList({"a0", "shown", "a1", "a2", "deleted a", "b0", "deleted b",
                                       "c0", "deleted c", "deleted d"}));
    }

    void benchmark_data()
    {
        QTest::addColumn<QString>("cancelAt"); // a progress text; none in a read-only folder
        QTest::addColumn<QStringList>("blocks");
        const QString unmeasured = u"min=1e+30 max=-1e+30 mean=nan"_s;
        QStringList cancelled, readOnly;
        for (const QString& name : u"CREATE DLTE MOVE COPY SEQUENTIAL_SEEK SEQUENTIAL_READ "
                                   "SEQUENTIAL_WRITE RANDOM_SEEK"_s.split(u' ')) {
            const bool seeks = name.startsWith(u"S"_s) || name.startsWith(u"R"_s);
            if (!seeks)
                cancelled << name + ' ' + (name == u"COPY"_s ? u"1"_s : u"1000"_s);
            readOnly << name + ' '
                            + (seeks ? unmeasured + " Errors: Creating seekable file  failed.|"
                                     : u"1000 Errors: 1000 of 1000 failed||"_s);
        }
        QTest::newRow("cancel during copy") << u"Copying 1000 files..."_s << cancelled;
#ifndef Q_OS_WIN // Windows' read-only folders take new files.
        QTest::newRow("read-only folder") << QString() << readOnly;
#endif
    }

    // The ticker sees the dialog at every progress step.
    void benchmark()
    {
        QFETCH(QString, cancelAt);
        const bool readOnly = cancelAt.isEmpty();
        if (readOnly) {
            RUN_AS_NOBODY_WHEN_ROOT();
        }
        const QString location = m_environment.path(QTest::currentDataTag());
        QVERIFY(
            QDir().mkpath(location)
            && (!readOnly || QFile::setPermissions(location, QFile::ReadOwner | QFile::ExeOwner)));

        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&] {
            if (const QProgressDialog* dialog = progressDialog();
                !readOnly && dialog && dialog->isVisible() && dialog->labelText() == cancelAt)
                clickCancel();
        });
        ticker.start(0);
        SupportTaskManager manager;
        manager.addTask(new SupportBenchmarkFileIoTask(location));
        manager.start();
        QTEST(summary(manager.report()), "blocks");
        QCOMPARE(manager.report().endsWith(u"\nCancelled.\n"_s), !readOnly);
        QVERIFY(QDir(location).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    }
};

QTEST_MAIN(tst_SupportTasks)
#include "tst_supporttasks.moc"
