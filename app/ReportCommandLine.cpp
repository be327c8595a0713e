#include "ReportCommandLine.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

const char programName[] = "corvanta-support-report";

// As diff(1) when comparing: 0 the same, 1 different, 2 trouble.
enum ExitCode { Done = 0, OutputFailed = 1, Differs = 1, Refused = 2, CompareFailed = 2 };

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

bool print(const QByteArray& bytes)
{
    return std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) == size_t(bytes.size())
           && std::fflush(stdout) == 0;
}

void sayOnError(const QString& line)
{
    std::fprintf(stderr, "%s: %s\n", programName, qPrintable(line));
}

} // namespace

struct ReportCommandLine::Private
{
    QCommandLineParser parser;
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            ReportCommandLine::tr("Show this help and exit.")};
    QCommandLineOption version{QStringLiteral("version"),
                               ReportCommandLine::tr("Show the version and exit.")};
    QCommandLineOption format{
        QStringLiteral("format"),
        ReportCommandLine::tr("Print the report as text (the default) or as json."),
        QStringLiteral("FORMAT"), QStringLiteral("text")};
    QCommandLineOption redact{
        QStringLiteral("redact"),
        ReportCommandLine::tr("Replace the host name, the user name, MAC and IP addresses and "
                              "the product's user identifier with placeholders such as host-1; "
                              "the home folder becomes ~. Applies to everything written. A "
                              "value keeps its placeholder from run to run: they are kept in "
                              "~/.config/corvanta-support/redaction-placeholders; delete it to "
                              "start afresh.")};
    QCommandLineOption save{
        QStringLiteral("save"),
        ReportCommandLine::tr("Also write the report into a new folder \"Corvanta Support "
                              "Report <UTC time>\" in DIR: report.txt, report.png, "
                              "report.json and SHA256SUMS."),
        QStringLiteral("DIR")};
    QCommandLineOption diff{
        QStringLiteral("diff"),
        ReportCommandLine::tr("Print what changed since the JSON report EARLIER, section by "
                              "section, instead of the report; with LATER, what changed "
                              "between the two files."),
        QStringLiteral("EARLIER")};
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
    d->parser.addOptions({d->help, d->version, d->format, d->redact, d->save, d->diff});
    d->parser.addPositionalArgument(QStringLiteral("LATER"),
                                    tr("With --diff, a later JSON report to compare instead of "
                                       "the machine."),
                                    QStringLiteral("[LATER]"));

    const QStringList positional =
        d->parser.parse(arguments) ? d->parser.positionalArguments() : QStringList();
    if (!d->parser.errorText().isEmpty()) {
        const QStringList unknown = d->parser.unknownOptionNames();
        if (!unknown.isEmpty()) {
            d->refusal = tr("unknown argument \"%1\"").arg(typedArgument(arguments, unknown[0]));
        } else {
            // The parser's own texts end in a full stop; the refusal goes on after them.
            d->refusal = d->parser.errorText();
            if (d->refusal.endsWith(QLatin1Char('.')))
                d->refusal.chop(1);
        }
    } else if (const qsizetype allowed = d->parser.isSet(d->diff) ? 1 : 0;
               positional.size() > allowed) {
        d->refusal = tr("unknown argument \"%1\"").arg(positional.at(allowed));
    } else if (format() == TextFormat && d->parser.value(d->format) != QLatin1String("text")) {
        d->refusal = tr("unknown format \"%1\"; use text or json").arg(d->parser.value(d->format));
    } else if (d->parser.isSet(d->diff) && format() == JsonFormat) {
        d->refusal = tr("--diff prints text; leave out --format json");
    } else if (!laterReport().isEmpty() && d->parser.isSet(d->save)) {
        d->refusal = tr("--save saves this machine's report; leave out LATER");
    } else if (d->parser.isSet(d->save) && saveFolder().isEmpty()) {
        d->refusal = tr("--save needs the folder to save the report in");
    } else if (const QFileInfo folder(saveFolder()); folder.exists() && !folder.isDir()) {
        d->refusal = tr("--save needs a folder, not a file");
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
        sayOnError(tr("%1; see --help").arg(d->refusal));
        return Refused;
    }

    QString text;
    if (d->parser.isSet(d->help)) {
        text = d->parser.helpText()
               + tr("\nExamples:\n"
                    "  corvanta-support-report > report.txt\n"
                    "  corvanta-support-report --format json --redact > report.json\n"
                    "  corvanta-support-report --redact --save ~/Desktop > /dev/null\n"
                    "  corvanta-support-report --diff report.json\n"
                    "  corvanta-support-report --diff monday.json tuesday.json\n")
               + tr("\nExit status:\n"
                    "  0  the report, the help or the version was printed;\n"
                    "     with --diff: nothing changed\n"
                    "  1  the output or the saved report could not be written;\n"
                    "     with --diff: something changed\n"
                    "  2  the command line was not understood;\n"
                    "     with --diff: a report could not be read, or the output written\n");
    } else {
        text = QStringLiteral("%1 %2\n").arg(QLatin1String(programName),
                                             QCoreApplication::applicationVersion());
    }
    if (print(text.toUtf8()))
        return Done;
    sayOnError(tr("cannot write: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    return OutputFailed;
}

ReportCommandLine::Format ReportCommandLine::format() const
{
    return d->parser.value(d->format) == QLatin1String("json") ? JsonFormat : TextFormat;
}

bool ReportCommandLine::redacts() const
{
    return d->parser.isSet(d->redact);
}

QString ReportCommandLine::saveFolder() const
{
    return d->parser.value(d->save);
}

QString ReportCommandLine::earlierReport() const
{
    return d->parser.value(d->diff);
}

QString ReportCommandLine::laterReport() const
{
    return d->parser.positionalArguments().value(0);
}

int ReportCommandLine::finish(const QByteArray& output, bool differs,
                              const QString& savedFolder) const
{
    if (!savedFolder.isEmpty())
        sayOnError(tr("saved the report in \"%1\"").arg(savedFolder));
    if (!print(output))
        return fail(
            tr("cannot write the report: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    return differs ? Differs : Done;
}

void ReportCommandLine::warn(const QString& problem) const
{
    sayOnError(problem);
}

int ReportCommandLine::fail(const QString& problem) const
{
    sayOnError(problem);
    return d->parser.isSet(d->diff) ? CompareFailed : OutputFailed;
}
