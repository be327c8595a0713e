#include "ReportRedactor.h"

#include "SystemProfile.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QHostAddress>
#include <QRegularExpression>
#include <QSet>
#include <QSysInfo>

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
const QRegularExpression
    ipv4Pattern(QStringLiteral("(?<![0-9.])(?:(?:25[0-5]|2[0-4]\\d|1?\\d?\\d)\\.){3}"
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

// Long names are hidden wherever they stand; a name of one or two letters only as a word.
QRegularExpression namePattern(const QString& name, const QString& after = QString())
{
    QString pattern = QRegularExpression::escape(name) + after;
    if (name.size() < 3)
        pattern = QStringLiteral("(?<![\\p{L}\\p{N}])%1(?![\\p{L}\\p{N}])").arg(pattern);
    return QRegularExpression(pattern, anyCase);
}

QStringList fieldValues(const ReportDocument& document, const QString& label)
{
    QStringList values;
    for (const ReportDocument::Section& section : document.sections) {
        for (const ReportField& field : section.fields) {
            if (field.label == label && !field.value.trimmed().isEmpty())
                values << field.value.trimmed();
        }
    }
    return values;
}

} // namespace

struct ReportRedactor::Private
{
    QList<Name> names;
    QSet<QString> known;
    QHash<QString, QString> placeholders; // stem + '\n' + key
    int counts[UserKind + 1] = {};

    void addName(const QString& name, Kind kind, const QString& key,
                 const QString& after = QString())
    {
        if (name.isEmpty() || known.contains(name.toLower()))
            return;
        known.insert(name.toLower());
        names.append({namePattern(name, after), kind, key});
    }

    QList<Match> matches(const QString& text) const;
    QString placeholder(const Match& match);
};

QList<Match> ReportRedactor::Private::matches(const QString& text) const
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
    for (const Name& name : names)
        collect(name.pattern, name.kind, [&name](const QString&) { return name.key; });
    collect(macPattern, MacKind, [](QString mac) {
        return mac.remove(QLatin1Char(':')).remove(QLatin1Char('-')).toUpper();
    });
    collect(ipv4Pattern, AddressKind, addressKey);
    collect(uuidPattern, IdentifierKind, [](const QString& id) { return id.toLower(); });

    QRegularExpressionMatchIterator it = ipv6Candidate.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        QString candidate = match.captured();
        // A full stop or colon may end the sentence rather than the address.
        while (!candidate.isEmpty() && addressKey(candidate).isEmpty()
               && (candidate.endsWith(QLatin1Char('.')) || candidate.endsWith(QLatin1Char(':'))))
            candidate.chop(1);
        const QString key = addressKey(candidate);
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
    QString& placeholder = placeholders[stem + QLatin1Char('\n') + match.key];
    if (placeholder.isEmpty())
        placeholder = QStringLiteral("%1-%2").arg(stem).arg(++counts[match.kind]);
    return placeholder;
}

ReportRedactor::ReportRedactor(const ReportDocument& document)
    : d(std::make_unique<Private>())
{
    // The home folder as the user knows it and as the file system resolves it; only a whole
    // folder name, so "/home/ann" does not touch "/home/anna".
    const QString home = QDir::homePath();
    const QString homePathEnd = QStringLiteral("(?![^/\\s])");
    if (home != QStringLiteral("/")) {
        d->addName(home, HomeKind, home, homePathEnd);
        const QString canonical = QFileInfo(home).canonicalFilePath();
        if (canonical != home)
            d->addName(canonical, HomeKind, home, homePathEnd);
    }

    QStringList hosts = fieldValues(document, QStringLiteral("Host Name:"));
    QStringList users = fieldValues(document, QStringLiteral("User Name:"));
    hosts << QSysInfo::machineHostName();
    users << QFileInfo(home).fileName();
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

    // Numbered in the order the report shows them, whatever is redacted first.
    const QString text = document.text();
    for (const Match& match : d->matches(text))
        d->placeholder(match);
}

ReportRedactor::~ReportRedactor() = default;

QString ReportRedactor::redact(const QString& text)
{
    const QList<Match> matches = d->matches(text);
    if (matches.isEmpty())
        return text;
    QString redacted;
    qsizetype position = 0;
    for (const Match& match : matches) {
        redacted += QStringView(text).mid(position, match.start - position);
        redacted += d->placeholder(match);
        position = match.start + match.length;
    }
    redacted += QStringView(text).mid(position);
    return redacted;
}

ReportDocument ReportRedactor::redact(const ReportDocument& document)
{
    ReportDocument redacted = document;
    for (ReportDocument::Section& section : redacted.sections) {
        section.name = redact(section.name);
        for (QString& error : section.errors)
            error = redact(error);
        for (ReportField& field : section.fields) {
            field.label = redact(field.label);
            if (!field.value.isNull())
                field.value = redact(field.value);
            field.note = redact(field.note);
        }
        section.text = redact(section.text);
    }
    return redacted;
}
