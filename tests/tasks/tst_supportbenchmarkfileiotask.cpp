#include "RunAsNobody.h"
#include "SupportBenchmarkFileIoTask.h"
#include "SupportTaskManager.h"
#include "TestEnvironment.h"

#include <QApplication>
#include <QDirIterator>
#include <QProgressDialog>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString unmeasured = u"min=1e+30 max=-1e+30 mean=nan"_s;

QString number(double value)
{
    return u"%1"_s.arg(value, 0, 'g', 1);
}

// One line per operation: its name, its number of times (or its statistics when it has none) and
// its error lines joined with "|". Statistics that disagree with the times are marked.
QStringList summary(const QString& report)
{
    static const QRegularExpression block(
        u"^([A-Z_]+) (min=(\\S+) max=(\\S+) mean=(\\S+))\\n(.*)\\n(?:Errors:\\n((?:(?![A-Z_]+ min=).*\\n)*))?"_s,
        QRegularExpression::MultilineOption);
    QStringList lines;
    for (const auto& match : block.globalMatch(report)) {
        const QStringList texts = match.captured(6).split(',', Qt::SkipEmptyParts);
        QList<double> times;
        for (const QString& text : texts)
            times.append(text.toDouble());
        QString line = match.captured(1) + ' '
                       + (times.isEmpty() ? match.captured(2) : QString::number(times.size()));
        if (!times.isEmpty()) {
            const auto [low, high] = std::minmax_element(times.cbegin(), times.cend());
            const double mean = match.captured(5).toDouble();
            if (match.captured(3) != number(*low) || match.captured(4) != number(*high)
                || mean < *low || mean > *high
                || texts.filter(QRegularExpression(u"^\\d(e-\\d\\d)?$|^0\\.0*\\d$"_s)) != texts)
                line += u" bad statistics"_s;
        }
        if (match.hasCaptured(7))
            line += " Errors: " + match.captured(7).replace('\n', '|');
        lines.append(line);
    }
    return lines;
}

// Files per phase folder (moved and copied ones apart) as "folder: count, bytes".
QStringList contents(const QString& location)
{
    QMap<QString, QPair<int, qint64>> sums;
    QDirIterator it(location, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo file(it.next());
        const QString suffix = file.fileName().section('_', 1);
        auto& sum = sums[file.dir().dirName() + (suffix.isEmpty() ? "" : " " + suffix)];
        sum = {sum.first + 1, sum.second + file.size()};
    }
    QStringList result;
    for (auto i = sums.cbegin(); i != sums.cend(); ++i)
        result.append(u"%1: %2, %3"_s.arg(i.key()).arg(i->first).arg(i->second));
    return result;
}

} // namespace

class tst_SupportBenchmarkFileIoTask : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;

private slots:
    void run_data()
    {
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<QString>("cancelAt"); // a progress text
        QTest::addColumn<QStringList>("blocks");
        QTest::addColumn<QStringList>("files"); // seen while seeking randomly
        const QStringList names{
            "CREATE",           "DLTE",       "MOVE", "COPY", "SEQUENTIAL_SEEK", "SEQUENTIAL_READ",
            "SEQUENTIAL_WRITE", "RANDOM_SEEK"};
        QStringList full, cancelled, readOnly;
        for (int i = 0; i < names.size(); ++i) {
            const bool seeks = i > SupportBenchmarkFileIoTask::Copy;
            full.append(names[i] + " 1000");
            cancelled.append(names[i] + ' '
                             + (i < SupportBenchmarkFileIoTask::Copy ? u"1000"_s
                                : seeks                              ? unmeasured
                                                                     : u"1"_s));
            readOnly.append(names[i] + ' '
                            + (seeks ? unmeasured + " Errors: Creating seekable file  failed.|"
                                     : u"1000 Errors: 1000 of 1000 failed||"_s));
        }
        const QStringList files{"copy: 1000, 0",
                                "copy copied: 1000, 0",
                                "create: 1000, 0",
                                "move moved: 1000, 0",
                                "random_seek: 1, 1048576",
                                "sequential_read: 1, 1048576",
                                "sequential_seek: 1, 1048576",
                                "sequential_write: 1, 1048000"};
        QTest::newRow("full") << false << QString() << full << files;
        QTest::newRow("cancel during copy")
            << false << u"Copying 1000 files..."_s << cancelled << QStringList();
        QTest::newRow("read-only folder") << true << QString() << readOnly << QStringList();
    }

    // Through a real manager; the ticker sees the dialog whenever the batch lets events through,
    // which is at every progress step.
    void run()
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

        QStringList seen;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                auto* dialog = qobject_cast<QProgressDialog*>(widget);
                if (!dialog || !dialog->isVisible())
                    continue;
                if (!cancelAt.isEmpty() && dialog->labelText() == cancelAt)
                    dialog->findChild<QPushButton*>()->click();
                if (seen.isEmpty() && dialog->labelText() == "Randomly seeking 1000 times...")
                    seen = contents(location);
            }
        });
        ticker.start(0);
        SupportTaskManager manager;
        QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
        manager.addTask(new SupportBenchmarkFileIoTask(location));
        manager.start();
        QCOMPARE(finished.count(), 1);
        const QString report = manager.report();
        if (!readOnly)
            QVERIFY(report.startsWith(location + '\n'));
        QTEST(summary(report), "blocks");
        QTEST(seen, "files");
        QCOMPARE(QDir(location).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList());
    }
};

QTEST_MAIN(tst_SupportBenchmarkFileIoTask)
#include "tst_supportbenchmarkfileiotask.moc"
