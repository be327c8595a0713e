#pragma once

#include <QCoreApplication>
#include <QStringList>

#include <memory>

// The report program's command line. It either runs the report, or only answers: the help, the
// version, or one line saying why the command line was refused. A new option is one more entry
// in the option list of ReportCommandLine.cpp and an accessor here.
class ReportCommandLine
{
    Q_DECLARE_TR_FUNCTIONS(ReportCommandLine)

public:
    // The arguments as QCoreApplication::arguments() gives them, the program first.
    explicit ReportCommandLine(const QStringList& arguments);
    ~ReportCommandLine();

    bool runsReport() const;
    // Prints the answer, the help and the version on standard output and a refusal on standard
    // error; returns the exit code.
    int answer() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
