#include "ReportFragments.h"

#include "SupportData.h"

#include <QRegularExpression>
#include <QUrl>

namespace {

// Quotes, markup characters, "%" and control characters would break the quoted href or be
// misread when the link comes back; everything else stays as it is so ordinary paths keep their
// plain form.
QString encodedHref(const QString& href)
{
    QString result;
    result.reserve(href.size());
    for (const QChar c : href) {
        const char16_t u = c.unicode();
        if (u == '%' || u == '\'' || u == '"' || u == '<' || u == '>' || u == '&' || u < 0x20
            || u == 0x7f) {
            result += QLatin1Char('%')
                      + QString::number(u, 16).toUpper().rightJustified(2, QLatin1Char('0'));
        } else {
            result += c;
        }
    }
    return result;
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
    appendField(output, errors, QVariant());
    output += lineBreaks(2);
}

QString lineBreaks(int count)
{
    return count > 0 ? QStringLiteral("<br>").repeated(count) : QString();
}

void appendField(QString& output, const QString& label, const QVariant& value, const QString& note,
                 const QString& suffix)
{
    output += label.leftJustified(20, QLatin1Char(' '));
    if (value.typeId() == QMetaType::Bool)
        output += yesNo(value.toBool());
    else
        output += value.toString();
    if (!note.isEmpty()) {
        if (!value.isNull())
            output += QStringLiteral(" - ");
        output += note;
    }
    if (!suffix.isEmpty())
        output += QLatin1Char(' ') + suffix;
}

void appendIndented(QString& output, const QString& label, const QVariant& value, int width)
{
    output += QStringLiteral("  ") + label.leftJustified(width, QLatin1Char(' '));
    if (!value.isNull())
        output += value.toString();
}

QString link(const QString& text, const QString& href, const QString& attributes)
{
    return QStringLiteral("<a href='%1' %2>%3</a>")
        .arg(encodedHref(href), attributes, text.toHtmlEscaped());
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
    return QUrl::fromPercentEncoding(href.toUtf8());
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
