#include "RegistryTools.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringDecoder>

#include <cctype>

namespace {

const QString supportToolName = QStringLiteral("Corvanta Support");
const QByteArray defaultApplicationsGroup = QByteArrayLiteral("Default Applications");
const QByteArray addedAssociationsGroup = QByteArrayLiteral("Added Associations");

// One line of a key file as GLib's reader sees it: its bytes with the line end, its group, and for
// an assignment the key and where the value lies.
struct KeyFileLine
{
    qsizetype begin = 0;
    qsizetype end = 0;
    QByteArray group;
    QByteArray key;
    qsizetype valueBegin = 0;
    qsizetype valueEnd = 0;
};

// GLib's own idea of a blank: no vertical tab.
bool isKeyFileSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

bool isContinuationByte(char c)
{
    return (uchar(c) & 0xc0) == 0x80;
}

bool isGroupName(const QByteArray& name)
{
    if (name.isEmpty())
        return false;
    for (const char c : name) {
        if (c == '[' || uchar(c) < 0x20 || c == 0x7f)
            return false;
    }
    return true;
}

// The character whose UTF-8 sequence starts at index, or -1 when that is no whole, valid sequence.
qint32 utf8CharacterAt(const QByteArray& bytes, qsizetype index)
{
    const uchar lead = uchar(bytes.at(index));
    if (lead < 0x80)
        return lead;
    const int length = lead >= 0xc2 && lead <= 0xdf   ? 2
                       : lead >= 0xe0 && lead <= 0xef ? 3
                       : lead >= 0xf0 && lead <= 0xf4 ? 4
                                                      : 0;
    if (length == 0 || index + length > bytes.size())
        return -1;
    qint32 code = lead & (0x7f >> length);
    for (int i = 1; i < length; ++i) {
        if (!isContinuationByte(bytes.at(index + i)))
            return -1;
        code = (code << 6) | (uchar(bytes.at(index + i)) & 0x3f);
    }
    const qint32 smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[length] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff))
        return -1;
    return code;
}

// A locale such as "de_DE@euro": letters and digits of any script, '-', '_', '.' and '@'. Like
// GLib, only the first character of each sequence is judged.
bool isLocaleName(const QByteArray& locale)
{
    for (qsizetype i = 0; i < locale.size();) {
        const qint32 code = utf8CharacterAt(locale, i);
        const bool allowed =
            code >= 0x80 ? QChar::isLetter(char32_t(code))
                               || QChar::category(char32_t(code)) == QChar::Number_DecimalDigit
                         : code >= 0
                               && (std::isalnum(code) || code == '-' || code == '_' || code == '.'
                                   || code == '@');
        if (!allowed)
            return false;
        while (++i < locale.size() && isContinuationByte(locale.at(i))) {
        }
    }
    return true;
}

// A key is a name without '[' and ']', neither starting nor ending with a blank, with an optional
// "[locale]" at the end.
bool isKeyName(const QByteArray& key)
{
    qsizetype name = 0;
    while (name < key.size() && key.at(name) != '[' && key.at(name) != ']')
        ++name;
    if (name == 0 || key.front() == ' ' || key.at(name - 1) == ' ')
        return false;
    if (name == key.size())
        return true;
    return key.at(name) == '[' && key.back() == ']'
           && isLocaleName(key.mid(name + 1, key.size() - name - 2));
}

// The lines as GLib's key-file reader takes them. False where it refuses the whole text: a line
// that is neither a group, an assignment nor a comment (a leading byte-order mark makes one), an
// assignment before the first group, a bad group or key name, or a foreign Encoding. A text with
// a zero byte is refused too; GLib would read its lines only up to it.
bool readKeyFileLines(const QByteArray& text, QList<KeyFileLine>* lines)
{
    if (text.contains('\0'))
        return false;
    QByteArray group;
    QByteArray firstGroup;
    bool inGroup = false;
    for (qsizetype begin = 0; begin < text.size();) {
        const qsizetype newline = text.indexOf('\n', begin);
        KeyFileLine line;
        line.begin = begin;
        line.end = newline < 0 ? text.size() : newline + 1;
        qsizetype end = newline < 0 ? text.size() : newline;
        if (newline >= 0 && end > begin && text.at(end - 1) == '\r')
            --end;
        begin = line.end;
        qsizetype start = line.begin;
        while (start < end && isKeyFileSpace(text.at(start)))
            ++start;
        if (start == end || text.at(start) == '#') {
            line.group = group;
            lines->append(line);
            continue;
        }
        if (text.at(start) == '[') {
            const qsizetype close = text.indexOf(']', start);
            if (close >= 0 && close < end) {
                qsizetype rest = close + 1;
                while (rest < end
                       && (text.at(rest) == ' ' || text.at(rest) == '\t'
                           || isContinuationByte(text.at(rest))))
                    ++rest;
                if (rest == end) {
                    group = text.mid(start + 1, close - start - 1);
                    if (!isGroupName(group))
                        return false;
                    if (!inGroup)
                        firstGroup = group;
                    inGroup = true;
                    line.group = group;
                    lines->append(line);
                    continue;
                }
            }
        }
        const qsizetype equals = text.indexOf('=', start);
        if (equals < 0 || equals >= end || equals == start || !inGroup)
            return false;
        qsizetype keyEnd = equals;
        while (isKeyFileSpace(text.at(keyEnd - 1)))
            --keyEnd;
        line.group = group;
        line.key = text.mid(start, keyEnd - start);
        if (!isKeyName(line.key))
            return false;
        line.valueBegin = equals + 1;
        while (line.valueBegin < end && isKeyFileSpace(text.at(line.valueBegin)))
            ++line.valueBegin;
        line.valueEnd = end;
        if (group == firstGroup && line.key == "Encoding"
            && text.mid(line.valueBegin, end - line.valueBegin).toUpper() != "UTF-8")
            return false;
        lines->append(line);
    }
    return true;
}

// UTF-8 as GLib takes it: a byte-order mark is a character like any other.
bool decodeAsGLib(const QByteArray& bytes, QString* text)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless
                                                     | QStringDecoder::Flag::ConvertInitialBom);
    *text = decoder(bytes);
    return !decoder.hasError();
}

// A key that names a MIME type: UTF-8, and no translation "key[locale]".
bool isMimeTypeKey(const QByteArray& key, QString* type)
{
    if (key.isEmpty() || key.contains('['))
        return false;
    return decodeAsGLib(key, type);
}

// A value as GLib's string list: UTF-8 throughout, split at each ';' that is not escaped, the
// escapes \s \n \t \r \\ \; undone, and no empty item after the last ';'. False for any other
// escape or a value that is not UTF-8; GLib then names nothing for the key.
bool valueList(const QByteArray& value, QStringList* items)
{
    QString text;
    if (!decodeAsGLib(value, &text))
        return false;
    items->clear();
    QString item;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char(';')) {
            items->append(item);
            item.clear();
        } else if (c != QLatin1Char('\\')) {
            item += c;
        } else if (++i == text.size()) {
            return false;
        } else {
            static const QString escapes = QStringLiteral("snrt\\;");
            static const QString characters = QStringLiteral(" \n\r\t\\;");
            const qsizetype escape = escapes.indexOf(text.at(i));
            if (escape < 0)
                return false;
            item += characters.at(escape);
        }
    }
    if (!item.isEmpty())
        items->append(item);
    return true;
}

bool isProductId(const QString& id, const QString& prefix)
{
    qsizetype start = 0;
    while (start < id.size() && id.at(start).unicode() < 0x80
           && isKeyFileSpace(char(id.at(start).unicode())))
        ++start;
    return QStringView(id).mid(start).startsWith(prefix);
}

// The items of a list value as they are written, escapes and all, the empty one after a final
// ';' included, so that joining them with ';' gives the value back.
QByteArrayList rawListItems(const QByteArray& value)
{
    QByteArrayList items;
    qsizetype start = 0;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value.at(i) == '\\') {
            ++i;
        } else if (value.at(i) == ';') {
            items.append(value.mid(start, i - start));
            start = i + 1;
        }
    }
    items.append(value.mid(start));
    return items;
}

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

QMap<QString, QStringList> associationLists(const QByteArray& mimeapps, const QByteArray& group)
{
    QMap<QString, QStringList> lists;
    QList<KeyFileLine> lines;
    if (!readKeyFileLines(mimeapps, &lines))
        return lists;
    for (const KeyFileLine& line : std::as_const(lines)) {
        QString type;
        QStringList ids;
        if (line.group != group || !isMimeTypeKey(line.key, &type))
            continue;
        // The last assignment wins, even one that names nothing readable.
        if (valueList(mimeapps.mid(line.valueBegin, line.valueEnd - line.valueBegin), &ids))
            lists.insert(type, ids);
        else
            lists.remove(type);
    }
    return lists;
}

QByteArray withoutProductAssociations(const QByteArray& mimeapps, const QStringList& mimeTypes,
                                      const QString& productName)
{
    QList<KeyFileLine> lines;
    if (!readKeyFileLines(mimeapps, &lines))
        return mimeapps;
    const QString prefix = associationPrefix(productName);
    const QMap<QString, QStringList> defaults =
        associationLists(mimeapps, defaultApplicationsGroup);
    const QMap<QString, QStringList> added = associationLists(mimeapps, addedAssociationsGroup);
    QStringList productTypes;
    for (const QString& type : mimeTypes) {
        if (defaults.value(type).value(0).startsWith(prefix)
            || added.value(type).value(0).startsWith(prefix))
            productTypes.append(type);
    }
    if (productTypes.isEmpty())
        return mimeapps;
    QByteArray result;
    qsizetype copied = 0;
    for (const KeyFileLine& line : std::as_const(lines)) {
        QString type;
        if ((line.group != defaultApplicationsGroup && line.group != addedAssociationsGroup)
            || !isMimeTypeKey(line.key, &type) || !productTypes.contains(type))
            continue;
        const QByteArray value = mimeapps.mid(line.valueBegin, line.valueEnd - line.valueBegin);
        QStringList ids;
        if (!valueList(value, &ids))
            continue;
        QByteArrayList keptPieces;
        bool changed = false;
        bool named = false;
        bool lastRemoved = false;
        for (const QByteArray& piece : rawListItems(value)) {
            QStringList item;
            valueList(piece, &item);
            // Also after blanks, which GLib would skip were the id to come first.
            lastRemoved = isProductId(item.value(0), prefix);
            if (lastRemoved) {
                changed = true;
                continue;
            }
            keptPieces.append(piece);
            named = named || !item.value(0).isEmpty();
        }
        if (!changed)
            continue;
        result += mimeapps.mid(copied, line.begin - copied);
        if (named) {
            QByteArray kept = keptPieces.join(';');
            // An empty item now last would otherwise be taken for the end of the list.
            if (lastRemoved && keptPieces.last().isEmpty())
                kept += ';';
            // A blank the first id now starts with would be taken for the space after '='.
            static const QByteArray blanks(" \t\r", 3);
            static const QByteArray escapes("str", 3);
            if (!kept.isEmpty() && blanks.contains(kept.front()))
                kept.replace(0, 1, QByteArray(1, '\\') + escapes.at(blanks.indexOf(kept.front())));
            result += mimeapps.mid(line.begin, line.valueBegin - line.begin) + kept
                      + mimeapps.mid(line.valueEnd, line.end - line.valueEnd);
        }
        copied = line.end;
    }
    return result + mimeapps.mid(copied);
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
    static const QRegularExpression assignment(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*="));
    QStringView rest = QStringView(exec).trimmed();
    bool afterEnv = false;
    while (!rest.isEmpty()) {
        QString word;
        if (rest.startsWith(QLatin1Char('"'))) {
            const qsizetype close = rest.indexOf(QLatin1Char('"'), 1);
            if (close < 0)
                return {};
            word = rest.mid(1, close - 1).toString();
            rest = rest.mid(close + 1).trimmed();
        } else {
            const qsizetype blank = rest.indexOf(QLatin1Char(' '));
            word = (blank < 0 ? rest : rest.left(blank)).toString();
            rest = blank < 0 ? QStringView() : rest.mid(blank + 1).trimmed();
        }
        // "env A=1 program" runs the program, as the desktop's launchers do.
        if (!afterEnv && isEnvProgram(word)) {
            afterEnv = true;
            continue;
        }
        if (afterEnv && assignment.match(word).hasMatch())
            continue;
        return word;
    }
    return {};
}

bool isEnvProgram(const QString& program)
{
    return program == QLatin1String("env") || program.endsWith(QLatin1String("/env"));
}

bool isSupportToolEntry(const QString& displayName, const QString& program)
{
    if (displayName.compare(supportToolName, Qt::CaseInsensitive) == 0)
        return true;
    // A Windows icon names its program, perhaps quoted and followed by the icon's index.
    static const QRegularExpression iconIndex(QStringLiteral(",-?\\d+$"));
    QString path = program;
    path.remove(iconIndex);
    path.remove(QLatin1Char('"'));
    // Compared as files, so that links and, on Windows, the case of a letter do not matter.
    const QFileInfo file(path);
    if (path.isEmpty() || !file.exists() || !QCoreApplication::instance())
        return false;
    const QDir folder(QCoreApplication::applicationDirPath());
    for (const QString& name :
         {QStringLiteral("corvanta-support"), QStringLiteral("corvanta-support-report")}) {
        for (const QString& suffix : {QString(), QStringLiteral(".exe")}) {
            if (QFileInfo(folder.filePath(name + suffix)) == file)
                return true;
        }
    }
    return QFileInfo(QCoreApplication::applicationFilePath()) == file;
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
