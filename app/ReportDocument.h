#pragma once

#include "ReportFragments.h"
#include "SupportData.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

// The report as data, taken from the collectors' pages as they stand: nothing is gathered again.
// The plain text, the JSON, the redaction and the comparison are all made from it, so a new
// collector needs nothing of them and a new format nothing of the collectors.
struct ReportDocument
{
    struct Section
    {
        int kind = 0;
        QString name;
        QStringList errors;
        QList<ReportField> fields; // in page order
        QString text;              // the page in plain text

        // The page's lines in order, each with the index of the field it shows, or -1 for text
        // the collector wrote without the field helpers. Blank lines are left out; a field laid
        // out over several lines, such as a listing, comes as one.
        QList<QPair<int, QString>> lines() const;

        // Where each of those lines stands in the text.
        struct Span
        {
            int field = -1;
            qsizetype start = 0;
            qsizetype length = 0;
        };
        QList<Span> spans() const;
    };

    QDateTime generated;
    QString tool;
    QString version;
    QList<Section> sections; // ascending kind

    // Generated at the program's start, as every report of this run. The plain text alone needs
    // no fields.
    static ReportDocument fromTable(const SupportDataMap& table, bool withFields = true);
    // The plain-text report, the text "Copy Report" gives.
    QString text() const;
    // What a field's line shows after its label and the label's padding.
    static QString shownValue(const ReportField& field);
};
