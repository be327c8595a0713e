#include "RegistryTools.h"

#include <QRegularExpression>
#include <QStringDecoder>

namespace {

const QString defaultApplicationsGroup = QStringLiteral("Default Applications");

// The lines of a text, each with its own line end, so that joining them gives the text back.
QList<QByteArray> linesOf(const QByteArray& text)
{
    QList<QByteArray> lines;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf('\n', start);
        end = end < 0 ? text.size() : end + 1;
        lines.append(text.mid(start, end - start));
        start = end;
    }
    return lines;
}

bool decodeUtf8(const QByteArray& bytes, QString* text)
{
    // Stateless, so that a sequence cut short at the end is an error too.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    *text = decoder(bytes);
    return !decoder.hasError();
}

// Walks the lines of a key file, telling the visitor each line's group, key and value; lines that
// are not assignments arrive with an empty key. False when the text is not UTF-8.
template<typename Visitor>
bool visitKeyFile(const QByteArray& text, Visitor visit)
{
    QString decoded;
    if (!decodeUtf8(text, &decoded))
        return false;
    QString group;
    for (const QString& rawLine : decoded.split(QLatin1Char('\n'))) {
        const QString line = rawLine.trimmed();
        QString key;
        QString value;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            group = line.mid(1, line.size() - 2);
        } else if (!line.startsWith(QLatin1Char('#'))) {
            const qsizetype equals = line.indexOf(QLatin1Char('='));
            if (equals > 0) {
                key = line.left(equals).trimmed();
                value = line.mid(equals + 1).trimmed();
            }
        }
        if (!visit(group, key, value))
            break;
    }
    return true;
}

bool isVariableName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return pattern.match(name).hasMatch();
}

// The name a line of environment.d assigns, or empty.
QString assignedName(const QByteArray& line)
{
    const QString text = QString::fromUtf8(line).trimmed();
    if (text.startsWith(QLatin1Char('#')))
        return {};
    const qsizetype equals = text.indexOf(QLatin1Char('='));
    const QString name = equals > 0 ? text.left(equals).trimmed() : QString();
    return isVariableName(name) ? name : QString();
}

QString unquoted(const QString& value)
{
    if (value.size() >= 2 && value.front() == value.back()
        && (value.front() == QLatin1Char('"') || value.front() == QLatin1Char('\'')))
        return value.mid(1, value.size() - 2);
    return value;
}

QByteArray lineEnd(const QByteArray& line)
{
    return line.endsWith("\r\n") ? QByteArrayLiteral("\r\n") : QByteArrayLiteral("\n");
}

} // namespace

QString associationPrefix(const QString& productName)
{
    QString prefix = productName;
    prefix.remove(QLatin1Char(' '));
    return prefix + QLatin1Char('.');
}

QMap<QString, QString> defaultApplications(const QByteArray& mimeapps)
{
    QMap<QString, QString> defaults;
    const bool valid =
        visitKeyFile(mimeapps, [&](const QString& group, const QString& key, const QString& value) {
            const QString first = value.section(QLatin1Char(';'), 0, 0).trimmed();
            if (group == defaultApplicationsGroup && !key.isEmpty() && !first.isEmpty()
                && !defaults.contains(key))
                defaults.insert(key, first);
            return true;
        });
    return valid ? defaults : QMap<QString, QString>();
}

QByteArray withoutProductDefaults(const QByteArray& mimeapps, const QStringList& mimeTypes,
                                  const QString& productName)
{
    const QString prefix = associationPrefix(productName);
    // One visit of the whole text, so that each line is judged in the group the reader sees it in.
    QList<bool> productDefault;
    const bool valid =
        visitKeyFile(mimeapps, [&](const QString& group, const QString& key, const QString& value) {
            productDefault.append(
                group == defaultApplicationsGroup && mimeTypes.contains(key)
                && value.section(QLatin1Char(';'), 0, 0).trimmed().startsWith(prefix));
            return true;
        });
    if (!valid)
        return mimeapps;
    QByteArray result;
    const QList<QByteArray> lines = linesOf(mimeapps);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!productDefault.at(i))
            result += lines.at(i);
    }
    return result;
}

QString keyFileValue(const QByteArray& text, const QString& group, const QString& key)
{
    if (key.isEmpty())
        return {};
    QString found;
    visitKeyFile(text, [&](const QString& lineGroup, const QString& lineKey, const QString& value) {
        if (lineGroup != group || lineKey != key)
            return true;
        if (value.size() <= maximumValueLength)
            found = value;
        return false;
    });
    return found;
}

QString execProgram(const QString& exec)
{
    const QString line = exec.trimmed();
    if (line.startsWith(QLatin1Char('"'))) {
        const qsizetype close = line.indexOf(QLatin1Char('"'), 1);
        return close > 0 ? line.mid(1, close - 1) : QString();
    }
    return line.section(QLatin1Char(' '), 0, 0);
}

QString environmentValue(const QByteArray& text, const QString& name)
{
    QString found;
    visitKeyFile(text, [&](const QString&, const QString& key, const QString& value) {
        if (key == name && value.size() <= maximumValueLength)
            found = unquoted(value);
        return true;
    });
    return found;
}

QByteArray withEnvironmentValue(const QByteArray& text, const QString& name, const QString& value)
{
    QString decoded;
    if (!isVariableName(name) || value.size() > maximumValueLength
        || value.contains(QLatin1Char('\n')) || value.contains(QLatin1Char('\r'))
        || value.contains(QChar::Null) || !decodeUtf8(text, &decoded))
        return {};
    // Quoted when reading would otherwise trim the value or take its own quotes off.
    const bool plain = value == value.trimmed() && unquoted(value) == value;
    const QString stored = plain ? value : QLatin1Char('"') + value + QLatin1Char('"');
    const QByteArray assignment = (name + QLatin1Char('=') + stored).toUtf8();
    QByteArray result;
    bool written = false;
    for (const QByteArray& line : linesOf(text)) {
        if (assignedName(line) != name) {
            result += line;
        } else if (!written) {
            result += assignment + lineEnd(line);
            written = true;
        }
    }
    if (!written) {
        if (!result.isEmpty() && !result.endsWith('\n'))
            result += '\n';
        result += assignment + '\n';
    }
    return result;
}

QByteArray withoutEnvironmentValue(const QByteArray& text, const QString& name)
{
    QString decoded;
    if (!decodeUtf8(text, &decoded))
        return text;
    QByteArray result;
    for (const QByteArray& line : linesOf(text)) {
        if (assignedName(line) != name)
            result += line;
    }
    return result;
}
