#include "ReportFragments.h"

#include "FileNames.h"
#include "SupportData.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>

namespace {

// Quotes, markup characters, "%" and control characters would break the quoted href or be
// misread when the link comes back; everything else stays as it is so ordinary paths keep their
// plain form. A byte of a file name that is not UTF-8 goes as that byte, so the link leads to
// exactly that name.
QString encodedHref(const QString& href)
{
    QString result;
    result.reserve(href.size());
    for (qsizetype i = 0; i < href.size(); ++i) {
        const char16_t u = href.at(i).unicode();
        const bool rawByte = u >= 0xdc80 && u <= 0xdcff && isRawFileNameByte(href, i);
        if (u == '%' || u == '\'' || u == '"' || u == '<' || u == '>' || u == '&' || u < 0x20
            || u == 0x7f || rawByte) {
            const char16_t byte = rawByte ? u - 0xdc00 : u;
            result += QLatin1Char('%')
                      + QString::number(byte, 16).toUpper().rightJustified(2, QLatin1Char('0'));
        } else {
            result += href.at(i);
        }
    }
    return result;
}

// A field as a helper added it to a watched page: where it starts, the size and hash of the markup
// it added (a large tree has a hundred thousand of these), and its parts as given, still in markup
// apart from a path given as its name.
struct FieldEntry
{
    qsizetype offset = 0;
    qsizetype htmlSize = 0;
    size_t htmlHash = 0;
    QString label;
    QString value;
    bool hasValue = false;
    QString note;
    bool labelIsFileName = false;
};

// Pages are rendered on the loader's thread and read on the GUI thread.
struct FieldLog
{
    QMutex mutex;
    QHash<const QString*, QList<FieldEntry>> pages;
};

FieldLog& fieldLog()
{
    static FieldLog log;
    return log;
}

void noteField(const QString& output, qsizetype start, FieldEntry entry)
{
    FieldLog& log = fieldLog();
    QMutexLocker lock(&log.mutex);
    const auto page = log.pages.find(&output);
    if (page == log.pages.end())
        return;
    // Writing here again means the page is being rendered anew: what stood from here on is gone.
    while (!page->isEmpty() && page->last().offset >= start)
        page->removeLast();
    entry.offset = start;
    entry.htmlSize = output.size() - start;
    entry.htmlHash = qHash(QStringView(output).mid(start));
    page->append(entry);
}

QString valueText(const QVariant& value)
{
    return value.typeId() == QMetaType::Bool ? yesNo(value.toBool()) : value.toString();
}

void layField(QString& output, const QString& label, const QVariant& value, const QString& note,
              const QString& suffix)
{
    output += label.leftJustified(20, QLatin1Char(' '));
    output += valueText(value);
    if (!note.isEmpty()) {
        if (!value.isNull())
            output += QStringLiteral(" - ");
        output += note;
    }
    if (!suffix.isEmpty())
        output += QLatin1Char(' ') + suffix;
}

} // namespace

QString errorsHtml(const SupportData& data)
{
    const QStringList errors = data.errors();
    if (errors.isEmpty())
        return {};
    QString html = QStringLiteral("Errors:");
    for (int i = 0; i < errors.size(); ++i)
        html += QStringLiteral("<br>%1. %2").arg(QString::number(i + 1), errors.at(i));
    return html;
}

void appendErrors(QString& output, const SupportData& data)
{
    const QString errors = errorsHtml(data);
    if (errors.isEmpty())
        return;
    // The errors come as a list of their own, not as a field.
    layField(output, errors, QVariant(), QString(), QString());
    output += lineBreaks(2);
}

QString lineBreaks(int count)
{
    return count > 0 ? QStringLiteral("<br>").repeated(count) : QString();
}

void appendField(QString& output, const QString& label, const QVariant& value, const QString& note,
                 const QString& suffix)
{
    const qsizetype start = output.size();
    layField(output, label, value, note, suffix);
    noteField(output, start, {0, 0, 0, label, valueText(value), !value.isNull(), note});
}

void appendIndented(QString& output, const QString& label, const QVariant& value, int width)
{
    const qsizetype start = output.size();
    output += QStringLiteral("  ") + label.leftJustified(width, QLatin1Char(' '));
    if (!value.isNull())
        output += value.toString();
    noteField(output, start,
              {0, 0, 0, QStringLiteral("  ") + label, value.toString(), !value.isNull(), {}});
}

void appendPathState(QString& output, const QString& action, const QString& path,
                     QLatin1String state)
{
    const qsizetype start = output.size();
    // Written piece by piece: a large tree has hundreds of thousands of these lines.
    output += removeLink(action);
    output += QLatin1Char(' ');
    output += fileLink(path);
    output += QLatin1Char(' ');
    output += state;
    noteField(output, start, {0, 0, 0, path, state, true, {}, true});
}

bool ReportField::operator==(const ReportField& other) const
{
    return label == other.label && value == other.value && value.isNull() == other.value.isNull()
           && note == other.note;
}

void watchFields(const QString* page)
{
    FieldLog& log = fieldLog();
    QMutexLocker lock(&log.mutex);
    log.pages.insert(page, {});
}

void forgetFields(const QString* page)
{
    FieldLog& log = fieldLog();
    QMutexLocker lock(&log.mutex);
    log.pages.remove(page);
}

QList<ReportField> renderedFields(const QString* page)
{
    QList<FieldEntry> entries;
    {
        FieldLog& log = fieldLog();
        QMutexLocker lock(&log.mutex);
        entries = log.pages.value(page);
    }
    QList<ReportField> fields;
    for (const FieldEntry& entry : std::as_const(entries)) {
        // Text written over the field without the helpers leaves it out.
        if (entry.offset + entry.htmlSize > page->size()
            || qHash(QStringView(*page).mid(entry.offset, entry.htmlSize)) != entry.htmlHash)
            continue;
        ReportField field{entry.labelIsFileName ? displayFileName(entry.label)
                                                : htmlToPlainText(entry.label),
                          QString(), htmlToPlainText(entry.note)};
        if (entry.hasValue)
            field.value = htmlToPlainText(entry.value);
        // A line with nothing on it is spacing, not a field.
        if (field.label.trimmed().isEmpty() && field.value.isEmpty() && field.note.isEmpty())
            continue;
        fields.append(field);
    }
    return fields;
}

QString link(const QString& text, const QString& href, const QString& attributes)
{
    return QStringLiteral("<a href='%1' %2>%3</a>")
        .arg(encodedHref(href), attributes, displayFileName(text).toHtmlEscaped());
}

QString actionLink(const QString& text, const QString& action)
{
    return link(text, QLatin1Char('#') + action, QString());
}

QString fileLink(const QString& path)
{
    return link(path, QStringLiteral("file://") + path, QString());
}

QString removeLink(const QString& action)
{
    return link(QStringLiteral("Remove"), QLatin1Char('#') + action,
                QStringLiteral("style=\"color: #bb0000\";"));
}

QString decodedLink(const QString& href)
{
    return decodeFileName(QByteArray::fromPercentEncoding(href.toUtf8()));
}

QString preformatted(const QString& text)
{
    return QStringLiteral("<pre>") + text + QStringLiteral("</pre>");
}

QString htmlToPlainText(const QString& html)
{
    static const QRegularExpression actionWords(QStringLiteral(">(Clear|Remove)<"));
    static const QRegularExpression tags(QStringLiteral("<[^>]*>"));
    QString text = preformatted(html);
    text.replace(QStringLiteral("<br>"), QStringLiteral("\n"));
    text.replace(actionWords, QStringLiteral("><"));
    text.remove(tags);
    // "&amp;" last, so an escaped entity such as "&amp;lt;" comes out as the text "&lt;".
    text.replace(QStringLiteral("&lt;"), QStringLiteral("<"));
    text.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    text.replace(QStringLiteral("&quot;"), QStringLiteral("\""));
    text.replace(QStringLiteral("&#39;"), QStringLiteral("'"));
    text.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    return text;
}

QString presenceText(bool present)
{
    return present ? QStringLiteral("Present") : QStringLiteral("Not Present");
}

QString yesNo(bool value)
{
    return value ? QStringLiteral("Yes") : QStringLiteral("No");
}
