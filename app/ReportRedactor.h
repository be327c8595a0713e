#pragma once

#include "ReportDocument.h"

#include <memory>

// Puts placeholders where the report names this machine or its user: the host name ("host-1"),
// the user's name ("user-1"; the home folder in any path becomes "~"), MAC addresses ("mac-1"), IP
// addresses ("ip-1") and identifiers such as the product's user identifier ("uuid-1"). A value
// keeps its placeholder in every spelling (any case, colons or hyphens, any IPv6 form) and in
// every text given to the same redactor, so support still sees that two lines name one adapter.
// Names are replaced only as whole words; labels, operating system and font names, versions and
// sizes stay as they are.
class ReportRedactor
{
public:
    // Learns the names of this machine. The placeholders given on earlier runs are read from the
    // mapping file, so a value keeps its number from run to run; without one they last this run.
    explicit ReportRedactor(const QString& mappingFile = QString());
    ~ReportRedactor();

    // Where the report program keeps its placeholders: in the user's configuration folder.
    static QString userMappingFile();

    // Learns the names the document gives, and numbers its new values in the order the report
    // shows them.
    void learn(const ReportDocument& document);

    QString redact(const QString& text);
    ReportDocument redact(const ReportDocument& document);

    // Keeps the placeholders for the next run, readable by the user alone; false and, in problem,
    // one line saying why when that failed.
    bool save(QString* problem);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
