#include "RecordingData.h"
#include "SupportLoader.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace {

QProgressDialog* progressDialog()
{
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (auto* dialog = qobject_cast<QProgressDialog*>(widget))
            return dialog;
    }
    return nullptr;
}

SupportDataTable makeTable(RecordingData::Journal* journal, QList<int> mainThreadKinds = {})
{
    const QList<QPair<int, QString>> kinds{{5, QStringLiteral("System")},
                                           {0, QStringLiteral("Display")},
                                           {4, QStringLiteral("Corvanta")},
                                           {1, QStringLiteral("Fonts")},
                                           {3, QStringLiteral("Permissions")}};
    auto table = SupportDataTable::create();
    for (const auto& [kind, name] : kinds)
        table->emplace(kind, std::make_unique<RecordingData>(kind, name, journal,
                                                             mainThreadKinds.contains(kind)));
    return table;
}

} // namespace

class tst_SupportLoader : public QObject
{
    Q_OBJECT

private slots:
    void loadsInAscendingKindOneAtATime();
    void dialogShowsEachCollectorInTurn();
    void mainThreadStepPrecedesWorkerStep();
    void emptyTableFinishesAtOnce();
    void vanishedTableIsIgnored();
};

void tst_SupportLoader::loadsInAscendingKindOneAtATime()
{
    RecordingData::Journal journal;
    const SupportDataTable table = makeTable(&journal);
    SupportLoader loader(table.toWeakRef());
    QSignalSpy finished(&loader, &SupportLoader::signalFinished);
    loader.start();
    QVERIFY(finished.wait(10000));
    QCOMPARE(finished.count(), 1);

    QCOMPARE(journal.snapshot(), QStringList({"begin:0", "end:0", "begin:1", "end:1", "begin:3",
                                              "end:3", "begin:4", "end:4", "begin:5", "end:5"}));
    QCOMPARE(journal.loadThreads.size(), 5);
    for (QThread* thread : std::as_const(journal.loadThreads)) {
        QVERIFY(thread != QThread::currentThread());
        QCOMPARE(thread, journal.loadThreads.first());
    }
}

void tst_SupportLoader::dialogShowsEachCollectorInTurn()
{
    RecordingData::Journal journal;
    const SupportDataTable table = makeTable(&journal);
    SupportLoader loader(table.toWeakRef());
    QStringList labels;
    QList<int> values;
    QList<bool> visible;
    QProgressDialog* dialog = nullptr;
    connect(&loader, &SupportLoader::signalStartWorkerItem, this, [&] {
        dialog = progressDialog();
        if (!dialog)
            return;
        labels << dialog->labelText();
        values << dialog->value();
        visible << dialog->isVisible();
    });
    QSignalSpy finished(&loader, &SupportLoader::signalFinished);
    loader.start();
    QVERIFY(finished.wait(10000));

    QCOMPARE(labels, QStringList({"Loading Display data...", "Loading Fonts data...",
                                  "Loading Permissions data...", "Loading Corvanta data...",
                                  "Loading System data..."}));
    QCOMPARE(values, QList<int>({0, 1, 2, 3, 4}));
    // Shown on the first event loop turn, so from the second collector on at the latest.
    QCOMPARE(visible.mid(1), QList<bool>({true, true, true, true}));
    QVERIFY(dialog);
    QCOMPARE(dialog->maximum(), 5);
    QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Corvanta Support"));
    QVERIFY(dialog->findChildren<QPushButton*>().isEmpty());
    QVERIFY(!dialog->isVisible());
}

void tst_SupportLoader::mainThreadStepPrecedesWorkerStep()
{
    RecordingData::Journal journal;
    const SupportDataTable table = makeTable(&journal, {1, 4});
    SupportLoader loader(table.toWeakRef());
    QSignalSpy finished(&loader, &SupportLoader::signalFinished);
    loader.start();
    QVERIFY(finished.wait(10000));

    QCOMPARE(journal.snapshot(),
             QStringList({"begin:0", "end:0", "main:1", "begin:1", "end:1", "begin:3", "end:3",
                          "main:4", "begin:4", "end:4", "begin:5", "end:5"}));
    QCOMPARE(journal.mainThreadStepThreads.size(), 2);
    for (QThread* thread : std::as_const(journal.mainThreadStepThreads))
        QCOMPARE(thread, QApplication::instance()->thread());
    QVERIFY(journal.loadThreads.first() != QApplication::instance()->thread());
}

void tst_SupportLoader::emptyTableFinishesAtOnce()
{
    const auto table = SupportDataTable::create();
    SupportLoader loader(table.toWeakRef());
    int maximumSeen = -1;
    QSignalSpy finished(&loader, &SupportLoader::signalFinished);
    connect(&loader, &SupportLoader::signalFinished, this, [&] {
        if (QProgressDialog* dialog = progressDialog()) {
            maximumSeen = dialog->maximum();
            QVERIFY(!dialog->isVisible());
        }
    });
    loader.start();
    // Emitted within start() itself, with no event loop turn.
    QCOMPARE(finished.count(), 1);
    QCOMPARE(maximumSeen, 0);
}

void tst_SupportLoader::vanishedTableIsIgnored()
{
    RecordingData::Journal journal;
    SupportDataTable table = makeTable(&journal);
    SupportLoader loader(table.toWeakRef());
    table.reset();
    QSignalSpy finished(&loader, &SupportLoader::signalFinished);
    loader.start();
    QTest::qWait(50);
    QCOMPARE(finished.count(), 0);
    QVERIFY(journal.snapshot().isEmpty());
    QVERIFY(!progressDialog() || !progressDialog()->isVisible());
}

QTEST_MAIN(tst_SupportLoader)
#include "tst_supportloader.moc"
