#pragma once

#include "ReportDocument.h"

#include <QByteArray>
#include <QString>

// The report as JSON: the generation time (ISO 8601 with its offset from UTC), the tool's name and
// version, and the sections in ascending kind, each with its kind, name, errors, fields in page
// order (label, value, note) and plain text. report.schema.json beside this file describes it.

QByteArray reportJson(const ReportDocument& document);
// Reads what reportJson wrote; anything else gives false and, in reason, one line saying why.
bool readReportJson(const QByteArray& json, ReportDocument* document, QString* reason);
