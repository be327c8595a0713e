#include "ReportDocument.h"

#include <QCoreApplication>
#include <QHash>

namespace {

// Taken before main runs: every report of this run says when the program started.
const QDateTime startTime = QDateTime::currentDateTime();

} // namespace

QString ReportDocument::shownValue(const ReportField& field)
{
    QString text = field.value;
    if (!field.note.isEmpty())
        text += (field.value.isNull() ? QString() : QStringLiteral(" - ")) + field.note;
    return text.trimmed();
}

QList<QPair<int, QString>> ReportDocument::Section::lines() const
{
    QList<QPair<int, QString>> lines;
    for (const Span& span : spans())
        lines.append({span.field, text.mid(span.start, span.length)});
    return lines;
}

QList<ReportDocument::Section::Span> ReportDocument::Section::spans() const
{
    QList<Span> lines;
    qsizetype position = 0;
    // The errors block heads the page and ends at its first blank line; it is not page text.
    if (!errors.isEmpty() && text.startsWith(QStringLiteral("Errors:\n"))) {
        const qsizetype end = text.indexOf(QStringLiteral("\n\n"));
        position = end < 0 ? text.size() : end;
    }
    const auto addText = [this, &lines](qsizetype from, qsizetype to) {
        while (from < to) {
            qsizetype end = text.indexOf(QLatin1Char('\n'), from);
            if (end < 0 || end > to)
                end = to;
            if (!QStringView(text).mid(from, end - from).trimmed().isEmpty())
                lines.append({-1, from, end - from});
            from = end + 1;
        }
    };
    // The field's line starts with its label, after blanks where a link the plain text leaves out
    // stood, unless the field follows the one before on its line; padding, the value and the note
    // follow. Gives the line's end, or -1.
    const auto lineEnd = [this, &position](const ReportField& field, const QString& shown,
                                           qsizetype at) -> qsizetype {
        qsizetype before = at;
        while (before > position && text.at(before - 1) == QLatin1Char(' '))
            --before;
        if ((before > 0 && text.at(before - 1) != QLatin1Char('\n') && at != position)
            || !QStringView(text).mid(at).startsWith(field.label))
            return -1;
        const qsizetype rest = at + field.label.size();
        qsizetype end = text.indexOf(QLatin1Char('\n'), rest);
        if (end < 0)
            end = text.size();
        return QStringView(text).mid(rest, end - rest).trimmed() == shown ? end : -1;
    };

    // Each line by its words, so a field finds its line in one look-up rather than a search of
    // the rest of the page: the page of a large tree has hundreds of thousands of lines.
    struct Line
    {
        qsizetype start;
        qsizetype words;
    };
    QHash<QString, QList<Line>> linesByWords;
    for (qsizetype from = 0; from < text.size();) {
        qsizetype end = text.indexOf(QLatin1Char('\n'), from);
        if (end < 0)
            end = text.size();
        qsizetype words = from;
        while (words < end && text.at(words) == QLatin1Char(' '))
            ++words;
        if (words < end)
            linesByWords[text.mid(words, end - words).simplified()].append({from, words});
        from = end + 1;
    }
    QHash<QString, qsizetype> passed; // of each key's lines, how many lie behind

    for (int i = 0; i < fields.size(); ++i) {
        const ReportField& field = fields.at(i);
        const QString shown = shownValue(field);
        qsizetype at = -1;
        qsizetype end = -1;
        if (field.label.contains(QLatin1Char('\n'))) {
            // A listing laid out as a label spans lines of its own.
            for (at = text.indexOf(field.label, position); at >= 0 && end < 0;)
                if ((end = lineEnd(field, shown, at)) < 0)
                    at = text.indexOf(field.label, at + 1);
        } else {
            const QString key = (field.label + QLatin1Char(' ') + shown).simplified();
            const auto candidates = linesByWords.constFind(key);
            if (candidates == linesByWords.cend())
                continue;
            qsizetype& next = passed[key];
            while (next < candidates->size() && candidates->at(next).start < position)
                ++next;
            const qsizetype labelIndent = field.label.size() - field.label.trimmed().size();
            for (qsizetype c = next; c < candidates->size() && end < 0; ++c) {
                const Line& line = candidates->at(c);
                at = line.start;
                if ((end = lineEnd(field, shown, at)) < 0 && line.words - labelIndent > at) {
                    at = line.words - labelIndent;
                    end = lineEnd(field, shown, at);
                }
            }
        }
        if (end < 0)
            continue;
        addText(position, at);
        lines.append({i, at, end - at});
        position = end;
    }
    addText(position, text.size());
    return lines;
}

ReportDocument ReportDocument::fromTable(const SupportDataMap& table, bool withFields)
{
    ReportDocument document;
    document.generated = startTime;
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
