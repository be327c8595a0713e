#include "FileSystemListing.h"
#include "LoopbackHttpServer.h"
#include "SupportReportRun.h"
#include "SupportSystemData.h"
#include "SupportSystemTab.h"
#include "TestEnvironment.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString listing = u"\r\n\r\nDeviceID     : C:\r\nSize         : 238.5 GB\r\n\r\n"_s;
const QString probePath = u"/myip.php"_s;

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
        QTest::addColumn<QString>("expected");
        const auto page = [](const QString& head, const QString& ram, const QString& beforeWinInet,
                             const QString& tail) {
            return head
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
                   + beforeWinInet + u"WinInet:            "_s + tail;
        };
        const QString lowRam = u"Errors:<br>1. Insufficient RAM.<br><br>"_s;
        const QSslError selfSigned(QSslError::SelfSignedCertificate);
        const QSslError wrongHost(QSslError::HostNameMismatch);
        const QList<QSslError> none;
        // An empty block still takes its label's padding.
        const QString blank(20, QLatin1Char(' '));
        const QString ok = u"OK"_s + listing + blank;
        QTest::newRow("all well, no benchmark yet")
            << 16.0 << listing << none << true << QString() << page({}, u"16 GB"_s, {}, ok);
        QTest::newRow("exactly 1 GB")
            << 1.0 << listing << none << true << QString() << page({}, u"1 GB"_s, {}, ok);
        QTest::newRow("half") << 0.5 << listing << none << true << QString()
                              << page(lowRam, u"0.5 GB"_s, {}, ok);
        QTest::newRow("unknown RAM, no file systems")
            << -1.0 << QString() << none << true << QString()
            << page(u"Errors:<br>1. Insufficient RAM.<br>2. Failed to find file systems.<br><br>"_s,
                    u"-1 GB"_s, {}, u"OK"_s + blank + blank);
        QTest::newRow("TLS errors numbered, RAM to six digits")
            << 7.123456789 << listing << QList<QSslError>{selfSigned, wrongHost} << true
            << QString()
            << page({}, u"7.12346 GB"_s,
                    "SSL Errors:         <br>1. " + selfSigned.errorString() + "<br>2. "
                        + wrongHost.errorString() + "<br><br>",
                    ok);
        QTest::newRow("probe failed, benchmark lines joined")
            << 16.0 << listing << none << false << u"Write: 120.5 MB/s\nRead: 800.2 MB/s"_s
            << page({}, u"16 GB"_s, {},
                    "Error" + listing + "Write: 120.5 MB/s<br>Read: 800.2 MB/s");
    }

    void rendering()
    {
        QFETCH(double, ramGB);
        QFETCH(QString, fileSystems);
        QFETCH(QList<QSslError>, sslErrors);
        QFETCH(bool, winInetOk);
        QFETCH(QString, benchmark);
        SupportSystemData data;
        data.setFigures({u"Windows 10 Windows 10 64bit"_s, u"DESK-01"_s, u"ana"_s,
                         u"/home/ana/Documents"_s, u"/home/ana/Desktop"_s, ramGB, 8, u"3.6 Ghz"_s,
                         u"en_GB"_s, u"Tue Mar 5 2024"_s,
                         QStringList{u"00-1A-2B-3C-4D-5E"_s, u"AC-DE-48-00-11-22"_s},
                         QStringList{u"192.168.1.20"_s}, winInetOk, fileSystems});
        emit data.signalSslErrors(sslErrors);
        data.setBenchmarkText(benchmark);
        data.render();
        QTEST(*data.text(), "expected");
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

    // Without a page to show a late answer on, the headless report waits for it.
    void headlessReportWaitsForTheAddress()
    {
        TestEnvironment home;
        LoopbackHttpServer server;
        server.delayMs = 3000;
        server.answer(u"/"_s, 200, R"({"ip":"203.0.113.7"})");
        server.answer(probePath, 200, "x");
        const auto table = SupportDataTable::create();
        table->emplace(SystemDataKind, std::make_unique<SupportSystemData>(server.url(u"/"_s),
                                                                           server.url(probePath)));
        loadAllSupportData(*table);
        const QString text = *findSupportData(*table, SystemDataKind)->text();
        QVERIFY2(text.contains(u"  203.0.113.7<br><br>WinInet:            OK"_s), qPrintable(text));
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
    }

    // The page against a loopback address service and probe page: each refresh asks once, and the
    // answer shows without another load.
    void network()
    {
        QFETCH(QByteArrayList, addressBodies);
        QFETCH(QByteArray, probeBody);
        QFETCH(QString, shown);
        TestEnvironment home;
        LoopbackHttpServer server;
        server.recordedHeaders = {"user-agent"};
        for (const QByteArray& body : std::as_const(addressBodies))
            server.answer(u"/"_s, 200, body);
        server.answer(probePath, 200, probeBody);
        SupportSystemData data(server.url(u"/"_s), server.url(probePath));
        SupportSystemTab tab(&data);
        QSignalSpy replies(&data, &SupportSystemData::signalExternalIpFinished);
        QSignalSpy probes(&data, &SupportSystemData::signalProbeFinished);
        // Errors of an earlier request are not shown once the next one starts.
        emit data.signalSslErrors({QSslError(QSslError::SelfSignedCertificate)});

        // The probe runs beside the page and shows its answer when it ends; silent services are
        // the silent network test's.
        for (int i = 0; i < addressBodies.size(); ++i) {
            tab.updateContent();
            QVERIFY(replies.size() == i + 1 || replies.wait(20000));
            QVERIFY(probes.size() == i + 1 || probes.wait(20000));
        }
        QTest::qWait(300);

        const QString page = tab.findChild<QLabel*>()->text();
        QVERIFY2(page.contains(shown), qPrintable(page));
        QVERIFY(!page.contains(u"SSL Errors:"_s));
        QCOMPARE(replies.size(), addressBodies.size());
        QCOMPARE(server.requests.size(), 2 * addressBodies.size());
        QCOMPARE(server.requests.count(probePath.toLatin1() + " Corvannta Support"),
                 addressBodies.size());
    }
};

QTEST_MAIN(tst_SupportSystem)
#include "tst_supportsystem.moc"
