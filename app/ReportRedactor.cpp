#include "ReportRedactor.h"

#include "SupportData.h"
#include "SystemProfile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QHostAddress>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>
#include <QStandardPaths>
#include <QSysInfo>

#include <cerrno>
#include <cstring>

#include <algorithm>
#include <functional>

namespace {

// In the order that wins when two spellings cover the same text.
enum Kind { HomeKind, IdentifierKind, MacKind, AddressKind, HostKind, UserKind };

struct Match
{
    qsizetype start = 0;
    qsizetype length = 0;
    Kind kind = HomeKind;
    QString key;
};

struct Name
{
    QRegularExpression pattern;
    Kind kind;
    QString key;
};

const QRegularExpression::PatternOptions anyCase = QRegularExpression::CaseInsensitiveOption;

// Six to eight hexadecimal pairs, all joined by colons or all by hyphens.
const QRegularExpression macPattern(QStringLiteral(
    "(?<![0-9A-Fa-f])[0-9A-Fa-f]{2}([:-])[0-9A-Fa-f]{2}(?:\\1[0-9A-Fa-f]{2}){4,6}(?![0-9A-Fa-f])"));
// Not glued to a word, as a version such as "v5.2.0.14" or "app-5.2.0.14" is.
const QRegularExpression
    ipv4Pattern(QStringLiteral("(?<![0-9.\\p{L}_-])(?:(?:25[0-5]|2[0-4]\\d|1?\\d?\\d)\\.){3}"
                               "(?:25[0-5]|2[0-4]\\d|1?\\d?\\d)(?![0-9]|\\.\\d)"));
// Words holding two colons or more; those that read as IPv6 addresses are addresses.
const QRegularExpression ipv6Candidate(QStringLiteral("(?<![\\w:.%])[\\w.%]*:[\\w:.%]*:[\\w:.%]*"));
const QRegularExpression uuidPattern(
    QStringLiteral("(?<![0-9A-Fa-f])[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}"
                   "(?![0-9A-Fa-f])"));

QString placeholderStem(Kind kind)
{
    static const char* const stems[] = {"~", "uuid", "mac", "ip", "host", "user"};
    return QLatin1String(stems[kind]);
}

// The address in one spelling for all its forms: no scope, IPv4 for an IPv4-mapped address.
// The unspecified address names no machine.
QString addressKey(const QString& text)
{
    QHostAddress address;
    if (!address.setAddress(text)
        || address.isEqual(QHostAddress(QHostAddress::AnyIPv6), QHostAddress::StrictConversion)
        || address.isEqual(QHostAddress(QHostAddress::AnyIPv4), QHostAddress::StrictConversion))
        return {};
    bool mapped = false;
    const quint32 v4 = address.toIPv4Address(&mapped);
    if (mapped)
        return QHostAddress(v4).toString();
    return QHostAddress(address.toIPv6Address()).toString();
}

// A name as a whole word in any case, its parts joined by any of the separators host and user
// names use: "qa-bench-7" also as "QA_BENCH.7", and "root" in "runtime-root", but "local" not in
// ".local" nor "Locale".
QRegularExpression namePattern(const QString& name)
{
    static const QRegularExpression separators(QStringLiteral("[-_. ]"));
    QStringList parts = name.split(separators, Qt::SkipEmptyParts);
    for (QString& part : parts)
        part = QRegularExpression::escape(part);
    return QRegularExpression(QStringLiteral("(?<![\\p{L}\\p{N}.])%1(?![\\p{L}\\p{N}])")
                                  .arg(parts.join(QStringLiteral("[-_. ]"))),
                              anyCase);
}

QStringList fieldValues(const ReportDocument& document, const QString& label)
{
    QStringList values;
    for (const ReportDocument::Section& section : document.sections) {
        QString heading;
        for (const ReportField& field : section.fields) {
            // The items of a list count under the heading above them.
            if (!field.label.startsWith(QLatin1Char(' ')))
                heading = field.label;
            if (heading == label && !field.value.trimmed().isEmpty())
                values << field.value.trimmed();
        }
    }
    return values;
}

// A label is the page's own wording, unless it is a path or a listing laid out as a label.
bool labelNamesNothing(const QString& label)
{
    static const QRegularExpression path(QStringLiteral("^\\s*(?:[/~]|[A-Za-z]:[\\\\/])"));
    return !label.contains(QLatin1Char('\n')) && !path.match(label).hasMatch();
}

// Values that describe software or hardware, never the machine's owner.
bool describes(int kind, const ReportField& field)
{
    return kind == FontsDataKind || field.label == QLatin1String("Operating System:")
           || field.label.contains(QLatin1String("Version"), Qt::CaseInsensitive);
}

QByteArray mappingKey(const QString& stem, const QString& key)
{
    return QCryptographicHash::hash((stem + QLatin1Char('\n') + key).toUtf8(),
                                    QCryptographicHash::Sha256)
        .toHex();
}

} // namespace

struct ReportRedactor::Private
{
    QString mappingFile;
    QList<Name> names;
    QSet<QString> known;
    QSet<QString> knownAddresses;
    // The report's own wording, its labels and page names: "Application Data" stays as it is in
    // "Application Data folder not found." for a user named "data".
    QSet<QString> wording;
    QHash<QByteArray, QString> placeholders; // mappingKey of stem and key
    QHash<QString, int> counts;              // by stem
    bool changed = false;

    void addName(const QString& name, Kind kind, const QString& key, bool asPath = false)
    {
        // A report redacted before gives its placeholders, not names.
        static const QRegularExpression placeholderName(
            QStringLiteral("^(?:~|(?:host|user|mac|ip|uuid)-\\d+)$"));
        if (name.trimmed().isEmpty() || known.contains(name.toLower())
            || placeholderName.match(name).hasMatch())
            return;
        known.insert(name.toLower());
        // Only a whole folder name, so "/home/ann" does not touch "/home/anna".
        names.append({asPath ? QRegularExpression(QRegularExpression::escape(name)
                                                  + QStringLiteral("(?![^/\\s])"))
                             : namePattern(name),
                      kind, key});
    }

    // With addresses false, only addresses the report gives as this machine's are found: a note
    // such as a product version may look like an address.
    QList<Match> matches(const QString& text, bool addresses) const;
    QString placeholder(const Match& match);
    QString redact(const QString& text, bool addresses);
    void readMapping();
};

QList<Match> ReportRedactor::Private::matches(const QString& text, bool addresses) const
{
    QList<Match> found;
    const auto collect = [&text, &found](const QRegularExpression& pattern, Kind kind,
                                         const std::function<QString(const QString&)>& key) {
        QRegularExpressionMatchIterator it = pattern.globalMatch(text);
        while (it.hasNext()) {
            const QRegularExpressionMatch match = it.next();
            const QString value = key(match.captured());
            if (!value.isEmpty())
                found.append({match.capturedStart(), match.capturedLength(), kind, value});
        }
    };
    const auto addressOf = [this, addresses](const QString& candidate) {
        const QString key = addressKey(candidate);
        return addresses || knownAddresses.contains(key) ? key : QString();
    };
    for (const Name& name : names)
        collect(name.pattern, name.kind, [&name](const QString&) { return name.key; });
    found.removeIf([this, &text](const Match& match) {
        if (match.kind != HostKind && match.kind != UserKind)
            return false;
        return std::any_of(wording.cbegin(), wording.cend(), [&](const QString& phrase) {
            const qsizetype at = text.indexOf(
                phrase, std::max<qsizetype>(0, match.start + match.length - phrase.size()));
            return at >= 0 && at <= match.start;
        });
    });
    collect(macPattern, MacKind, [](QString mac) {
        return mac.remove(QLatin1Char(':')).remove(QLatin1Char('-')).toUpper();
    });
    collect(ipv4Pattern, AddressKind, addressOf);
    collect(uuidPattern, IdentifierKind, [](const QString& id) { return id.toLower(); });

    QRegularExpressionMatchIterator it = ipv6Candidate.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        QString candidate = match.captured();
        // A full stop or colon may end the sentence rather than the address.
        while (!candidate.isEmpty() && addressKey(candidate).isEmpty()
               && (candidate.endsWith(QLatin1Char('.')) || candidate.endsWith(QLatin1Char(':'))))
            candidate.chop(1);
        const QString key = addressOf(candidate);
        if (!key.isEmpty())
            found.append({match.capturedStart(), candidate.size(), AddressKind, key});
    }

    // The first to start wins, then the longest, then the kind that comes first.
    std::sort(found.begin(), found.end(), [](const Match& a, const Match& b) {
        if (a.start != b.start)
            return a.start < b.start;
        if (a.length != b.length)
            return a.length > b.length;
        return a.kind < b.kind;
    });
    QList<Match> kept;
    qsizetype end = 0;
    for (const Match& match : std::as_const(found)) {
        if (match.start < end)
            continue;
        kept.append(match);
        end = match.start + match.length;
    }
    return kept;
}

QString ReportRedactor::Private::placeholder(const Match& match)
{
    const QString stem = placeholderStem(match.kind);
    if (match.kind == HomeKind)
        return stem;
    QString& placeholder = placeholders[mappingKey(stem, match.key)];
    if (placeholder.isEmpty()) {
        placeholder = QStringLiteral("%1-%2").arg(stem).arg(++counts[stem]);
        changed = true;
    }
    return placeholder;
}

QString ReportRedactor::Private::redact(const QString& text, bool addresses)
{
    const QList<Match> found = matches(text, addresses);
    if (found.isEmpty())
        return text;
    QString redacted;
    qsizetype position = 0;
    for (const Match& match : found) {
        redacted += QStringView(text).mid(position, match.start - position);
        redacted += placeholder(match);
        position = match.start + match.length;
    }
    redacted += QStringView(text).mid(position);
    return redacted;
}

// One "placeholder key" line for each value seen; lines that do not read so are left out.
void ReportRedactor::Private::readMapping()
{
    QFile file(mappingFile);
    if (!file.open(QIODevice::ReadOnly))
        return;
    static const QRegularExpression line(
        QStringLiteral("^([a-z]+)-([1-9]\\d{0,8}) ([0-9a-f]{64})$"));
    for (const QByteArray& bytes : file.readAll().split('\n')) {
        const QRegularExpressionMatch match = line.match(QString::fromLatin1(bytes));
        if (!match.hasMatch())
            continue;
        const QString stem = match.captured(1);
        const int number = match.captured(2).toInt();
        placeholders.insert(match.captured(3).toLatin1(),
                            QStringLiteral("%1-%2").arg(stem).arg(number));
        counts[stem] = std::max(counts.value(stem), number);
    }
}

ReportRedactor::ReportRedactor(const QString& mappingFile)
    : d(std::make_unique<Private>())
{
    d->mappingFile = mappingFile;
    if (!mappingFile.isEmpty())
        d->readMapping();

    // The home folder as the user knows it and as the file system resolves it.
    const QString home = QDir::homePath();
    if (home != QStringLiteral("/")) {
        d->addName(home, HomeKind, home, true);
        const QString canonical = QFileInfo(home).canonicalFilePath();
        if (canonical != home)
            d->addName(canonical, HomeKind, home, true);
    }
    learn({});
}

ReportRedactor::~ReportRedactor() = default;

QString ReportRedactor::userMappingFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/corvanta-support/redaction-placeholders");
}

void ReportRedactor::learn(const ReportDocument& document)
{
    static const QRegularExpression letters(QStringLiteral("\\p{L}"));
    for (const ReportDocument::Section& section : document.sections) {
        d->wording.insert(section.name);
        for (const ReportField& field : section.fields) {
            QString phrase = field.label.trimmed();
            if (phrase.endsWith(QLatin1Char(':')))
                phrase.chop(1);
            if (labelNamesNothing(field.label) && phrase.contains(letters))
                d->wording.insert(phrase);
        }
    }
    d->wording.remove(QString());

    QStringList hosts = fieldValues(document, QStringLiteral("Host Name:"));
    QStringList users = fieldValues(document, QStringLiteral("User Name:"));
    hosts << QSysInfo::machineHostName();
    users << QFileInfo(QDir::homePath()).fileName();
    if (const QSharedPointer<SystemProfile> profile = SystemProfile::instance()) {
        hosts << profile->hostName();
        users << profile->userName() << profile->homeFolderName();
    }
    for (const QString& host : std::as_const(hosts)) {
        // The short name stands for the same host as its full name.
        const QString shortName = host.section(QLatin1Char('.'), 0, 0);
        d->addName(host, HostKind, shortName.toLower());
        d->addName(shortName, HostKind, shortName.toLower());
    }
    for (const QString& user : std::as_const(users))
        d->addName(user, UserKind, user.toLower());
    for (const QString& id : fieldValues(document, QStringLiteral("UUID:"))) {
        d->addName(id, IdentifierKind, id.toLower());
        d->addName(QString(id).remove(QLatin1Char('-')), IdentifierKind, id.toLower());
    }
    for (const QString& label :
         {QStringLiteral("Local IP Addresses:"), QStringLiteral("External IP Address:")}) {
        for (const QString& address : fieldValues(document, label))
            d->knownAddresses.insert(addressKey(address));
    }
    d->knownAddresses.remove(QString());

    // Numbered in the order the report shows them, whatever is redacted first.
    redact(document);
}

QString ReportRedactor::redact(const QString& text)
{
    return d->redact(text, true);
}

ReportDocument ReportRedactor::redact(const ReportDocument& document)
{
    ReportDocument redacted = document;
    for (qsizetype i = 0; i < redacted.sections.size(); ++i) {
        ReportDocument::Section& section = redacted.sections[i];
        const ReportDocument::Section& original = document.sections.at(i);
        for (QString& error : section.errors)
            error = redact(error);
        for (ReportField& field : section.fields) {
            if (describes(section.kind, field))
                continue;
            if (!labelNamesNothing(field.label))
                field.label = redact(field.label);
            if (!field.value.isNull())
                field.value = redact(field.value);
            field.note = d->redact(field.note, false);
        }

        // The text again from its lines: each field's line as its field now reads.
        const QString& text = original.text;
        QString result;
        qsizetype position = 0;
        for (const ReportDocument::Section::Span& span : original.spans()) {
            // Blank, or the errors block.
            result += redact(text.mid(position, span.start - position));
            const QString line = text.mid(span.start, span.length);
            position = span.start + span.length;
            if (span.field < 0) {
                result += redact(line);
                continue;
            }
            const ReportField& before = original.fields.at(span.field);
            const ReportField& after = section.fields.at(span.field);
            const QString rest = line.mid(before.label.size());
            const QString shown = ReportDocument::shownValue(before);
            const qsizetype at = shown.isEmpty() ? -1 : rest.indexOf(shown);
            result += after.label;
            result += at < 0 ? rest
                             : rest.left(at) + ReportDocument::shownValue(after)
                                   + rest.mid(at + shown.size());
        }
        result += redact(text.mid(position));
        section.text = result;
    }
    return redacted;
}

bool ReportRedactor::save(QString* problem)
{
    if (d->mappingFile.isEmpty() || !d->changed)
        return true;
    const QFileInfo info(d->mappingFile);
    // The folder and the file are the user's alone: they tie placeholders to real values.
    if (!info.dir().exists()) {
        if (!QDir().mkpath(info.path())) {
            *problem = QStringLiteral("%1: %2").arg(info.path(),
                                                    QString::fromLocal8Bit(std::strerror(errno)));
            return false;
        }
        QFile::setPermissions(info.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                               | QFileDevice::ExeOwner);
    }
    QSaveFile file(d->mappingFile);
    QStringList lines;
    for (auto it = d->placeholders.cbegin(); it != d->placeholders.cend(); ++it)
        lines << it.value() + QLatin1Char(' ') + QString::fromLatin1(it.key());
    lines.sort();
    const QByteArray bytes = (lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toLatin1();
    if (!file.open(QIODevice::WriteOnly)
        || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)
        || file.write(bytes) != bytes.size() || !file.commit()) {
        *problem = QStringLiteral("%1: %2").arg(d->mappingFile, file.errorString());
        return false;
    }
    d->changed = false;
    return true;
}
