#include "ReportDiff.h"

#include <QHash>
#include <QMap>

namespace {

// A line of a page: a field known by its heading and label, or text known only by itself.
struct Item
{
    QString key; // empty for text outside the fields
    QString name;
    QString shown;
    bool matched = false;
};

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QList<Item> items(const ReportDocument::Section& section)
{
    QList<Item> items;
    QString heading;
    for (const auto& [index, line] : section.lines()) {
        const ReportField* field = index >= 0 ? &section.fields.at(index) : nullptr;
        // Text laid out as a label over several lines, such as a listing, is compared by line.
        if (field && field->label.contains(QLatin1Char('\n'))) {
            heading.clear();
            for (const QString& piece : line.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
                if (!piece.trimmed().isEmpty())
                    items.append({{}, {}, piece.trimmed()});
            }
            continue;
        }
        // Text written without the helpers goes under the heading above it, such as an
        // extension under its associations.
        if (!field) {
            items.append({{}, heading, line.trimmed()});
            continue;
        }
        // An indented line belongs to the heading above it: a label without a value.
        const bool indented = field->label.startsWith(QLatin1Char(' '));
        if (!indented)
            heading = field->value.isNull() ? field->label.trimmed() : QString();
        const QString name = indented ? (heading + QLatin1Char(' ') + field->label.trimmed())
                                      : field->label.trimmed();
        QString shown = field->value;
        if (!field->note.isEmpty())
            shown += (field->value.isNull() ? QString() : QStringLiteral(" - ")) + field->note;
        items.append({(indented ? heading : QString()) + QLatin1Char('\n') + field->label,
                      name.trimmed(), shown.trimmed()});
    }
    return items;
}

QStringList sectionDifferences(const ReportDocument::Section& earlier,
                               const ReportDocument::Section& later)
{
    QList<Item> before = items(earlier);
    QList<Item> after = items(later);
    // Each line takes the first line of the earlier report that shows the same, in one pass
    // over each side, so a long listing costs no more than reading it.
    QHash<QString, QList<qsizetype>> same;
    for (qsizetype i = before.size() - 1; i >= 0; --i)
        same[before.at(i).key + QChar(0) + before.at(i).shown].append(i);
    for (Item& item : after) {
        const auto candidates = same.find(item.key + QChar(0) + item.shown);
        if (candidates == same.end() || candidates->isEmpty())
            continue;
        before[candidates->takeLast()].matched = item.matched = true;
    }

    QStringList lines;
    // A field left on both sides changed; the rest appeared or vanished.
    QHash<QString, QList<qsizetype>> left;
    for (qsizetype i = before.size() - 1; i >= 0; --i) {
        if (!before.at(i).matched && !before.at(i).key.isEmpty())
            left[before.at(i).key].append(i);
    }
    for (Item& item : after) {
        if (item.matched || item.key.isEmpty())
            continue;
        const auto candidates = left.find(item.key);
        if (candidates == left.end() || candidates->isEmpty())
            continue;
        Item& old = before[candidates->takeLast()];
        old.matched = item.matched = true;
        lines << QStringLiteral("  changed   %1 %2 -> %3")
                     .arg(item.name, quoted(old.shown), quoted(item.shown));
    }
    const auto describe = [](const Item& item) {
        return item.name.isEmpty() ? quoted(item.shown)
                                   : item.name + QLatin1Char(' ') + quoted(item.shown);
    };
    for (const Item& item : std::as_const(after)) {
        if (!item.matched)
            lines << QStringLiteral("  appeared  ") + describe(item);
    }
    for (const Item& item : std::as_const(before)) {
        if (!item.matched)
            lines << QStringLiteral("  vanished  ") + describe(item);
    }

    // Errors pair up as many times as both sides have them; the rest appeared or went away.
    QHash<QString, qsizetype> unpaired;
    for (const QString& error : earlier.errors)
        ++unpaired[error];
    for (const QString& error : later.errors) {
        if (qsizetype& count = unpaired[error]; count > 0)
            --count;
        else
            lines << QStringLiteral("  error appeared: ") + error;
    }
    // The earlier side's first ones were the ones paired.
    QHash<QString, qsizetype> paired;
    for (const QString& error : earlier.errors)
        ++paired[error];
    for (auto it = paired.begin(); it != paired.end(); ++it)
        it.value() -= unpaired.value(it.key());
    for (const QString& error : earlier.errors) {
        if (qsizetype& count = paired[error]; count > 0)
            --count;
        else
            lines << QStringLiteral("  error gone: ") + error;
    }
    return lines;
}

} // namespace

QString reportDifferences(const ReportDocument& earlier, const ReportDocument& later)
{
    QMap<int, std::pair<const ReportDocument::Section*, const ReportDocument::Section*>> kinds;
    for (const ReportDocument::Section& section : earlier.sections)
        kinds[section.kind].first = &section;
    for (const ReportDocument::Section& section : later.sections)
        kinds[section.kind].second = &section;

    QString differences;
    for (const auto& [before, after] : std::as_const(kinds)) {
        QStringList lines;
        if (!before)
            lines << QStringLiteral("  the section appeared");
        else if (!after)
            lines << QStringLiteral("  the section vanished");
        else
            lines = sectionDifferences(*before, *after);
        if (!lines.isEmpty())
            differences += (after ? after : before)->name + QStringLiteral(":\n")
                           + lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
    }
    return differences;
}
