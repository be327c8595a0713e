#include "ProcessEnd.h"
#include "ReportBundle.h"
#include "ReportCommandLine.h"
#include "ReportDiff.h"
#include "ReportDocument.h"
#include "ReportExport.h"
#include "ReportJson.h"
#include "ReportRedactor.h"
#include "SupportApplication.h"
#include "SupportRegistry.h"
#include "SupportReportRun.h"

#include <QFile>
#include <QFileInfo>
#include <QMutex>

#include <cstdio>
#include <functional>

#include <optional>

// The project's version, from CMake; the Windows sources check compiles without it.
#ifndef CORVANTA_VERSION
#define CORVANTA_VERSION "1.0.5"
#endif

namespace {

// Qt's and the collectors' own messages go to standard error through the redaction too. Those of
// the start, before the command line says whether to redact, wait for it.
struct MessageLog
{
    QMutex mutex;
    QStringList held;
    bool holding = true;
    std::function<QString(const QString&)> shown = [](const QString& text) {
        return text;
    };
};

MessageLog& messageLog()
{
    static MessageLog log;
    return log;
}

void logMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    MessageLog& log = messageLog();
    const QMutexLocker lock(&log.mutex);
    const QString line = qFormatLogMessage(type, context, message);
    if (log.holding && type != QtFatalMsg)
        log.held << line;
    else
        std::fprintf(stderr, "%s\n", qPrintable(log.shown(line)));
}

// Writes what was held, and from now on each message as it comes.
void releaseMessages(const std::function<QString(const QString&)>& shown)
{
    MessageLog& log = messageLog();
    const QMutexLocker lock(&log.mutex);
    log.shown = shown;
    log.holding = false;
    for (const QString& line : std::as_const(log.held))
        std::fprintf(stderr, "%s\n", qPrintable(shown(line)));
    log.held.clear();
}

// The largest report --diff reads: a real one is a few megabytes.
const qint64 largestReport = 64 * 1024 * 1024;

bool readReport(const QString& path, ReportDocument* document, QString* reason)
{
    // Looked at before it is opened: a FIFO would block the open, a device never end.
    const QFileInfo info(path);
    if (info.isDir()) {
        *reason = ReportCommandLine::tr("a folder, not a report");
        return false;
    }
    if (info.exists() && !info.isFile()) {
        *reason = ReportCommandLine::tr("not a regular file, so not a report");
        return false;
    }
    if (info.size() > largestReport) {
        *reason = ReportCommandLine::tr("larger than 64 MiB, so not a report");
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *reason = file.errorString();
        return false;
    }
    const QByteArray bytes = file.read(largestReport + 1);
    if (bytes.size() > largestReport) {
        *reason = ReportCommandLine::tr("larger than 64 MiB, so not a report");
        return false;
    }
    return readReportJson(bytes, document, reason);
}

// Prints the report, the same text "Copy Report" gives, for support desks working over a remote
// shell; or saves it, or compares it with an earlier one. The desktop's display is used when
// there is one, the offscreen platform otherwise. Windows always has a desktop, and its own
// platform describes the real screens.
int runReport(int argc, char** argv)
{
#ifndef Q_OS_WIN
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
            qputenv("QT_QPA_PLATFORM", "wayland;xcb;offscreen");
        else if (!qEnvironmentVariableIsEmpty("DISPLAY"))
            qputenv("QT_QPA_PLATFORM", "xcb;offscreen");
        else
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
#endif

    // The help, the version and a refusal are answered before the window system is reached, so
    // that they print their answer alone (not Qt's "XDG_RUNTIME_DIR not set", for one).
    {
        QCoreApplication answering(argc, argv);
        QCoreApplication::setApplicationVersion(QStringLiteral(CORVANTA_VERSION));
        BaseApplication::installTranslations(QStringLiteral("corvanta-support"));
        const ReportCommandLine commandLine(QCoreApplication::arguments());
        if (!commandLine.runsReport())
            return commandLine.answer();
    }

    qInstallMessageHandler(logMessage);
    SupportApplication application(argc, argv);
    const ReportCommandLine commandLine(QCoreApplication::arguments());

    // Everything written goes through here, so nothing leaves unredacted.
    std::optional<ReportRedactor> redactor;
    if (commandLine.redacts())
        redactor.emplace(ReportRedactor::userMappingFile());
    const auto shown = [&redactor](const QString& text) {
        return redactor ? redactor->redact(text) : text;
    };
    releaseMessages(shown);

    // A report to compare with is read first, so a bad file costs no collecting.
    QString reason;
    ReportDocument earlier;
    const QString earlierPath = commandLine.earlierReport();
    if (!earlierPath.isEmpty() && !readReport(earlierPath, &earlier, &reason))
        return commandLine.fail(shown(QStringLiteral("%1: %2").arg(earlierPath, reason)));
    ReportDocument later;
    const QString laterPath = commandLine.laterReport();
    if (!laterPath.isEmpty() && !readReport(laterPath, &later, &reason))
        return commandLine.fail(shown(QStringLiteral("%1: %2").arg(laterPath, reason)));

    const bool saving = !commandLine.saveFolder().isEmpty();
    const bool asJson = commandLine.format() == ReportCommandLine::JsonFormat;
    QImage picture;
    if (laterPath.isEmpty()) {
        const SupportDataTable table = createSupportDataTable();
        loadAllSupportData(*table);
        // The fields are for the JSON, the redaction and the comparison.
        later = ReportDocument::fromTable(*table, asJson || saving || commandLine.redacts()
                                                      || !earlierPath.isEmpty());
        if (saving)
            picture = reportPicture(*table);
    }
    if (redactor) {
        // Both sides, so a value only the earlier report has is hidden too, and keeps its
        // placeholder on either side and from run to run.
        redactor->learn(later);
        redactor->learn(earlier);
        later = redactor->redact(later);
        earlier = redactor->redact(earlier);
        if (QString problem; !redactor->save(&problem))
            commandLine.warn(
                shown(ReportCommandLine::tr("cannot keep the placeholders for the next run: %1")
                          .arg(problem)));
    }

    const QString text = later.text();
    const QByteArray json = asJson || saving ? reportJson(later) : QByteArray();
    QString folder;
    if (QString problem;
        saving
        && !saveCompleteReportBundle(commandLine.saveFolder(), QDateTime::currentDateTimeUtc(),
                                     text, picture, json, &folder, &problem))
        return commandLine.fail(
            shown(ReportCommandLine::tr("cannot save the report: %1").arg(problem)));

    if (!earlierPath.isEmpty()) {
        const QString differences = reportDifferences(earlier, later);
        return commandLine.finish(differences.toUtf8(), !differences.isEmpty(), shown(folder));
    }
    return commandLine.finish(asJson ? json : text.toUtf8(), false, shown(folder));
}

} // namespace

int main(int argc, char** argv)
{
    return endProcess(runReport(argc, argv));
}
