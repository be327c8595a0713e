#include "RecordingData.h"
#include "SupportLoader.h"

#include <QApplication>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QList<int> allKinds{0, 1, 3, 4, 5};

QProgressDialog* progressDialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QProgressDialog*>(widget))
            return dialog;
    }
    return nullptr;
}

bool runToEnd(SupportLoader& loader)
{
    QSignalSpy finished(&loader, &SupportLoader::signalFinished);
    loader.start();
    return finished.wait(10000) && finished.count() == 1;
}

} // namespace

class tst_SupportLoader : public QObject
{
    Q_OBJECT

private slots:
    // Each collector loads on one worker thread, ascending by kind, never overlapping; those that
    // need it run their main-thread step on the GUI thread just before. The modal dialog names
    // each collector in turn, shown on the first event loop turn, so from the second one on.
    void loadOrderAndThreads()
    {
        RecordingData::Journal journal;
        const SupportDataTable table = RecordingData::table(allKinds, &journal);
        RecordingData::in(table, 1)->mainThreadWork = true;
        RecordingData::in(table, 4)->mainThreadWork = true;
        SupportLoader loader(table.toWeakRef());
        QStringList seen;
        QProgressDialog* dialog = nullptr;
        connect(&loader, &SupportLoader::signalStartWorkerItem, this, [&] {
            if ((dialog = progressDialog()))
                seen << u"%1 %2 %3"_s.arg(dialog->labelText())
                            .arg(dialog->value())
                            .arg(dialog->isVisible());
        });
        QVERIFY(runToEnd(loader));
        QCOMPARE(journal.snapshot(),
                 (QStringList{"begin:0", "end:0", "main:1", "begin:1", "end:1", "begin:3", "end:3",
                              "main:4", "begin:4", "end:4", "begin:5", "end:5"}));
        QCOMPARE(journal.loadThreads.size(), 5);
        for (QThread* thread : std::as_const(journal.loadThreads)) {
            QVERIFY(thread != QThread::currentThread());
            QCOMPARE(thread, journal.loadThreads.first());
        }
        QCOMPARE(journal.mainThreadStepThreads, QList<QThread*>(2, QThread::currentThread()));
        QCOMPARE(seen.mid(1),
                 (QStringList{"Loading Fonts data... 1 1", "Loading Permissions data... 2 1",
                              "Loading Corvanta data... 3 1", "Loading System data... 4 1"}));
        QVERIFY(seen.value(0).startsWith(u"Loading Display data... 0 "_s));
        QCOMPARE(dialog->maximum(), 5);
        QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
        QCOMPARE(dialog->windowTitle(), u"Corvanta Support"_s);
        QVERIFY(dialog->findChildren<QPushButton*>().isEmpty());
        QVERIFY(!dialog->isVisible());
    }

    // Neither Esc nor a close request, as a window manager sends it, ends the dialog, the
    // program's only window while loading, before the pass does.
    void dialogCannotBeDismissed()
    {
        RecordingData::Journal journal;
        const SupportDataTable table = RecordingData::table(allKinds, &journal);
        RecordingData::in(table, 0)->loadMs = 2000;
        SupportLoader loader(table.toWeakRef());
        QSignalSpy finished(&loader, &SupportLoader::signalFinished);
        QSignalSpy lastClosed(qApp, &QGuiApplication::lastWindowClosed);
        loader.start();
        const QPointer<QProgressDialog> dialog = progressDialog();
        QVERIFY(dialog);
        QTRY_VERIFY(dialog->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(dialog));
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTest::qWait(100);
        QVERIFY(dialog && dialog->isVisible());
        dialog->windowHandle()->close();
        QTest::qWait(100);
        QVERIFY(dialog && dialog->isVisible());
        QVERIFY(finished.wait(10000));
        QCOMPARE(journal.snapshot().size(), 2 * allKinds.size());
        QCOMPARE(lastClosed.count(), 0);
    }

    // Quitting takes the loader down with the window, here while a collector is busy for longer
    // than 10 s; the program must end without aborting.
    void quitDuringASlowLoadEndsCleanly()
    {
        RecordingData::Journal journal;
        const SupportDataTable table = RecordingData::table({0, 1}, &journal);
        RecordingData::in(table, 0)->loadMs = 11000;
        auto loader = std::make_unique<SupportLoader>(table.toWeakRef());
        loader->start();
        QTRY_COMPARE(journal.snapshot(), QStringList{u"begin:0"_s});
        loader.reset();
        QCOMPARE(journal.snapshot(), (QStringList{u"begin:0"_s, u"end:0"_s}));
        QVERIFY(!progressDialog());
    }

    void nothingToLoad_data()
    {
        QTest::addColumn<bool>("vanished");
        QTest::newRow("empty table") << false;
        QTest::newRow("vanished table") << true;
    }

    // An empty table finishes within start() itself, with no event loop turn; a vanished one is
    // ignored. Neither brings up the dialog, not even by its own show timer, which runs for four
    // seconds.
    void nothingToLoad()
    {
        QFETCH(bool, vanished);
        RecordingData::Journal journal;
        SupportDataTable table =
            vanished ? RecordingData::table(allKinds, &journal) : SupportDataTable::create();
        SupportLoader loader(table.toWeakRef());
        if (vanished)
            table.reset();
        QSignalSpy finished(&loader, &SupportLoader::signalFinished);
        loader.start();
        QCOMPARE(finished.count(), vanished ? 0 : 1);
        QTest::qWait(4500);
        QCOMPARE(finished.count(), vanished ? 0 : 1);
        QVERIFY(journal.snapshot().isEmpty());
        QVERIFY(!progressDialog() || !progressDialog()->isVisible());
    }
};

QTEST_MAIN(tst_SupportLoader)
#include "tst_supportloader.moc"
