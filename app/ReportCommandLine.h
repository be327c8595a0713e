#pragma once

#include <QCoreApplication>
#include <QStringList>

#include <memory>

// The report program's command line. It either runs the report, or only answers: the help, the
// version, or one line saying why the command line was refused. A new option is one more entry
// in the option list of ReportCommandLine.cpp and an accessor here. It also says how the program
// ends, so the exit statuses stay in one place.
class ReportCommandLine
{
    Q_DECLARE_TR_FUNCTIONS(ReportCommandLine)

public:
    enum Format { TextFormat, JsonFormat };

    // The arguments as QCoreApplication::arguments() gives them, the program first.
    explicit ReportCommandLine(const QStringList& arguments);
    ~ReportCommandLine();

    bool runsReport() const;
    // Prints the answer, the help and the version on standard output and a refusal on standard
    // error; returns the exit code.
    int answer() const;

    Format format() const;
    bool redacts() const;
    // The folder to save the report in; empty when it is only printed.
    QString saveFolder() const;
    // The report to compare with; empty when there is nothing to compare.
    QString earlierReport() const;
    // The later report to compare; empty for the machine as it is now.
    QString laterReport() const;

    // Prints the report, or the differences found, names the folder it was saved in, if any, on
    // standard error, and returns the exit code.
    int finish(const QByteArray& output, bool differs, const QString& savedFolder) const;
    // Says on standard error what could not be done, in one line, and returns the exit code.
    int fail(const QString& problem) const;
    // Says on standard error, in one line, what went wrong without stopping the report.
    void warn(const QString& problem) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
