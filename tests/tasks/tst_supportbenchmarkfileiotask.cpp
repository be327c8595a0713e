#include "SupportBenchmarkFileIoTask.h"
#include "SupportTaskManager.h"
#include "TestEnvironment.h"

#include <QApplication>
#include <QDirIterator>
#include <QProcess>
#include <QProgressDialog>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QStringList names{
    "CREATE",           "DLTE",       "MOVE", "COPY", "SEQUENTIAL_SEEK", "SEQUENTIAL_READ",
    "SEQUENTIAL_WRITE", "RANDOM_SEEK"};

struct Block
{
    QString name;
    QString statistics;
    QStringList times;
    QStringList errors;
};

// The folder line, then per operation "NAME min=.. max=.. mean=..", the times, and any errors up to
// the next operation, kept line by line.
bool parse(const QString& report, QString& folder, QList<Block>& blocks)
{
    const QRegularExpression header(u"^[A-Z_]+ min="_s);
    QStringList lines = report.split('\n');
    if (lines.size() < 2 || !lines.endsWith(QString()))
        return false;
    lines.removeLast();
    folder = lines.takeFirst();
    while (lines.size() >= 2 && header.match(lines.first()).hasMatch()) {
        Block block;
        block.name = lines.first().section(' ', 0, 0);
        block.statistics = lines.takeFirst().section(' ', 1);
        block.times = lines.takeFirst().split(',', Qt::SkipEmptyParts);
        if (!lines.isEmpty() && lines.first() == "Errors:") {
            lines.removeFirst();
            while (!lines.isEmpty() && !header.match(lines.first()).hasMatch())
                block.errors.append(lines.takeFirst());
        }
        blocks.append(block);
    }
    return lines.isEmpty();
}

QString number(double value)
{
    return u"%1"_s.arg(value, 0, 'g', 1);
}

// Runs one benchmark through a manager. onTick sees the visible progress dialog whenever the
// batch lets events through, which it does on every progress step.
QString runBenchmark(const QString& location,
                     const std::function<void(QProgressDialog*)>& onTick = {})
{
    SupportTaskManager manager;
    QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
    QTimer ticker;
    ticker.setInterval(0);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* dialog = qobject_cast<QProgressDialog*>(widget);
            if (dialog && dialog->isVisible() && onTick)
                onTick(dialog);
        }
    });
    ticker.start();
    manager.addTask(new SupportBenchmarkFileIoTask(location));
    manager.start();
    return finished.count() == 1 ? manager.report() : u"<not finished once>"_s;
}

// Files below the folder with their sizes, per phase folder: "count files, bytes".
QMap<QString, QString> contents(const QString& folder)
{
    QMap<QString, QPair<int, qint64>> sums;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        QString phase = it.fileInfo().dir().dirName();
        if (it.fileName().endsWith("_moved") || it.fileName().endsWith("_copied"))
            phase += it.fileName().mid(it.fileName().indexOf('_'));
        sums[phase].first += 1;
        sums[phase].second += it.fileInfo().size();
    }
    QMap<QString, QString> result;
    for (auto i = sums.cbegin(); i != sums.cend(); ++i)
        result[i.key()] = u"%1 files, %2 bytes"_s.arg(i->first).arg(i->second);
    return result;
}

bool isEmptyFolder(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty();
}

} // namespace

class tst_SupportBenchmarkFileIoTask : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;

private slots:
    void fullRun()
    {
        const QString location = m_environment.path(u"full run"_s);
        QVERIFY(QDir().mkpath(location));
        QMap<QString, QString> seen;
        const QString report = runBenchmark(location, [&](QProgressDialog* dialog) {
            if (seen.isEmpty() && dialog->labelText() == "Randomly seeking 1000 times...")
                seen = contents(location);
        });
        QString folder;
        QList<Block> blocks;
        QVERIFY2(parse(report, folder, blocks), qPrintable(report.left(2000)));
        QCOMPARE(folder, location);
        QCOMPARE(blocks.size(), names.size());
        const QRegularExpression oneDigit(u"^([0-9]|0\\.0{0,3}[1-9]|[1-9]e[-+][0-9]{2,3})$"_s);
        for (int i = 0; i < blocks.size(); ++i) {
            const Block& block = blocks.at(i);
            QCOMPARE(block.name, names.at(i));
            QCOMPARE(block.errors, QStringList());
            QCOMPARE(block.times.size(), 1000);
            QList<double> times;
            for (const QString& time : block.times) {
                QVERIFY2(oneDigit.match(time).hasMatch(), qPrintable(time));
                times.append(time.toDouble());
            }
            const double minimum = *std::min_element(times.cbegin(), times.cend());
            const double maximum = *std::max_element(times.cbegin(), times.cend());
            const QStringList statistics = block.statistics.split(' ');
            QCOMPARE(statistics.size(), 3);
            QCOMPARE(statistics.at(0), "min=" + number(minimum));
            QCOMPARE(statistics.at(1), "max=" + number(maximum));
            QVERIFY(statistics.at(2).startsWith("mean="));
            const double mean = statistics.at(2).mid(5).toDouble();
            QVERIFY2(mean >= minimum && mean <= maximum, qPrintable(block.statistics));
        }
        const QString seekable = u"1 files, 1048576 bytes"_s;
        QCOMPARE(seen, (QMap<QString, QString>{{"create", "1000 files, 0 bytes"},
                                               {"move_moved", "1000 files, 0 bytes"},
                                               {"copy", "1000 files, 0 bytes"},
                                               {"copy_copied", "1000 files, 0 bytes"},
                                               {"sequential_seek", seekable},
                                               {"sequential_read", seekable},
                                               {"sequential_write", "1 files, 1048000 bytes"},
                                               {"random_seek", seekable}}));
        QVERIFY(isEmptyFolder(location));
    }

    // Every statistic of a phase that never ran keeps its start value.
    void cancelDuringCopy()
    {
        const QString location = m_environment.path(u"cancelled"_s);
        QVERIFY(QDir().mkpath(location));
        const QString report = runBenchmark(location, [](QProgressDialog* dialog) {
            if (dialog->labelText() == "Copying 1000 files...")
                dialog->findChild<QPushButton*>()->click();
        });
        QString folder;
        QList<Block> blocks;
        QVERIFY2(parse(report, folder, blocks), qPrintable(report.left(2000)));
        QCOMPARE(blocks.size(), names.size());
        for (int i = 0; i < blocks.size(); ++i) {
            const Block& block = blocks.at(i);
            QCOMPARE(block.name, names.at(i));
            QCOMPARE(block.errors, QStringList());
            if (i < SupportBenchmarkFileIoTask::Copy) {
                QCOMPARE(block.times.size(), 1000);
            } else if (i == SupportBenchmarkFileIoTask::Copy) {
                QVERIFY(block.times.size() >= 1 && block.times.size() < 1000);
            } else {
                QCOMPARE(block.statistics, u"min=1e+30 max=-1e+30 mean=nan"_s);
                QCOMPARE(block.times, QStringList());
            }
        }
        QVERIFY(isEmptyFolder(location));
    }

    // Root may write anywhere, so the denial is checked as nobody.
    void readOnlyFolder()
    {
        if (::geteuid() == 0) {
            QProcess child;
            child.setProcessChannelMode(QProcess::MergedChannels);
            child.start(u"setpriv"_s,
                        {u"--reuid=nobody"_s, u"--regid=nogroup"_s, u"--clear-groups"_s,
                         QCoreApplication::applicationFilePath(), u"readOnlyFolder"_s});
            QVERIFY(child.waitForFinished(120000));
            const QString output = QString::fromUtf8(child.readAll());
            QVERIFY2(child.exitCode() == 0
                         && output.contains(
                             u"PASS   : tst_SupportBenchmarkFileIoTask::readOnlyFolder"_s),
                     qPrintable(output.right(3000)));
            return;
        }
        const QString location = m_environment.path(u"read only"_s);
        QVERIFY(QDir().mkpath(location));
        QVERIFY(QFile::setPermissions(location, QFile::ReadOwner | QFile::ExeOwner));
        QString folder;
        QList<Block> blocks;
        const QString report = runBenchmark(location);
        QVERIFY2(parse(report, folder, blocks), qPrintable(report.left(2000)));
        QCOMPARE(blocks.size(), names.size());
        for (int i = 0; i < blocks.size(); ++i) {
            const Block& block = blocks.at(i);
            QCOMPARE(block.name, names.at(i));
            if (i <= SupportBenchmarkFileIoTask::Copy) {
                QCOMPARE(block.times.size(), 1000);
                QCOMPARE(block.errors, QStringList({"1000 of 1000 failed", ""}));
            } else {
                QCOMPARE(block.times, QStringList());
                QCOMPARE(block.errors.size(), 1);
                QVERIFY2(block.errors.first().startsWith("Creating seekable file ")
                             && block.errors.first().endsWith(" failed."),
                         qPrintable(block.errors.first()));
            }
        }
        QVERIFY(isEmptyFolder(location));
    }
};

QTEST_MAIN(tst_SupportBenchmarkFileIoTask)
#include "tst_supportbenchmarkfileiotask.moc"
