#include "PrivateNamespace.h"
#include "ProductHome.h"
#include "SupportRegistry.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QDir>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSysInfo>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// The machine as the tests make it: a host name and addresses of its own, through a hosts file.
const QByteArray hostName = "qa-bench-7.example.net";
const QByteArray hosts = "127.0.0.1 localhost\n10.9.8.7 qa-bench-7.example.net qa-bench-7\n"
                         "fd00::a1:7 qa-bench-7.example.net qa-bench-7\n";
const QString identifier = u"6f1c2d3e-0000-4000-8000-0123456789ab"_s;

struct Run
{
    int exitCode = -1;
    QByteArray output;
    QStringList errors; // the lines the program wrote about itself
};

Run report(const QStringList& arguments,
           const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), arguments);
    Run run;
    if (program.waitForFinished(60000) && program.exitStatus() == QProcess::NormalExit)
        run.exitCode = program.exitCode();
    run.output = program.readAllStandardOutput();
    run.errors = QString::fromUtf8(program.readAllStandardError())
                     .split('\n', Qt::SkipEmptyParts)
                     .filter(u"corvanta-support-report: "_s);
    return run;
}

int tool(const QString& program, const QStringList& arguments, const QString& folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    return process.waitForFinished(60000) ? process.exitCode() : -1;
}

bool schemaAccepts(const QString& file)
{
    return tool(u"python3"_s, {u"-c"_s,
                               u"import json, sys, jsonschema\n"
                               "jsonschema.validate(json.load(open(sys.argv[1])),"
                               " json.load(open(sys.argv[2])))"_s,
                               file, QStringLiteral(CORVANTA_SOURCE_DIR "/app/report.schema.json")})
           == 0;
}

// The one report folder under parent.
QString savedFolder(const QString& parent)
{
    const QStringList folders = QDir(parent).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return folders.size() == 1 ? parent + '/' + folders.first() : QString();
}

// Every value the page gives under the label, the items of a list included.
QStringList valuesOf(const QJsonObject& root, const QString& label)
{
    QStringList values;
    for (const QJsonValue& section : root[u"sections"_s].toArray()) {
        QString heading;
        for (const QJsonValue& field : section[u"fields"_s].toArray()) {
            const QString fieldLabel = field[u"label"_s].toString();
            if (!fieldLabel.startsWith(' '))
                heading = fieldLabel;
            if (heading == label && !field[u"value"_s].toString().trimmed().isEmpty())
                values << field[u"value"_s].toString().trimmed();
        }
    }
    return values;
}

// An address in each of its forms; the outputs are searched in any case.
QStringList spellings(const QString& value)
{
    QStringList forms{value};
    static const QRegularExpression mac(u"^[0-9A-Fa-f]{2}([:-][0-9A-Fa-f]{2}){5,7}$"_s);
    const QHostAddress address(value);
    if (mac.match(value).hasMatch()) {
        forms << QString(value).replace('-', ':') << QString(value).replace(':', '-');
    } else if (address.protocol() == QAbstractSocket::IPv6Protocol) {
        const Q_IPV6ADDR bytes = address.toIPv6Address();
        QStringList groups;
        QStringList padded;
        for (int i = 0; i < 16; i += 2) {
            const int group = bytes[i] << 8 | bytes[i + 1];
            groups << QString::number(group, 16);
            padded << QString::number(group, 16).rightJustified(4, '0');
        }
        forms << address.toString() << groups.join(':') << padded.join(':');
    } else if (value.count('-') == 4) {
        forms << QString(value).remove('-');
    }
    return forms;
}

} // namespace

// The report as data, through the real program: the JSON beside the pages it comes from, the
// saved bundle, the redaction and the comparison with an earlier report. Runs in a namespace of
// its own, where the machine has a host name and addresses the test knows.
class tst_ReportAsData : public QObject
{
    Q_OBJECT

    ProductHome m_home;
    QTemporaryDir m_files;

private slots:
    void initTestCase()
    {
        QVERIFY2(inPrivateNamespace(), "not in a private namespace");
        QVERIFY(m_home.isValid() && m_files.isValid());
        QVERIFY(bringLoopbackUp());
        QCOMPARE(::sethostname(hostName.constData(), size_t(hostName.size())), 0);
        QVERIFY(putFile(m_files.filePath(u"hosts"_s), hosts));
        QVERIFY(bindFile(m_files.filePath(u"hosts"_s), u"/etc/hosts"_s));
    }

    // One run saves its bundle and prints its JSON: the files check out, the JSON follows the
    // schema, its sections are the program's collectors, and every field stands on its line. A
    // redacted run's bundle then holds none of the values that name the machine.
    void savedBundles()
    {
        QVERIFY(m_home.prepare());
        // A real display, so the Display page has fields as well.
        const XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        const QString parent = m_home.path(u"saved"_s);
        const Run run = report({u"--format"_s, u"json"_s, u"--save"_s, parent}, x.environment());
        QCOMPARE(run.exitCode, 0);
        const QString folder = savedFolder(parent);
        QVERIFY(folder.contains(u"/Corvanta Support Report "_s));
        QStringList files = QDir(folder).entryList(QDir::Files);
        files.sort();
        QCOMPARE(files, (QStringList{u"SHA256SUMS"_s, u"report.json"_s, u"report.png"_s,
                                     u"report.txt"_s}));
        QCOMPARE(tool(u"sha256sum"_s, {u"--check"_s, u"--strict"_s, u"SHA256SUMS"_s}, folder), 0);
        QCOMPARE(fileBytes(folder + u"/report.json"_s), run.output);

        QVERIFY(schemaAccepts(folder + u"/report.json"_s));
        const QJsonObject root = QJsonDocument::fromJson(run.output).object();
        // The check can fail: without its tool the report is refused.
        QJsonObject toolless = root;
        toolless.remove(u"tool"_s);
        QVERIFY(putFile(m_files.filePath(u"toolless.json"_s), QJsonDocument(toolless).toJson()));
        QVERIFY(!schemaAccepts(m_files.filePath(u"toolless.json"_s)));

        const SupportDataTable table = createSupportDataTable();
        const QJsonArray sections = root[u"sections"_s].toArray();
        QCOMPARE(sections.size(), qsizetype(table->size()));
        QString text = u"Generated: "_s
                       + QDateTime::fromString(root[u"generated"_s].toString(), Qt::ISODate)
                             .toLocalTime()
                             .toString(Qt::TextDate)
                       + u"\n\n"_s;
        auto collector = table->cbegin();
        qsizetype fieldCount = 0;
        for (const QJsonValue& section : sections) {
            const QString page = section[u"text"_s].toString();
            QCOMPARE(section[u"kind"_s].toInt(), collector->first);
            QCOMPARE(section[u"name"_s].toString(), collector->second->name());
            ++collector;
            text += QString(50, '=') + '\n' + section[u"name"_s].toString() + u"\n\n"_s + page
                    + u"\n\n"_s;

            QStringList errorLines;
            const QJsonArray errors = section[u"errors"_s].toArray();
            for (qsizetype i = 0; i < errors.size(); ++i)
                errorLines << u"%1. %2"_s.arg(i + 1).arg(errors[i].toString());
            QCOMPARE(page.startsWith(u"Errors:\n"_s + errorLines.join('\n') + u"\n\n"_s),
                     !errors.isEmpty());

            // In page order: the label at a line's start, or straight after the field before, its
            // padding, the value, the note.
            qsizetype position = 0;
            for (const QJsonValue& field : section[u"fields"_s].toArray()) {
                const QJsonValue value = field[u"value"_s];
                const QString note = field[u"note"_s].toString();
                const QString shown = value.toString()
                                      + (note.isEmpty() || value.isNull() ? QString() : u" - "_s)
                                      + note;
                const QRegularExpression line(
                    u"(?:^|\\G)"_s + QRegularExpression::escape(field[u"label"_s].toString())
                        + u" *"_s + QRegularExpression::escape(shown) + u" *$"_s,
                    QRegularExpression::MultilineOption);
                const QRegularExpressionMatch match = line.match(page, position);
                QVERIFY2(match.hasMatch(), qPrintable(QJsonDocument(field.toObject()).toJson()));
                position = match.capturedEnd();
                ++fieldCount;
            }
        }
        QVERIFY(fieldCount > 50);
        QCOMPARE(QString::fromUtf8(fileBytes(folder + u"/report.txt"_s)), text);

        // Every value that names the machine or its user is gone from every file of the redacted
        // bundle and from what was printed, in every spelling.
        // The namespace's root is the user.
        QStringList values{QSysInfo::machineHostName(), u"root"_s, QDir::homePath()};
        for (const QString& label :
             {u"Host Name:"_s, u"User Name:"_s, u"UUID:"_s, u"MAC Interfaces:"_s,
              u"Local IP Addresses:"_s, u"External IP Address:"_s})
            values << valuesOf(root, label);
        for (const QString& known :
             {QString::fromLatin1(hostName), u"10.9.8.7"_s, u"fd00::a1:7"_s, identifier})
            QVERIFY2(values.contains(known), qPrintable(known));
        const QString hiddenParent = m_home.path(u"redacted"_s);
        const Run redacted = report(
            {u"--redact"_s, u"--format"_s, u"json"_s, u"--save"_s, hiddenParent}, x.environment());
        QCOMPARE(redacted.exitCode, 0);
        const QString hiddenFolder = savedFolder(hiddenParent);
        QCOMPARE(tool(u"sha256sum"_s, {u"--check"_s, u"--strict"_s, u"SHA256SUMS"_s}, hiddenFolder),
                 0);
        QMap<QString, QString> outputs{{u"standard output"_s, QString::fromUtf8(redacted.output)}};
        for (const QString& name : QDir(hiddenFolder).entryList(QDir::Files))
            outputs.insert(name, QString::fromLatin1(fileBytes(hiddenFolder + '/' + name)));
        QCOMPARE(outputs.size(), 5);
        for (const QString& value : std::as_const(values)) {
            for (const QString& form : spellings(value)) {
                for (auto it = outputs.cbegin(); it != outputs.cend(); ++it)
                    QVERIFY2(!it.value().contains(form, Qt::CaseInsensitive),
                             qPrintable(form + u" in "_s + it.key()));
            }
        }
        // Hidden behind a placeholder, not left out.
        QCOMPARE(valuesOf(QJsonDocument::fromJson(redacted.output).object(), u"Host Name:"_s),
                 QStringList{u"host-1"_s});
        QVERIFY(outputs[u"report.txt"_s].contains(u"\nHost Name:          host-1\n"_s));
    }

    // A file that is no report says so in one line.
    void unreadableReports_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("errorLine");
        QTest::newRow("not JSON") << "{\"tool\":"_ba
                                  << u"%1: not JSON (unterminated object at byte 8)"_s;
        QTest::newRow("another tool's")
            << R"({"tool": {"name": "inxi"}})"_ba << u"%1: not a Corvanta Support report"_s;
        QTest::newRow("a section without its text")
            << R"({"generated": "2026-03-02T09:00:00+01:00", "tool": {"name": "Corvanta Support",
                 "version": "1.0.5"}, "sections": [{"kind": 0, "name": "Display", "errors": [],
                 "fields": []}]})"_ba
            << u"%1: section 1 is damaged"_s;
    }

    void unreadableReports()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, errorLine);
        const QString earlier = m_files.filePath(u"damaged.json"_s);
        QVERIFY(putFile(earlier, content));
        const Run run = report({u"--diff"_s, earlier, earlier});
        QCOMPARE(run.exitCode, 2);
        QCOMPARE(run.output, QByteArray());
        QCOMPARE(run.errors, QStringList{u"corvanta-support-report: "_s + errorLine.arg(earlier)});
    }

    // A report compared with itself shows nothing. Then the machine changes: the product gets its
    // folder, a preference, an association and a value in environment.d, which no page shows. The
    // differences say what changed on which page, and only that.
    void differencesSinceAnEarlierReport()
    {
        QVERIFY(m_home.prepare());
        QVERIFY(QDir(m_home.dataFolder()).removeRecursively());
        QVERIFY(QFile::remove(m_home.preferences()) && QFile::remove(m_home.userMimeapps()));
        const QString earlier = m_files.filePath(u"earlier.json"_s);
        const Run saved = report({u"--format"_s, u"json"_s});
        QCOMPARE(saved.exitCode, 0);
        QVERIFY(putFile(earlier, saved.output));
        const Run same = report({u"--diff"_s, earlier, earlier});
        QCOMPARE(same.exitCode, 0);
        QCOMPARE(same.output + same.errors.join('\n').toUtf8(), QByteArray());

        QVERIFY(QDir().mkpath(m_home.dataFolder()));
        QVERIFY(putFile(m_home.preferences(), ProductHome::preferencesText));
        QVERIFY(putFile(m_home.userMimeapps(), ProductHome::mimeapps));
        QVERIFY(putFile(m_home.path(u".config/environment.d/60-corvanta-support.conf"_s),
                        "QT_AUTO_SCREEN_SCALE_FACTOR=0\n"));
        const Run run = report({u"--diff"_s, earlier});
        QCOMPARE(run.exitCode, 1);
        const QString home = QDir::homePath();
        QCOMPARE(QString::fromUtf8(run.output),
                 u"Permissions:\n"
                 "  appeared  \"%1/.config/Kelvanmoor/Corvanta.ini OK\"\n"
                 "  appeared  \"%1/.local/share/Corvanta OK\"\n"
                 "Corvanta:\n"
                 "  changed   Application Data: \"%1/.local/share/Corvanta - Does Not Exist\" -> "
                 "\"%1/.local/share/Corvanta\"\n"
                 "  appeared  File Associations (User): \".cvd\"\n"
                 "  error gone: Application Data folder not found.\n"_s.arg(home));
    }
};

// Starts the suite over inside "unshare -rmnu", where it may name the host and bind a hosts file.
int main(int argc, char** argv)
{
    if (!enterPrivateNamespace(argc, argv, "-rmnu"))
        return 1;
    QApplication application(argc, argv);
    tst_ReportAsData test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_reportasdata.moc"
