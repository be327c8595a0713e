#include "ReportCommandLine.h"
#include "ReportExport.h"
#include "SupportApplication.h"
#include "SupportRegistry.h"
#include "SupportReportRun.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

// Prints the plain-text report, the same text "Copy Report" gives, for support desks working over
// a remote shell. The desktop's display is used when there is one, the offscreen platform
// otherwise.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
            qputenv("QT_QPA_PLATFORM", "wayland;xcb;offscreen");
        else if (!qEnvironmentVariableIsEmpty("DISPLAY"))
            qputenv("QT_QPA_PLATFORM", "xcb;offscreen");
        else
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }

    QByteArray report;
    {
        SupportApplication application(argc, argv);
        const ReportCommandLine commandLine(QCoreApplication::arguments());
        if (!commandLine.runsReport())
            return commandLine.answer();
        const SupportDataTable table = createSupportDataTable();
        loadAllSupportData(*table);
        report = reportText(*table).toUtf8();
    }

    if (std::fwrite(report.constData(), 1, size_t(report.size()), stdout) != size_t(report.size())
        || std::fflush(stdout) != 0) {
        std::fprintf(stderr, "corvanta-support-report: cannot write the report: %s\n",
                     std::strerror(errno));
        return 1;
    }
    return 0;
}
