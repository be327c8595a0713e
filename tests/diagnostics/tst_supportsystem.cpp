#include "FileSystemListing.h"
#include "LoopbackHttpServer.h"
#include "SupportReportRun.h"
#include "SupportSystemData.h"
#include "SupportSystemTab.h"
#include "SystemProfile.h"
#include "SystemProfileParsers.h"
#include "SystemProfilePlatform.h"
#include "TestEnvironment.h"

#include <QFileInfo>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#ifndef Q_OS_WIN
#include <pwd.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;
using namespace SystemProfileParsers;

namespace {

const quint64 GiB = quint64(1) << 30;
const QString listing = u"\r\n\r\nDeviceID     : C:\r\nSize         : 238.5 GB\r\n\r\n"_s;
const QString probePath = u"/myip.php"_s;
// Windows' probe asks for TLS, which the plain loopback server does not speak (see test_wininet).
const QString probed = windows ? u"Error"_s : u"OK"_s;

// wmic's adapter records, each type|description|address.
const QString adapterListing = [] {
    QString text;
    for (const char* record :
         {"Ethernet|Intel  I219-V|3C-7C-3F-11-22-33", "ethernet 802.3|VMware|00-50-56-C0-00-08",
          "Ethernet|Hyper-V Virtual Ethernet Adapter|00-15-5D-01-02-03",
          "Ethernet|Microsoft Virtual Adapter|3C-7C-3F-44-55-66", "Ethernet|TAP|02-00-54-55-4E-01",
          "Ethernet|Teredo|00-00-00-00-00-00-00-E0", "Wireless|Wi-Fi|AC-12-03-04-05-06",
          "Ethernet|A|00-00-6C-00-00-01", "Ethernet|B|F0-5D-89-00-00-01",
          "Ethernet|C|f0-5d-89-00-00-01"}) {
        const QStringList field = QString::fromLatin1(record).split(u'|');
        text += "\r\n\r\nAdapterType=" + field[0] + "\r\nDescription=" + field[1]
                + "\r\nMACAddress=" + field[2];
    }
    return text;
}();

} // namespace

class tst_SupportSystem : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;

private slots:
    void initTestCase() { QVERIFY(m_environment.isValid()); }

    // First, so that the profile is made here, by whichever of two threads asks first.
    void profile()
    {
        QSharedPointer<SystemProfile> fromThread;
        std::unique_ptr<QThread> thread(
            QThread::create([&fromThread] { fromThread = SystemProfile::instance(); }));
        thread->start();
        const QSharedPointer<SystemProfile> fromHere = SystemProfile::instance();
        QVERIFY(thread->wait(60000) && fromHere);
        QCOMPARE(fromThread, fromHere);
        const SystemProfile& profile = *fromHere;
        QVERIFY(profile.cpuSpeed().endsWith(u" Ghz"_s));
        QVERIFY(profile.cpuThreads() >= 1 && profile.ramGB() >= 1);
#ifdef Q_OS_WIN // Read through WMI.
        QVERIFY(profile.osName().startsWith(u"Windows "_s) && profile.is64Bit());
        QCOMPARE(profile.hostName(), qEnvironmentVariable("COMPUTERNAME"));
#else
        QVERIFY(profile.osName().startsWith(u"Linux "_s));
        QCOMPARE(profile.homeFolderName(), QFileInfo(m_environment.home()).fileName());
        QCOMPARE(profile.userName(), QString::fromLocal8Bit(::getpwuid(::geteuid())->pw_name));
#endif
    }

    void parsers_data()
    {
        QTest::addColumn<QString>("parsed");
        QTest::addColumn<QString>("expected");
        const auto n = [](auto number) {
            return QString::number(number);
        };
        // Windows by major.minor, a number from 10 on or without a minor; macOS 10.x by minor.
        for (const char* row : {"1 6.3 8.1", "1 6.4 ?", "1 6 6", "1 10.0 10", "2 14.2 Sonoma",
                                "2 10.15 Catalina", "2 10.16 ?", "3 10 ?"}) {
            const QStringList fields = QString::fromLatin1(row).split(u' ');
            QTest::newRow(row) << SystemProfile::versionName(fields[0].toInt(), fields[1])
                               << fields[2];
        }
        QTest::newRow("address width")
            << n(addressWidthIs64(u"AddressWidth=64"_s)) + n(addressWidthIs64(u"AddressWidth=32"_s))
                   + n(addressWidthIs64({}))
            << u"100"_s;
        // The chips' sum, else the system's total; whole GB from 0.05 below the next.
        QTest::newRow("memory") << n(wholeGB(memoryGiB(u"Capacity=8589934592 Capacity=8589934592"_s,
                                                       64 * GiB)))
                                       + '|' + n(wholeGB(memoryGiB({}, quint64(7.94 * GiB)))) + '|'
                                       + n(wholeGB(memoryGiB({}, quint64(7.9500001 * GiB))))
                                << u"16|7|8"_s;
        // Fuzzing reads back double-quoted and bare values; single quotes are read too.
        QTest::newRow("os-release single quotes")
            << osReleaseValue(u"ID=a\nID='b c'\n"_s, u"ID"_s) << u"b c"_s;
        // Known names decide: s390x and sparcv9 carry no "64".
        QTest::newRow("64-bit names")
            << n(architectureIs64Bit(u"x86_64"_s)) + n(architectureIs64Bit(u"s390x"_s))
                   + n(architectureIs64Bit(u"sparcv9"_s)) + n(architectureIs64Bit(u"i386"_s))
                   + n(architectureIs64Bit(u"s390"_s))
            << u"11100"_s;
        // Only the count after its own key becomes a size text, never the same digits elsewhere.
        QTest::newRow("sizes")
            << withSizeTexts(
                   u"FreeSpace    : 1073741824\r\nSize         : 256060514304\r\n"
                   "VolumeName   : 256060514304\r\nSize : 1024\r\nFreeSpace : 1024000000\r\n"_s)
            << u"FreeSpace    : 1 GB\r\nSize         : 238.5 GB\r\nVolumeName   : 256060514304\r\n"
               "Size : 1 KB\r\nFreeSpace : 976.6 MB\r\n"_s;
        // Virtual prefixes (the table's first and last), special or not Ethernet go; wmic's order.
        QTest::newRow("adapters")
            << physicalAdapterAddresses(adapterListing).join(' ')
            << u"3C-7C-3F-11-22-33 00-50-56-C0-00-08 00-15-5D-01-02-03 f0-5d-89-00-00-01"_s;
        // Local disks first, by mount point, then network shares.
        QTest::newRow("volume blocks")
            << volumeListing({})
                   + volumeListing({{u"//nas/share"_s, u"cifs"_s, u"/mnt/nas"_s, 4096, 1024},
                                    {u"/dev/sda2"_s, u"ext4"_s, u"/"_s, 2048, 10},
                                    {u"/dev/sdb1"_s, u"xfs"_s, u"/data"_s, 0, 0}})
            << u"\n\nDeviceID   : /dev/sda2\nFileSystem : ext4\nMountPoint : /\n"
               "Size       : 2048\nFreeSpace  : 10\n"
               "\nDeviceID   : /dev/sdb1\nFileSystem : xfs\nMountPoint : /data\n"
               "Size       : 0\nFreeSpace  : 0\n"
               "\nDeviceID   : //nas/share\nFileSystem : cifs\nMountPoint : /mnt/nas\n"
               "Size       : 4096\nFreeSpace  : 1024\n\n"_s;
    }

    void parsers()
    {
        QFETCH(QString, parsed);
        QTEST(parsed, "expected");
    }

#ifndef Q_OS_WIN // Linux's /sys.
    void sysfsTrees()
    {
        const QString memory = m_environment.path(u"memory"_s);
        QCOMPARE(SystemProfilePlatform::onlineMemoryBytes(memory), quint64(0));
        QVERIFY(putFile(memory + u"/block_size_bytes"_s, "8000000\n"));
        for (const QString block : {"memory0 1", "memory7 0", "memory12 1"})
            QVERIFY(putFile(memory + '/' + block.section(' ', 0, 0) + u"/online"_s,
                            block.section(' ', 1).toLatin1() + '\n'));
        QCOMPARE(SystemProfilePlatform::onlineMemoryBytes(memory), quint64(2 * 0x8000000));

        const QString net = m_environment.path(u"net"_s);
        for (const QString adapter :
             {"eth0 3c:7c:3f:11:22:33", "eth1 00:50:56:c0:00:08", "vbox 0c:81:12:00:00:01"}) {
            const QString folder = net + '/' + adapter.section(' ', 0, 0);
            QVERIFY(putFile(folder + u"/address"_s, adapter.section(' ', 1).toLatin1() + '\n'));
            QVERIFY(QFile::link(u"/sys/devices/system/cpu"_s, folder + u"/device"_s));
        }
        // Without a device behind it, as loopback and veth.
        QVERIFY(putFile(net + u"/veth/address"_s, "3c:7c:3f:11:22:44\n"));
        QStringList found = SystemProfilePlatform::sysfsAdapterAddresses(net);
        found.sort();
        QCOMPARE(found, QStringList({u"00-50-56-C0-00-08"_s, u"3C-7C-3F-11-22-33"_s}));
    }
#endif

    // Empty listing and benchmark blocks keep their label padding.
    void rendering()
    {
        const QSslError selfSigned(QSslError::SelfSignedCertificate);
        const QSslError wrongHost(QSslError::HostNameMismatch);
        const QString blank(20, QLatin1Char(' '));
        SupportSystemData::Figures figures(
            {u"Windows 10 Windows 10 64bit"_s, u"DESK-01"_s, u"ana"_s, u"/home/ana/Documents"_s,
             u"/home/ana/Desktop"_s, 0.123456789, 8, u"3.6 Ghz"_s, u"en_GB"_s, u"Tue Mar 5 2024"_s,
             QStringList{u"00-1A-2B-3C-4D-5E"_s, u"AC-DE-48-00-11-22"_s},
             QStringList{u"192.168.1.20"_s}, false, QString()});
        SupportSystemData data;
        data.setFigures(figures);
        emit data.signalSslErrors({selfSigned, wrongHost});
        data.setBenchmarkText(u"Write: 120.5 MB/s\nRead: 800.2 MB/s"_s);
        data.render();
        QCOMPARE(*data.text(),
                 u"Errors:<br>1. Insufficient RAM.<br>2. Failed to find file systems.<br><br>"
                 "Operating System:   Windows 10 Windows 10 64bit<br>Host Name:          DESK-01"
                 "<br>User Name:          ana<br>Documents:          <a href='file:///home/ana/"
                 "Documents' >/home/ana/Documents</a><br>Desktop:            <a href='file:///"
                 "home/ana/Desktop' >/home/ana/Desktop</a><br>RAM:                0.123457 GB<br>"
                 "CPUs:               8<br>Speed:              3.6 Ghz<br>Locale:             en_GB"
                 "<br><br>System Time:        Tue Mar 5 2024<br><br>MAC Interfaces:     <br>  00-"
                 "1A-2B-3C-4D-5E<br>  AC-DE-48-00-11-22<br><br>Local IP Addresses: <br>  192.168."
                 "1.20<br><br>External IP Address:<br>  <br><br>SSL Errors:         <br>1. "_s
                     + selfSigned.errorString() + u"<br>2. "_s + wrongHost.errorString()
                     + u"<br><br>WinInet:            Error"_s + blank
                     + u"Write: 120.5 MB/s<br>Read: 800.2 MB/s"_s);

        figures.winInetOk = true;
        figures.fileSystems = listing;
        data.setFigures(figures);
        data.setBenchmarkText({});
        data.render();
        QVERIFY(data.text()->endsWith(u"<br><br>WinInet:            OK"_s + listing + blank));
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
        QVERIFY2(text.contains("  203.0.113.7<br><br>WinInet:            " + probed),
                 qPrintable(text));
    }

    void network_data()
    {
        QTest::addColumn<QByteArrayList>("addressBodies");
        QTest::addColumn<QByteArray>("probeBody");
        QTest::addColumn<QString>("shown");
        // A later address replaces the first; garbage after it keeps it.
        QTest::newRow("answers") << QByteArrayList{R"({"ip":"203.0.113.7"})",
                                                   R"({"ip":"198.51.100.2"})", "<html>busy</html>"}
                                 << QByteArray("x")
                                 << "  198.51.100.2<br><br>WinInet:            " + probed;
        QTest::newRow("address not a string, empty probe body")
            << QByteArrayList{R"({"ip":7})"} << QByteArray("")
            << u"External IP Address:<br>  <br><br>WinInet:            Error"_s;
    }

    // Each refresh asks once; the answer shows without another load.
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

        for (int i = 0; i < addressBodies.size(); ++i) {
            tab.updateContent();
            QVERIFY(replies.size() == i + 1 || replies.wait(20000));
            QVERIFY(probes.size() == i + 1 || probes.wait(20000));
        }
        QTest::qWait(300);

        const QString page = tab.findChild<QLabel*>()->text();
        QVERIFY2(page.contains(shown) && !page.contains(u"SSL Errors:"_s), qPrintable(page));
        QCOMPARE(replies.size(), addressBodies.size());
        const qsizetype answered = probed == u"OK"_s ? addressBodies.size() : 0;
        QCOMPARE(server.requests.size(), addressBodies.size() + answered);
        QCOMPARE(server.requests.count(probePath.toLatin1() + " Corvannta Support"), answered);
    }
};

QTEST_MAIN(tst_SupportSystem)
#include "tst_supportsystem.moc"
