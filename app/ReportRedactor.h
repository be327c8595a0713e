#pragma once

#include "ReportDocument.h"

#include <memory>

// Puts placeholders where the report names this machine or its user: the host name ("host-1"),
// the user's name ("user-1"; the home folder in any path becomes "~"), MAC addresses ("mac-1"), IP
// addresses ("ip-1") and identifiers such as the product's user identifier ("uuid-1"). A value
// keeps its placeholder in every spelling (any case, colons or hyphens, any IPv6 form) and in
// every text given to the same redactor, so support still sees that two lines name one adapter.
class ReportRedactor
{
public:
    // Learns the names from this machine and from the document's fields, and numbers the values
    // in the order the document's text first shows them.
    explicit ReportRedactor(const ReportDocument& document);
    ~ReportRedactor();

    QString redact(const QString& text);
    ReportDocument redact(const ReportDocument& document);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
