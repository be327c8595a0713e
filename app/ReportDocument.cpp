#include "ReportDocument.h"

#include "ReportExport.h"

#include <QCoreApplication>

namespace {

// What a field's line shows after its label and the label's padding.
QString valueAndNote(const ReportField& field)
{
    QString text = field.value;
    if (!field.note.isEmpty())
        text += (field.value.isNull() ? QString() : QStringLiteral(" - ")) + field.note;
    return text.trimmed();
}

} // namespace

QList<QPair<int, QString>> ReportDocument::Section::lines() const
{
    QList<QPair<int, QString>> lines;
    qsizetype position = 0;
    // The errors block heads the page and ends at its first blank line; it is not page text.
    if (!errors.isEmpty() && text.startsWith(QStringLiteral("Errors:\n"))) {
        const qsizetype end = text.indexOf(QStringLiteral("\n\n"));
        position = end < 0 ? text.size() : end;
    }
    const auto addText = [this, &lines](qsizetype from, qsizetype to) {
        const QList<QStringView> pieces = QStringView(text).mid(from, to - from).split(u'\n');
        for (const QStringView piece : pieces) {
            if (!piece.trimmed().isEmpty())
                lines.append({-1, piece.toString()});
        }
    };
    for (int i = 0; i < fields.size(); ++i) {
        const ReportField& field = fields.at(i);
        const QString shown = valueAndNote(field);
        // The field's line starts with its label, unless the field follows the one before on its
        // line; padding, the value and the note follow.
        for (qsizetype at = text.indexOf(field.label, position); at >= 0;
             at = text.indexOf(field.label, at + 1)) {
            if (at > 0 && text.at(at - 1) != QLatin1Char('\n') && at != position)
                continue;
            const qsizetype rest = at + field.label.size();
            qsizetype end = text.indexOf(QLatin1Char('\n'), rest);
            if (end < 0)
                end = text.size();
            if (QStringView(text).mid(rest, end - rest).trimmed() != shown)
                continue;
            addText(position, at);
            lines.append({i, text.mid(at, end - at)});
            position = end;
            break;
        }
    }
    addText(position, text.size());
    return lines;
}

ReportDocument ReportDocument::fromTable(const SupportDataMap& table, bool withFields)
{
    ReportDocument document;
    document.generated = reportStartTime();
    document.tool = QStringLiteral("Corvanta Support");
    document.version = QCoreApplication::applicationVersion();
    for (const auto& [kind, data] : table) {
        if (!data)
            continue;
        const QString* page = data->text();
        document.sections.append({kind, data->name(), data->errors(),
                                  withFields ? renderedFields(page) : QList<ReportField>(),
                                  htmlToPlainText(*page)});
    }
    return document;
}

QString ReportDocument::text() const
{
    QString report =
        QStringLiteral("Generated: ") + generated.toString(Qt::TextDate) + QStringLiteral("\n\n");
    for (const Section& section : sections) {
        report += QString(50, QLatin1Char('=')) + QLatin1Char('\n') + section.name
                  + QStringLiteral("\n\n") + section.text + QStringLiteral("\n\n");
    }
    return report;
}
