#include "PrivateNamespace.h"
#include "ProductHome.h"
#include "SupportSystemData.h"
#include "SupportSystemTab.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSysInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>
#include <QUdpSocket>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// The machine as the tests make it: a host name and addresses of its own, through a hosts file,
// and the address service's and the probe's host names on a loopback server that never answers.
const QByteArray hostName = "qa-bench-7.example.net";
const QByteArray hosts = "127.0.0.1 localhost\n10.9.8.7 qa-bench-7.example.net qa-bench-7\n"
                         "fd00::a1:7 qa-bench-7.example.net qa-bench-7\n"
                         "127.0.0.2 api.ipify.org www.kelvanmoor.com\n";

struct Run
{
    int exitCode = -1;
    QByteArray output;
};

Run report(const QStringList& arguments,
           QProcessEnvironment environment = QProcessEnvironment::systemEnvironment())
{
    // A closed proxy, so the report does not wait for the silent server.
    for (const QString& name : {u"http_proxy"_s, u"https_proxy"_s})
        environment.insert(name, u"http://127.0.0.1:9"_s);
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), arguments);
    Run run;
    if (program.waitForFinished(60000) && program.exitStatus() == QProcess::NormalExit)
        run.exitCode = program.exitCode();
    run.output = program.readAllStandardOutput();
    return run;
}

bool schemaAccepts(const QString& file)
{
    return QProcess::execute(u"python3"_s,
                             {u"-c"_s,
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

// The programs in a namespace of their own, where the machine has a host name and addresses the
// test knows, and whose TLS endpoints take a connection and never answer. The report as data:
// the JSON beside the pages it comes from, the saved bundle, the redaction and the comparison
// with an earlier report. The silent network: the window must still open, and a System refresh
// must not hold the GUI thread.
class tst_PrivateNetwork : public QObject
{
    Q_OBJECT

    ProductHome m_home;
    QTemporaryDir m_files;
    QTcpServer m_server;
    QList<QTcpSocket*> m_connections;

private slots:
    void initTestCase()
    {
        QVERIFY2(inPrivateNamespace(), "not in a private namespace");
        QVERIFY(m_home.isValid() && m_files.isValid());
        QVERIFY(bringLoopbackUp());
        QCOMPARE(::sethostname(hostName.constData(), size_t(hostName.size())), 0);
        QVERIFY(putFile(m_files.filePath(u"hosts"_s), hosts));
        QVERIFY(bindFile(m_files.filePath(u"hosts"_s), u"/etc/hosts"_s));
        // Connections are taken and kept, and nothing is ever written to them.
        QVERIFY(m_server.listen(QHostAddress(u"127.0.0.2"_s), 443));
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                m_connections << socket;
        });
        // The closed proxy of the other suites would answer at once, and no silence be tested.
        for (const char* name : {"http_proxy", "https_proxy", "no_proxy"})
            qunsetenv(name);
    }

    // One run saves its bundle and prints its JSON: the files check out, the JSON follows the
    // schema, its sections are the text's pages, and every field stands on its line. A
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
        QCOMPARE(
            QDir(folder).entryList(QDir::Files),
            (QStringList{u"report.json"_s, u"report.png"_s, u"report.txt"_s, u"SHA256SUMS"_s}));
        QCOMPARE(QProcess::execute(
                     u"sh"_s,
                     {u"-c"_s, u"cd \"$0\" && sha256sum --check --strict SHA256SUMS"_s, folder}),
                 0);
        QCOMPARE(fileBytes(folder + u"/report.json"_s), run.output);

        QVERIFY(schemaAccepts(folder + u"/report.json"_s));
        const QJsonObject root = QJsonDocument::fromJson(run.output).object();
        // The check can fail: without its tool the report is refused.
        QJsonObject toolless = root;
        toolless.remove(u"tool"_s);
        QVERIFY(putFile(m_files.filePath(u"toolless.json"_s), QJsonDocument(toolless).toJson()));
        QVERIFY(!schemaAccepts(m_files.filePath(u"toolless.json"_s)));

        const QJsonArray sections = root[u"sections"_s].toArray();
        const QString text = QString::fromUtf8(fileBytes(folder + u"/report.txt"_s));
        QCOMPARE(sections.size(), text.count(QString(50, '=') + '\n'));
        qsizetype fieldCount = 0;
        for (const QJsonValue& section : sections) {
            const QString page = section[u"text"_s].toString();
            QVERIFY(text.contains('\n' + section[u"name"_s].toString() + u"\n\n"_s + page + '\n'));

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

        // Every value that names the machine or its user is gone from every file of the redacted
        // bundle and from what was printed, in every spelling.
        // The namespace's root is the user.
        QStringList values{QSysInfo::machineHostName(), u"root"_s, QDir::homePath()};
        for (const QString& label :
             {u"Host Name:"_s, u"User Name:"_s, u"UUID:"_s, u"MAC Interfaces:"_s,
              u"Local IP Addresses:"_s, u"External IP Address:"_s})
            values << valuesOf(root, label);
        for (const QString& known : {QString::fromLatin1(hostName), u"10.9.8.7"_s, u"fd00::a1:7"_s,
                                     u"6f1c2d3e-0000-4000-8000-0123456789ab"_s})
            QVERIFY2(values.contains(known), qPrintable(known));
        const QString hiddenParent = m_home.path(u"redacted"_s);
        const Run redacted = report(
            {u"--redact"_s, u"--format"_s, u"json"_s, u"--save"_s, hiddenParent}, x.environment());
        QCOMPARE(redacted.exitCode, 0);
        const QString hiddenFolder = savedFolder(hiddenParent);
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
        QVERIFY(outputs[u"report.txt"_s].contains(u"\nHost Name:          host-1\n"_s));
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
        QCOMPARE(same.output, QByteArray());

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

    void windowOpens()
    {
        XvfbServer x;
        QVERIFY2(!x.startMainWindow().isEmpty(), "the main window never appeared");
        QTRY_VERIFY2(!m_connections.isEmpty(), "the program never reached the silent server");
    }

    // A heartbeat on the GUI thread, counted only when it comes from the thread's own loop: one
    // delivered inside a nested wait means the refresh still holds the thread, input shut out.
    void systemRefreshLeavesTheGuiThreadFree()
    {
        SupportSystemData data;
        SupportSystemTab tab(&data);
        tab.show();
        QSignalSpy probed(&data, &SupportSystemData::signalProbeFinished);
        const qsizetype connectionsBefore = m_connections.size();

        const int ownLevel = QThread::currentThread()->loopLevel();
        QElapsedTimer sinceBeat;
        qint64 longestGap = 0;
        QTimer heartbeat;
        connect(&heartbeat, &QTimer::timeout, this, [&] {
            if (QThread::currentThread()->loopLevel() == ownLevel)
                longestGap = std::max(longestGap, sinceBeat.restart());
        });
        heartbeat.start(100);
        sinceBeat.start();
        QElapsedTimer refresh;
        refresh.start();
        QTimer::singleShot(0, &tab, &SupportSystemTab::updateContent);
        // qWaitFor turns the thread's own loop; QSignalSpy::wait would nest one.
        QVERIFY(QTest::qWaitFor([&] { return !probed.isEmpty(); }, 30000));
        QVERIFY2(refresh.elapsed() >= 9000, "the probe was not held by the silent server");
        QVERIFY(m_connections.size() >= connectionsBefore + 2);
        QVERIFY2(longestGap <= 2000,
                 qPrintable(u"the GUI thread was held for %1 ms"_s.arg(longestGap)));
    }

    // With the name server silent as well, the headless report asks all its questions at once and
    // waits once, for the 10 s bound, not for the name server's 8 s first and the bound after.
    void headlessReportWaitsOnce()
    {
        QUdpSocket nameServer;
        QVERIFY(nameServer.bind(QHostAddress(u"127.0.0.3"_s), 53));
        const QString resolver = m_files.filePath(u"resolv.conf"_s);
        QVERIFY(putFile(resolver, "nameserver 127.0.0.3\noptions timeout:8 attempts:1\n"));
        // Namespaces of the report's own: the silent name server is for it alone, and it must ask
        // that server for its host name, which the hosts file does not know.
        QProcess report;
        report.start(u"unshare"_s, {u"-mu"_s, u"sh"_s, u"-c"_s,
                                    u"hostname unlisted && mount --bind \"$0\" /etc/resolv.conf && "
                                    "exec \"$1\""_s,
                                    resolver, QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY)});
        QElapsedTimer clock;
        clock.start();
        QVERIFY(report.waitForFinished(60000));
        const qint64 took = clock.elapsed();
        QCOMPARE(report.exitCode(), 0);
        QVERIFY2(nameServer.hasPendingDatagrams(), "the report never asked the name server");
        QVERIFY2(took >= 9000, "the report did not wait for the silent network");
        QVERIFY2(took < 14000, qPrintable(u"the report waited %1 ms"_s.arg(took)));
    }
};

// Starts the suite over inside "unshare -rmnu", where it may name the host, bind a hosts file over
// /etc/hosts and serve on port 443 without touching the machine's own.
int main(int argc, char** argv)
{
    if (!enterPrivateNamespace(argc, argv, "-rmnu"))
        return 1;
    QApplication application(argc, argv);
    tst_PrivateNetwork test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_privatenetwork.moc"
