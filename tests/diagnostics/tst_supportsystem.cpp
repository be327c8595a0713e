#include "FileSystemListing.h"
#include "SupportReportRun.h"
#include "SupportSystemData.h"
#include "SupportSystemTab.h"
#include "TestEnvironment.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

const QString listing = u"\r\n\r\nDeviceID     : C:\r\nSize         : 238.5 GB\r\n\r\n"_s;
const QByteArray addressTarget = "/?format=json";
const QByteArray probeTarget = "/myip.php";
const QUrl nowhere(u"http://127.0.0.1:1/"_s);

// Answers each request with the next body queued for its target ("" when none is left), after
// the delay; a null body is never answered. Keeps the request heads it saw.
struct LoopbackServer : QTcpServer
{
    QMap<QByteArray, QByteArrayList> bodies;
    QByteArrayList heads;
    int delayMs = 0;

    LoopbackServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                    if (!socket->peek(65536).contains("\r\n\r\n"))
                        return;
                    heads << socket->readAll();
                    QByteArrayList& queue = bodies[heads.last().split(' ').value(1)];
                    const QByteArray body = queue.isEmpty() ? QByteArray("") : queue.takeFirst();
                    if (body.isNull())
                        return;
                    QTimer::singleShot(delayMs, socket, [socket, body] {
                        socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: "
                                      + QByteArray::number(body.size()) + "\r\n\r\n" + body);
                        socket->disconnectFromHost();
                    });
                });
        });
    }
    QUrl url(const QByteArray& target) const
    {
        return QUrl(u"http://127.0.0.1:%1%2"_s.arg(serverPort()).arg(target));
    }
};

} // namespace

class tst_SupportSystem : public QObject
{
    Q_OBJECT

private slots:
    void rendering_data()
    {
        QTest::addColumn<double>("ramGB");
        QTest::addColumn<QString>("fileSystems");
        QTest::addColumn<QList<QSslError>>("sslErrors");
        QTest::addColumn<bool>("winInetOk");
        QTest::addColumn<QString>("benchmark");
        QTest::addColumn<QString>("head");
        QTest::addColumn<QString>("ram");
        QTest::addColumn<QString>("beforeWinInet");
        QTest::addColumn<QString>("tail");
        const QString lowRam = u"Errors:<br>1. Insufficient RAM.<br><br>"_s;
        const QSslError selfSigned(QSslError::SelfSignedCertificate);
        const QSslError wrongHost(QSslError::HostNameMismatch);
        const QList<QSslError> none;
        // An empty block still takes its label's padding.
        const QString blank(20, QLatin1Char(' '));
        const QString ok = u"OK"_s + listing + blank;
        QTest::newRow("all well, no benchmark yet") << 16.0 << listing << none << true << QString()
                                                    << QString() << u"16 GB"_s << QString() << ok;
        QTest::newRow("exactly 1 GB") << 1.0 << listing << none << true << QString() << QString()
                                      << u"1 GB"_s << QString() << ok;
        QTest::newRow("half") << 0.5 << listing << none << true << QString() << lowRam
                              << u"0.5 GB"_s << QString() << ok;
        QTest::newRow("unknown RAM, no file systems")
            << -1.0 << QString() << none << true << QString()
            << u"Errors:<br>1. Insufficient RAM.<br>2. Failed to find file systems.<br><br>"_s
            << u"-1 GB"_s << QString() << u"OK"_s + blank + blank;
        QTest::newRow("TLS errors numbered, RAM to six digits")
            << 7.123456789 << listing << QList<QSslError>{selfSigned, wrongHost} << true
            << QString() << QString() << u"7.12346 GB"_s
            << "SSL Errors:         <br>1. " + selfSigned.errorString() + "<br>2. "
                   + wrongHost.errorString() + "<br><br>"
            << ok;
        QTest::newRow("probe failed, benchmark lines joined")
            << 16.0 << listing << none << false << u"Write: 120.5 MB/s\nRead: 800.2 MB/s"_s
            << QString() << u"16 GB"_s << QString()
            << "Error" + listing + "Write: 120.5 MB/s<br>Read: 800.2 MB/s";
    }

    void rendering()
    {
        QFETCH(double, ramGB);
        QFETCH(QString, fileSystems);
        QFETCH(QList<QSslError>, sslErrors);
        QFETCH(bool, winInetOk);
        QFETCH(QString, benchmark);
        QFETCH(QString, head);
        QFETCH(QString, ram);
        QFETCH(QString, beforeWinInet);
        QFETCH(QString, tail);
        SupportSystemData data;
        data.setFigures({u"Windows 10 Windows 10 64bit"_s, u"DESK-01"_s, u"ana"_s,
                         u"/home/ana/Documents"_s, u"/home/ana/Desktop"_s, ramGB, 8, u"3.6 Ghz"_s,
                         u"en_GB"_s, u"Tue Mar 5 2024"_s,
                         QStringList{u"00-1A-2B-3C-4D-5E"_s, u"AC-DE-48-00-11-22"_s},
                         QStringList{u"192.168.1.20"_s}, winInetOk, fileSystems});
        emit data.signalSslErrors(sslErrors);
        data.setBenchmarkText(benchmark);
        data.render();
        QCOMPARE(*data.text(),
                 head
                     + u"Operating System:   Windows 10 Windows 10 64bit<br>"
                       "Host Name:          DESK-01<br>"
                       "User Name:          ana<br>"
                       "Documents:          <a href='file:///home/ana/Documents' "
                       ">/home/ana/Documents</a><br>"
                       "Desktop:            <a href='file:///home/ana/Desktop' "
                       ">/home/ana/Desktop</a><br>"
                       "RAM:                "_s
                     + ram
                     + u"<br>CPUs:               8<br>"
                       "Speed:              3.6 Ghz<br>"
                       "Locale:             en_GB<br><br>"
                       "System Time:        Tue Mar 5 2024<br><br>"
                       "MAC Interfaces:     <br>  00-1A-2B-3C-4D-5E<br>  AC-DE-48-00-11-22<br><br>"
                       "Local IP Addresses: <br>  192.168.1.20<br><br>"
                       "External IP Address:<br>  <br><br>"_s
                     + beforeWinInet + u"WinInet:            "_s + tail);
    }

    void sizeTexts_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("expected");
        // Only the count after its own key changes, never the same digits elsewhere.
        QTest::newRow("disk, same digits elsewhere")
            << u"FreeSpace    : 1073741824\r\nSize         : 256060514304\r\n"
               "VolumeName   : 256060514304\r\n"_s
            << u"FreeSpace    : 1 GB\r\nSize         : 238.5 GB\r\nVolumeName   : 256060514304\r\n"_s;
        QTest::newRow("full disk")
            << u"DeviceID   : /dev/loop0\r\nSize       : 4096\r\nFreeSpace  : 0\r\n"_s
            << u"DeviceID   : /dev/loop0\r\nSize       : 4 KB\r\nFreeSpace  : 0 bytes\r\n"_s;
        QTest::newRow("digits inside a longer number")
            << u"Size : 1024\r\nFreeSpace : 1024000000\r\nSerial : 2010\r\n"_s
            << u"Size : 1 KB\r\nFreeSpace : 976.6 MB\r\nSerial : 2010\r\n"_s;
        QTest::newRow("no count to rewrite") << u"size : 2048\r\nZ: \\\\nas\\share\r\n"_s
                                             << u"size : 2048\r\nZ: \\\\nas\\share\r\n"_s;
    }

    void sizeTexts()
    {
        QFETCH(QString, output);
        QTEST(withSizeTexts(output), "expected");
    }

    void volumeBlocks()
    {
        QCOMPARE(volumeListing({}), QString());
        QCOMPARE(volumeListing({{u"//nas/share"_s, u"cifs"_s, u"/mnt/nas"_s, 4096, 1024},
                                {u"/dev/sda2"_s, u"ext4"_s, u"/"_s, 2048, 10},
                                {u"/dev/sdb1"_s, u"xfs"_s, u"/data"_s, 0, 0}}),
                 u"\n\nDeviceID   : /dev/sda2\nFileSystem : ext4\nMountPoint : /\n"
                 "Size       : 2048\nFreeSpace  : 10\n"
                 "\nDeviceID   : /dev/sdb1\nFileSystem : xfs\nMountPoint : /data\n"
                 "Size       : 0\nFreeSpace  : 0\n"
                 "\nDeviceID   : //nas/share\nFileSystem : cifs\nMountPoint : /mnt/nas\n"
                 "Size       : 4096\nFreeSpace  : 1024\n\n"_s);
    }

    // A stand-in powershell.exe on the PATH shows the arguments each command gets.
    void powerShellCommands()
    {
        QTemporaryDir bin;
        QVERIFY(putFile(bin.filePath(u"powershell.exe"_s),
                        "#!/bin/sh\nfor a in \"$@\"; do printf '[%s]' \"$a\"; done\n"
                        "printf '\\nSize : 2048\\n'\nprintf 'Size : 4096\\n' >&2\n"));
        QFile::setPermissions(bin.filePath(u"powershell.exe"_s),
                              QFile::ReadOwner | QFile::ExeOwner);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", bin.path().toUtf8() + ':' + path);
        const QString output = powerShellListing();
        qputenv("PATH", path);
        QString expected;
        for (const char* command :
             {"[get-wmiobject][win32_logicaldisk]", "[get-wmiobject][win32_mappedlogicaldisk]",
              "[net][view]", "[net][use]"})
            expected += QLatin1String(command) + u"[; Stop-Process $pid]\nSize : 2 KB\n"_s
                        + u"Size : 4096\n"_s;
        QCOMPARE(output, expected);
    }

    // The headless report on a machine without any network: it still comes, System last.
    void headlessReportEndsWithSystem()
    {
        TestEnvironment home;
        QProcess report;
        report.start(u"unshare"_s, {u"-rn"_s, QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY)});
        QVERIFY(report.waitForFinished(60000));
        QCOMPARE(report.exitCode(), 0);
        const QString text = QString::fromUtf8(report.readAllStandardOutput());
        const QString lastSection = text.mid(text.lastIndexOf(QString(50, u'=')) + 51);
        QVERIFY2(lastSection.startsWith(u"System\n\nOperating System:   "_s), qPrintable(text));
        QVERIFY(lastSection.contains(u"\nWinInet:            Error\n"_s));
        QVERIFY(lastSection.endsWith(u"\n\n"_s));
    }

    // Without a page to show a late answer on, the headless report waits for it.
    void headlessReportWaitsForTheAddress()
    {
        TestEnvironment home;
        LoopbackServer server;
        server.delayMs = 3000;
        server.bodies[addressTarget] = {R"({"ip":"203.0.113.7"})"};
        server.bodies[probeTarget] = {"x"};
        const auto table = SupportDataTable::create();
        table->emplace(SystemDataKind, std::make_unique<SupportSystemData>(
                                           server.url("/"), server.url(probeTarget)));
        loadAllSupportData(*table);
        const QString text = *findSupportData(*table, SystemDataKind)->text();
        QVERIFY2(text.contains(u"  203.0.113.7<br><br>WinInet:            OK"_s), qPrintable(text));
    }

    // The button below the text: a cancelled folder choice runs nothing; each chosen folder adds
    // its report below the others.
    void benchmarkRuns()
    {
        TestEnvironment home;
        SupportSystemData data(nowhere, nowhere);
        SupportSystemTab tab(&data);
        tab.updateContent();
        auto* button = tab.findChild<QPushButton*>(u"benchmarkButton"_s);
        auto* label = tab.findChild<QLabel*>();
        QVERIFY(button && label);
        QCOMPARE(button->text(), u"Benchmark File I/O"_s);
        auto* outer = qobject_cast<QGridLayout*>(tab.layout());
        QVERIFY(outer && qobject_cast<QScrollArea*>(outer->itemAtPosition(0, 0)->widget()));
        QCOMPARE(outer->itemAtPosition(1, 0)->layout()->indexOf(button), 0);
        const auto press = [&](const QString& folder) {
            QTimer::singleShot(0, this, [folder] {
                auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                QVERIFY(dialog);
                QCOMPARE(dialog->windowTitle(), u"Choose Location"_s);
                if (folder.isEmpty())
                    return dialog->reject();
                dialog->setDirectory(folder);
                static_cast<QDialog*>(dialog)->accept();
            });
            button->click();
        };
        const QString first = home.path(u"first"_s);
        const QString second = home.path(u"second"_s);
        QVERIFY(QDir().mkpath(first) && QDir().mkpath(second));

        press(QString());
        QVERIFY(!label->text().contains(u"CREATE min="_s));
        press(first);
        QCOMPARE(label->text().count(u"CREATE min="_s), 1);
        press(second);
        const QString text = label->text();
        QCOMPARE(text.count(u"RANDOM_SEEK min="_s), 2);
        QVERIFY2(text.indexOf(first + u"<br>CREATE"_s) < text.indexOf(second + u"<br>CREATE"_s)
                     && text.indexOf(first) >= 0,
                 qPrintable(text.right(400)));
        QCOMPARE(QDir(first).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden),
                 QStringList());
    }

    void network_data()
    {
        QTest::addColumn<QByteArrayList>("addressBodies");
        QTest::addColumn<QByteArray>("probeBody");
        QTest::addColumn<QString>("shown");
        const QByteArray first = R"({"ip":"203.0.113.7"})";
        QTest::newRow("address shown, probe answers")
            << QByteArrayList{first} << QByteArray("203.0.113.7")
            << u"203.0.113.7<br><br>WinInet:            OK"_s;
        QTest::newRow("later address replaces it")
            << QByteArrayList{first, R"({"ip":"198.51.100.2"})"} << QByteArray("x")
            << u"  198.51.100.2<br>"_s;
        QTest::newRow("garbage keeps the address") << QByteArrayList{first, "<html>busy</html>"}
                                                   << QByteArray("x") << u"  203.0.113.7<br>"_s;
        QTest::newRow("address not a string") << QByteArrayList{R"({"ip":7})"} << QByteArray("x")
                                              << u"External IP Address:<br>  <br>"_s;
        QTest::newRow("probe with an empty body")
            << QByteArrayList{first} << QByteArray("") << u"WinInet:            Error"_s;
        QTest::newRow("silent probe given up on")
            << QByteArrayList{first} << QByteArray() << u"WinInet:            Error"_s;
        QTest::newRow("silent address service given up on")
            << QByteArrayList{QByteArray()} << QByteArray("x")
            << u"External IP Address:<br>  <br><br>WinInet:            OK"_s;
    }

    // The page against a loopback address service and probe page: each refresh asks once, the
    // answer shows without another load, and a silent service is given up on.
    void network()
    {
        QFETCH(QByteArrayList, addressBodies);
        QFETCH(QByteArray, probeBody);
        QFETCH(QString, shown);
        TestEnvironment home;
        LoopbackServer server;
        server.bodies[addressTarget] = addressBodies;
        for (int i = 0; i < addressBodies.size(); ++i)
            server.bodies[probeTarget] << probeBody;
        SupportSystemData data(server.url("/"), server.url(probeTarget));
        SupportSystemTab tab(&data);
        QSignalSpy replies(&data, &SupportSystemData::signalExternalIpFinished);
        QSignalSpy probes(&data, &SupportSystemData::signalProbeFinished);
        // Errors of an earlier request are not shown once the next one starts.
        emit data.signalSslErrors({QSslError(QSslError::SelfSignedCertificate)});

        for (int i = 0; i < addressBodies.size(); ++i) {
            tab.updateContent();
            // A silent service must not hold the page: it shows before the answer comes.
            if (addressBodies.at(i).isNull())
                QCOMPARE(replies.size(), i);
            QVERIFY(replies.size() == i + 1 || replies.wait(20000));
            // The probe runs beside the page and shows its answer when it ends.
            QVERIFY(probeBody.isNull() || probes.size() == i + 1 || probes.wait(20000));
        }
        QTest::qWait(300);

        const QString page = tab.findChild<QLabel*>()->text();
        QVERIFY2(page.contains(shown), qPrintable(page));
        QVERIFY(!page.contains(u"SSL Errors:"_s));
        QCOMPARE(replies.size(), addressBodies.size());
        QCOMPARE(server.heads.count(), 2 * addressBodies.size());
        for (const QByteArray& head : std::as_const(server.heads)) {
            if (head.startsWith("GET " + probeTarget + " "))
                QVERIFY(head.contains("\r\nUser-Agent: Corvannta Support\r\n"));
            else
                QVERIFY(head.startsWith("GET " + addressTarget + " "));
        }
    }
};

QTEST_MAIN(tst_SupportSystem)
#include "tst_supportsystem.moc"
