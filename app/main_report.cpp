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

namespace {

bool readReport(const QString& path, ReportDocument* document, QString* reason)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *reason = file.errorString();
        return false;
    }
    return readReportJson(file.readAll(), document, reason);
}

} // namespace

// Prints the report, the same text "Copy Report" gives, for support desks working over a remote
// shell; or saves it, or compares it with an earlier one. The desktop's display is used when
// there is one, the offscreen platform otherwise. Windows always has a desktop, and its own
// platform describes the real screens.
int main(int argc, char** argv)
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

    SupportApplication application(argc, argv);
    const ReportCommandLine commandLine(QCoreApplication::arguments());
    if (!commandLine.runsReport())
        return commandLine.answer();

    // A report to compare with is read first, so a bad file costs no collecting.
    QString reason;
    ReportDocument earlier;
    const QString earlierPath = commandLine.earlierReport();
    if (!earlierPath.isEmpty() && !readReport(earlierPath, &earlier, &reason))
        return commandLine.fail(QStringLiteral("%1: %2").arg(earlierPath, reason));
    ReportDocument later;
    const QString laterPath = commandLine.laterReport();
    if (!laterPath.isEmpty() && !readReport(laterPath, &later, &reason))
        return commandLine.fail(QStringLiteral("%1: %2").arg(laterPath, reason));

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
    if (commandLine.redacts()) {
        // One redactor for both, so a value keeps its placeholder on either side.
        ReportRedactor redactor(later);
        later = redactor.redact(later);
        earlier = redactor.redact(earlier);
    }

    const QString text = later.text();
    const QByteArray json = asJson || saving ? reportJson(later) : QByteArray();
    QString folder;
    if (saving
        && !saveReportBundle(commandLine.saveFolder(), QDateTime::currentDateTimeUtc(), text,
                             picture, json, &folder))
        return commandLine.fail(
            ReportCommandLine::tr("cannot save the report in \"%1\"").arg(folder));

    if (!earlierPath.isEmpty()) {
        const QString differences = reportDifferences(earlier, later);
        return commandLine.finish(differences.toUtf8(), !differences.isEmpty(), folder);
    }
    return commandLine.finish(asJson ? json : text.toUtf8(), false, folder);
}
