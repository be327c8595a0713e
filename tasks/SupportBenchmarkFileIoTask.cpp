#include "SupportBenchmarkFileIoTask.h"

#include "FileDirTools.h"
#include "FileHandle.h"
#include "SupportTaskRunner.h"

#include <QDir>
#include <QElapsedTimer>
#include <QList>
#include <QRandomGenerator64>
#include <QStringList>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <array>

namespace {

const int repetitions = 1000;
const int progressMaximum = SupportBenchmarkFileIoTask::OperationCount * repetitions;
const quint64 seekableSize = 0x100000;
const qint64 readLength = 1048;
const int writeLength = 1048;

// The report's names, indexed by operation. "DLTE" is spelled that way in every report.
const QStringList operationNames = [] {
    QStringList names =
        QStringLiteral("CREATE, DLTE, MOVE, COPY, SEQUENTIAL_SEEK, SEQUENTIAL_READ, "
                       "SEQUENTIAL_WRITE, RANDOM_SEEK")
            .split(QLatin1Char(','));
    for (QString& name : names)
        name = name.trimmed();
    return names;
}();

QString number(double value)
{
    return QStringLiteral("%1").arg(value, 0, 'g', 1);
}

} // namespace

struct SupportBenchmarkFileIoTask::Private
{
    std::unique_ptr<QTemporaryDir> tempDir;
    SupportBenchmarkFileIoTask* q = nullptr;
    int operation = Create;
    QElapsedTimer timer;
    quint64 step = 0;
    std::array<QList<double>, OperationCount> timings;
    std::array<QStringList, OperationCount> errors;

    QString label;
    QDir dir;

    bool cancelled() const { return *q->cancelFlag(); }
    QString file(int i) const { return dir.filePath(QString::number(i)); }

    // Starts a phase: progress, then its folder. False when the run was cancelled.
    bool begin(int phase, const char* progressText, const char* dirName);
    // Fills the phase folder with "0" to "999"; false when cancelled on the way.
    bool createFiles();
    // A temporary file in the phase folder, filled with one letter unless letter is 0, opened as a
    // handle with the given flags; null when it could not be made.
    std::unique_ptr<FileHandle> phaseFile(QTemporaryFile& temporary, char letter, int flags);
    // makeAction(i) does the untimed part of repetition i and returns the action to time.
    template<typename MakeAction>
    void measure(MakeAction makeAction);
};

bool SupportBenchmarkFileIoTask::Private::begin(int phase, const char* progressText,
                                                const char* dirName)
{
    if (cancelled())
        return false;
    operation = phase;
    label = SupportBenchmarkFileIoTask::tr(progressText).arg(repetitions);
    q->runner()->progress(int(step), 0, progressMaximum, label);
    // Without a temporary folder the phase folders would land at the root; leave them unmade so
    // every action fails instead.
    dir.setPath(tempDir->path() + QLatin1String(dirName));
    if (tempDir->isValid())
        dir.mkpath(dir.path());
    return true;
}

bool SupportBenchmarkFileIoTask::Private::createFiles()
{
    for (int i = 0; i < repetitions; ++i) {
        createEmptyFile(file(i));
        if (cancelled())
            return false;
    }
    return true;
}

std::unique_ptr<FileHandle>
SupportBenchmarkFileIoTask::Private::phaseFile(QTemporaryFile& temporary, char letter, int flags)
{
    // Like every file of the run, it stays until the task's folder goes.
    temporary.setAutoRemove(false);
    temporary.setFileTemplate(dir.path() + QLatin1Char('/'));
    bool made = temporary.open();
    if (made && letter)
        made = writeTextFile(temporary.fileName(), QString(int(seekableSize), QLatin1Char(letter)));
    if (!made) {
        errors[operation].append(QStringLiteral("Creating seekable file ") + temporary.fileName()
                                 + QStringLiteral(" failed."));
        return nullptr;
    }
    return std::make_unique<FileHandle>(temporary.fileName(), flags);
}

template<typename MakeAction>
void SupportBenchmarkFileIoTask::Private::measure(MakeAction makeAction)
{
    int failures = 0;
    for (int i = 0; i < repetitions; ++i) {
        auto action = makeAction(i);
        // Only the action lies between the restart and the reading.
        timer.restart();
        const bool done = action();
        const double seconds = double(timer.nsecsElapsed()) / 1e9;
        if (!done)
            ++failures;
        timings[operation].append(seconds);
        ++step;
        q->runner()->progress(int(step), 0, progressMaximum, label);
        if (cancelled())
            return;
    }
    if (failures > 0) {
        errors[operation].append(
            QStringLiteral("%1 of %2 failed\n").arg(failures).arg(repetitions));
    }
}

SupportBenchmarkFileIoTask::SupportBenchmarkFileIoTask(const QString& location)
    : d(std::make_unique<Private>())
{
    d->tempDir = std::make_unique<QTemporaryDir>(location + QLatin1Char('/'));
    d->q = this;
}

SupportBenchmarkFileIoTask::~SupportBenchmarkFileIoTask() = default;

void SupportBenchmarkFileIoTask::run()
{
    d->step = 0;

    if (d->begin(Create, QT_TR_NOOP("Creating %1 files..."), "/create")) {
        d->measure([this](int i) {
            return [path = d->file(i)] {
                return createEmptyFile(path);
            };
        });
    }

    if (d->begin(Delete, QT_TR_NOOP("Deleting %1 files..."), "/delete") && d->createFiles()) {
        d->measure([this](int i) {
            return [path = d->file(i)] {
                return removeFile(path);
            };
        });
    }

    if (d->begin(Move, QT_TR_NOOP("Moving %1 files..."), "/move") && d->createFiles()) {
        d->measure([this](int i) {
            return [source = d->file(i), target = d->file(i) + QStringLiteral("_moved")] {
                return moveFile(source, target);
            };
        });
    }

    if (d->begin(Copy, QT_TR_NOOP("Copying %1 files..."), "/copy") && d->createFiles()) {
        d->measure([this](int i) {
            return [source = d->file(i), target = d->file(i) + QStringLiteral("_copied")] {
                return copyFile(source, target);
            };
        });
    }

    if (d->begin(SequentialSeek, QT_TR_NOOP("Sequentially seeking %1 times..."),
                 "/sequential_seek")) {
        QTemporaryFile temporary;
        if (const auto handle = d->phaseFile(temporary, 'A', OpenReadOnly)) {
            // Positions p = 0, 0x100000, ... below 0x3E800000 give the offsets p / 1000.
            d->measure([&handle](int i) {
                const quint64 offset = quint64(i) * seekableSize / repetitions;
                return [&handle, offset] {
                    return handle->seek(qint64(offset));
                };
            });
        }
    }

    if (d->begin(SequentialRead, QT_TR_NOOP("Sequentially reading %1 times..."),
                 "/sequential_read")) {
        QTemporaryFile temporary;
        if (const auto handle = d->phaseFile(temporary, 'B', OpenReadOnly)) {
            QString text;
            d->measure([&handle, &text](int) {
                text.clear();
                return [&handle, &text] {
                    return handle->readText(text, readLength);
                };
            });
        }
    }

    if (d->begin(SequentialWrite, QT_TR_NOOP("Sequentially writing %1 times..."),
                 "/sequential_write")) {
        QTemporaryFile temporary;
        if (const auto handle = d->phaseFile(temporary, 0, OpenWriteOnly)) {
            const QByteArray buffer = QString(writeLength, QLatin1Char('C')).toUtf8();
            d->measure([&handle, &buffer](int) {
                return [&handle, &buffer] {
                    return handle->write(buffer);
                };
            });
        }
    }

    if (d->begin(RandomSeek, QT_TR_NOOP("Randomly seeking %1 times..."), "/random_seek")) {
        QTemporaryFile temporary;
        if (const auto handle = d->phaseFile(temporary, 'D', OpenReadOnly)) {
            d->measure([&handle](int) {
                const quint32 drawn = quint32(QRandomGenerator64::global()->generate());
                const quint32 offset = (drawn % repetitions) * quint32(seekableSize) / repetitions;
                return [&handle, offset] {
                    return handle->seek(offset);
                };
            });
        }
    }

    runner()->finish(report());
}

QString SupportBenchmarkFileIoTask::report() const
{
    QDir folder(d->tempDir->path());
    folder.cdUp();
    QString text = folder.path() + QLatin1Char('\n');
    const bool cancelled = cancelFlag() && *cancelFlag();
    for (int operation = 0; operation < OperationCount; ++operation) {
        // What was not measured has no figures to give.
        if (cancelled && d->timings[operation].isEmpty()) {
            text += QStringLiteral("Cancelled.\n");
            break;
        }
        double minimum = 1e30;
        double maximum = -1e30;
        double sum = 0;
        QStringList times;
        for (const double time : d->timings[operation]) {
            minimum = qMin(minimum, time);
            maximum = qMax(maximum, time);
            sum += time;
            times.append(number(time));
        }
        const double mean = sum / double(d->timings[operation].size());
        text += operationNames.value(operation) + QLatin1Char(' ')
                + QStringLiteral("min=%1 max=%2 mean=%3")
                      .arg(number(minimum), number(maximum), number(mean))
                + QLatin1Char('\n');
        text += times.join(QLatin1Char(',')) + QLatin1Char('\n');
        if (!d->errors[operation].isEmpty()) {
            text += QStringLiteral("Errors:\n") + d->errors[operation].join(QLatin1Char('\n'))
                    + QLatin1Char('\n');
        }
    }
    return text;
}
