#include "ReportCommandLine.h"

#include <QCommandLineParser>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

const char programName[] = "corvanta-support-report";

enum ExitCode { Done = 0, OutputFailed = 1, Refused = 2 };

// The argument that brought in an unknown option, as the user typed it.
QString typedArgument(const QStringList& arguments, const QString& optionName)
{
    for (const QString& argument : arguments.mid(1)) {
        QString name = argument.section(QLatin1Char('='), 0, 0);
        while (name.startsWith(QLatin1Char('-')))
            name.remove(0, 1);
        if (name == optionName)
            return argument;
    }
    return optionName;
}

} // namespace

struct ReportCommandLine::Private
{
    QCommandLineParser parser;
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            ReportCommandLine::tr("Show this help and exit.")};
    QCommandLineOption version{QStringLiteral("version"),
                               ReportCommandLine::tr("Show the version and exit.")};
    QString refusal;
};

ReportCommandLine::ReportCommandLine(const QStringList& arguments)
    : d(std::make_unique<Private>())
{
    d->parser.setApplicationDescription(
        tr("Prints the Corvanta Support report on standard output: the same text that\n"
           "\"Copy Report\" puts on the clipboard. The desktop's display is used when there\n"
           "is one."));
    d->parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    d->parser.addOptions({d->help, d->version});

    if (!d->parser.parse(arguments)) {
        const QStringList unknown = d->parser.unknownOptionNames();
        if (!unknown.isEmpty()) {
            d->refusal = tr("unknown argument \"%1\"").arg(typedArgument(arguments, unknown[0]));
        } else {
            // The parser's own texts end in a full stop; the refusal goes on after them.
            d->refusal = d->parser.errorText();
            if (d->refusal.endsWith(QLatin1Char('.')))
                d->refusal.chop(1);
        }
    } else if (!d->parser.positionalArguments().isEmpty()) {
        d->refusal = tr("unknown argument \"%1\"").arg(d->parser.positionalArguments().first());
    }
}

ReportCommandLine::~ReportCommandLine() = default;

bool ReportCommandLine::runsReport() const
{
    return d->refusal.isEmpty() && !d->parser.isSet(d->help) && !d->parser.isSet(d->version);
}

int ReportCommandLine::answer() const
{
    if (!d->refusal.isEmpty()) {
        std::fprintf(stderr, "%s: %s\n", programName,
                     qPrintable(tr("%1; see --help").arg(d->refusal)));
        return Refused;
    }

    QString text;
    if (d->parser.isSet(d->help)) {
        text = d->parser.helpText()
               + tr("\nExit status:\n"
                    "  0  the report, the help or the version was printed\n"
                    "  1  the output could not be written\n"
                    "  2  the command line was not understood\n");
    } else {
        text = QStringLiteral("%1 %2\n").arg(QLatin1String(programName),
                                             QCoreApplication::applicationVersion());
    }
    const QByteArray bytes = text.toUtf8();
    if (std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) != size_t(bytes.size())
        || std::fflush(stdout) != 0) {
        std::fprintf(
            stderr, "%s: %s\n", programName,
            qPrintable(tr("cannot write: %1").arg(QString::fromLocal8Bit(std::strerror(errno)))));
        return OutputFailed;
    }
    return Done;
}
