#include "SystemProfile.h"
#include "SystemProfileParsers.h"
#include "SystemProfilePlatform.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSysInfo>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;
using namespace SystemProfileParsers;

namespace {

const quint64 GiB = quint64(1) << 30;

const QString adapterListing =
    u"\r\n\r\nAdapterType=Ethernet 802.3\r\nDescription=Intel(R) Ethernet  I219-V\r\n"
    "MACAddress=3C-7C-3F-11-22-33\r\n\r\nAdapterType=Ethernet 802.3\r\n"
    "Description=Hyper-V Virtual Ethernet Adapter\r\nMACAddress=00-15-5D-01-02-03\r\n"
    "AdapterType=ethernet 802.3\r\nDescription=VMware Network Adapter\r\n"
    "MACAddress=00-50-56-C0-00-08\r\nAdapterType=Ethernet 802.3\r\n"
    "Description=Microsoft Virtual Adapter\r\nMACAddress=3C-7C-3F-44-55-66\r\n"
    "AdapterType=Ethernet 802.3\r\nDescription=TAP\r\nMACAddress=02-00-54-55-4E-01\r\n"
    "AdapterType=Ethernet 802.3\r\nDescription=Teredo\r\nMACAddress=00-00-00-00-00-00-00-E0\r\n"
    "AdapterType=Ethernet 802.3\r\nDescription=Parallels\r\nMACAddress=00-1C-42-00-00-08\r\n"
    "AdapterType=Ethernet 802.3\r\nDescription=VirtualBox\r\nMACAddress=0C-81-12-00-00-01\r\n"
    "AdapterType=Wireless\r\nDescription=Wi-Fi\r\nMACAddress=AC-12-03-04-05-06\r\n"
    "AdapterType=Ethernet\r\nDescription=A\r\nMACAddress=00-00-6C-00-00-01\r\n"
    "AdapterType=Ethernet\r\nDescription=B\r\nMACAddress=F0-5D-89-00-00-01\r\n"
    "AdapterType=Ethernet\r\nDescription=C\r\nMACAddress=f0-5d-89-00-00-01\r\n"_s;

} // namespace

class tst_SystemProfile : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;
    QByteArray m_path = qgetenv("PATH");

    // A wmic that records its arguments and prints the file named by WMIC_OUTPUT.
    QString fakeWmicFolder() const { return m_environment.path(u"bin"_s); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        const QString wmic = fakeWmicFolder() + u"/wmic"_s;
        QVERIFY(putFile(wmic,
                        "#!/bin/sh\nd=$(dirname \"$0\")\nprintf '%s\\n' \"$@\" > \"$d/arguments\"\n"
                        "cat \"$WMIC_OUTPUT\"\n"));
        QVERIFY(QFile::setPermissions(wmic, QFile::ReadOwner | QFile::ExeOwner));
        qputenv("PATH", fakeWmicFolder().toUtf8() + ':' + m_path);
    }

    void versionName_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("expected");
        // Windows by major.minor, a number from 10 on or without a minor; macOS 10.x by minor.
        for (const char* row :
             {"1 6.0 Vista", "1 6.3 8.1", "1 5.1 XP", "1 6.4 ?", "1 6 6", "1 10.0 10",
              "2 14.2 Sonoma", "2 10.0 Cheetah", "2 10.15 Catalina", "2 10.16 ?", "3 10 ?"}) {
            const QStringList fields = QString::fromLatin1(row).split(u' ');
            QTest::newRow(row) << fields[0].toInt() << fields[1] << fields[2];
        }
    }

    void versionName()
    {
        QFETCH(int, kind);
        QFETCH(QString, version);
        QTEST(SystemProfile::versionName(kind, version), "expected");
    }

    // The wmic answers as runWmic hands them over, the system's own figures, and what they give.
    void windowsFigures_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("width");
        QTest::addColumn<QString>("chips");
        QTest::addColumn<double>("totalGiB");
        QTest::addColumn<double>("mhz");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("is64");
        QTest::addColumn<double>("ram");
        QTest::addColumn<QString>("speed");
        QTest::newRow("Windows 11") << u"Caption=Microsoft Windows 11 Pro"_s << u"AddressWidth=64"_s
                                    << u"Capacity=8589934592 Capacity=8589934592"_s << 64.0
                                    << 3600.0 << u"11"_s << true << 16.0 << u"3.6 Ghz"_s;
        QTest::newRow("no release number")
            << u"Caption=Microsoft Windows Server"_s << u"AddressWidth=32"_s << QString() << 7.94
            << 2904.0 << u"7"_s << false << 7.0 << u"2.9 Ghz"_s;
        QTest::newRow("nothing, 7.95 up") << QString() << QString() << QString() << 7.9500001 << 0.0
                                          << u"7"_s << false << 8.0 << QString();
        QTest::newRow("wrong case, odd parts")
            << u"caption=Microsoft Windows 10"_s << u"addresswidth=64 x"_s
            << u"Capacity=4294967296 Capacity x=1=2 Capacity=junk"_s << 64.0 << -1.0 << u"7"_s
            << false << 4.0 << QString();
        QTest::newRow("15.9, 2999.6") << QString() << QString() << QString() << 15.9 << 2999.6
                                      << u"7"_s << false << 15.0 << u"3 Ghz"_s;
    }

    void windowsFigures()
    {
        QFETCH(QString, caption);
        QFETCH(QString, width);
        QFETCH(QString, chips);
        QFETCH(double, totalGiB);
        QFETCH(double, mhz);
        // The running system (6.1 here) stands in when the caption has no release number.
        QTEST(SystemProfile::versionName(1, windowsVersion(caption, 6, 1)), "name");
        QTEST(addressWidthIs64(width), "is64");
        QTEST(wholeGB(memoryGiB(chips, quint64(totalGiB * GiB))), "ram");
        QTEST(cpuSpeedText(mhz), "speed");
    }

    void adapterScan()
    {
        // Kept: the Intel card, Hyper-V (the words are not adjacent), VMware's 00-50-56 range,
        // the lower-case type and the lower-case address. The rest are virtual (the table's
        // first and last prefixes among them), special or not Ethernet.
        QStringList found = physicalAdapterAddresses(adapterListing);
        found.sort();
        QCOMPARE(found, QStringList({u"00-15-5D-01-02-03"_s, u"00-1C-42-00-00-08"_s,
                                     u"00-50-56-C0-00-08"_s, u"3C-7C-3F-11-22-33"_s,
                                     u"f0-5d-89-00-00-01"_s}));
        QCOMPARE(adapterRecords(adapterListing).size(), 12);
        QCOMPARE(adapterRecords(adapterListing).at(0).description, u"Intel(R) Ethernet I219-V"_s);
        // What runWmic hands over is one line, so no record is ever found in it.
        QVERIFY(adapterRecords(adapterListing.simplified()).isEmpty());
    }

    void runWmic()
    {
        QVERIFY(putFile(m_environment.path(u"caption"_s),
                        "\r\n\r\nCaption=Microsoft Windows 11 Pro  \r\n\r\n\r\n"));
        qputenv("WMIC_OUTPUT", m_environment.path(u"caption"_s).toUtf8());
        QCOMPARE(SystemProfile::runWmic(u" os  get caption /Format:list"_s),
                 u"Caption=Microsoft Windows 11 Pro"_s);
        QCOMPARE(fileBytes(fakeWmicFolder() + u"/arguments"_s),
                 "/interactive:off\nos\nget\ncaption\n/Format:list\n");

        qputenv("PATH", m_environment.path(u"empty"_s).toUtf8());
        QCOMPARE(SystemProfile::runWmic(u"os get caption /Format:list"_s), QString());
        qputenv("PATH", fakeWmicFolder().toUtf8() + ':' + m_path);
    }

    // Wine's wmic ignores /Format:list and prints a UTF-16 table; these are its real answers.
    void wineAnswers()
    {
        const auto answer = [](const char* name) {
            qputenv("WMIC_OUTPUT",
                    QFINDTESTDATA(u"fixtures/wine-wmic-"_s + name + u".out"_s).toUtf8());
            return SystemProfile::runWmic(u"query"_s);
        };
        QCOMPARE(windowsVersion(answer("os-caption"), 6, 1), u"6.1"_s);
        QVERIFY(!answer("cpu-addresswidth").isEmpty());
        QVERIFY(!addressWidthIs64(answer("cpu-addresswidth")));
        // Not empty, so the total from the system is not asked for and nothing is summed.
        QCOMPARE(memoryGiB(answer("memorychip-capacity"), 16 * GiB), 0.0);
        QVERIFY(adapterRecords(answer("nic")).isEmpty());
    }

    void macCache_data()
    {
        QTest::addColumn<QStringList>("list");
        QTest::addColumn<QDateTime>("madeAt");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<bool>("fresh");
        const QStringList one{u"3C-7C-3F-11-22-33"_s};
        const QDateTime noon(QDate(2024, 5, 6), QTime(12, 0));
        QTest::newRow("1799 s") << one << noon << noon.addSecs(1799) << true;
        QTest::newRow("1800 s") << one << noon << noon.addSecs(1800) << false;
        QTest::newRow("empty") << QStringList() << noon << noon << false;
        QTest::newRow("never made") << one << QDateTime() << noon << false;
        QTest::newRow("past midnight") << one << QDateTime(QDate(2024, 5, 6), QTime(23, 59))
                                       << noon.addSecs(12 * 3600 + 60) << false;
    }

    void macCache()
    {
        QFETCH(QStringList, list);
        QFETCH(QDateTime, madeAt);
        QFETCH(QDateTime, now);
        QTEST(isCacheFresh(list, madeAt, now), "fresh");
    }

    void linuxFiles_data()
    {
        QTest::addColumn<QString>("parsed");
        QTest::addColumn<QString>("expected");
        const auto n = [](auto number) {
            return QString::number(number);
        };
        const QString osRelease =
            u"# c\nNAME=\"Debian\"\nPRETTY_NAME=\"Debian \\\"GNU\\\" 12\"\nbroken\nVERSION_ID=12\n"_s;
        QTest::newRow("os-release quoted")
            << osReleaseValue(osRelease, u"PRETTY_NAME"_s) << u"Debian \"GNU\" 12"_s;
        QTest::newRow("os-release bare") << osReleaseValue(osRelease, u"VERSION_ID"_s) << u"12"_s;
        QTest::newRow("os-release single, later wins")
            << osReleaseValue(u"ID=a\nID='b c'\n"_s, u"ID"_s) << u"b c"_s;
        QTest::newRow("os-release missing") << osReleaseValue(osRelease, u"ID"_s) << QString();
        QTest::newRow("os-release empty") << osReleaseValue({}, u"ID"_s) << QString();
        QTest::newRow("kernel") << kernelMajorMinor(u"6.1.0-18-amd64\n"_s) << u"6.1"_s;
        QTest::newRow("kernel malformed") << kernelMajorMinor(u"6-rc"_s) << QString();
        QTest::newRow("cpuinfo first")
            << n(cpuInfoMHz(u"processor\t: 0\ncpu MHz\t\t: 2445.432\ncpu MHz\t\t: 1200.000\n"_s))
            << u"2445.43"_s;
        QTest::newRow("cpuinfo malformed") << n(cpuInfoMHz(u"cpu MHz : fast\n"_s)) << u"0"_s;
        QTest::newRow("cpuinfo missing") << n(cpuInfoMHz(u"processor : 0\n"_s)) << u"0"_s;
        QTest::newRow("max freq") << n(maxFrequencyMHz(u"3600000\n"_s)) << u"3600"_s;
        QTest::newRow("max freq malformed") << n(maxFrequencyMHz(u"n/a"_s)) << u"0"_s;
        QTest::newRow("meminfo") << n(
            memTotalBytes(u"MemTotal:       16315412 kB\nMemFree: 1 kB\n"_s))
                                 << u"16706981888"_s;
        QTest::newRow("meminfo missing") << n(memTotalBytes(u"MemFree: 1 kB"_s)) << u"0"_s;
        QTest::newRow("meminfo malformed") << n(memTotalBytes(u"MemTotal: lots"_s)) << u"0"_s;
        QTest::newRow("block size") << n(hexBytes(u"8000000\n"_s)) << u"134217728"_s;
        QTest::newRow("block size malformed") << n(hexBytes(u"0x"_s)) << u"0"_s;
        QTest::newRow("address") << macAddressText(u"02:fc:00:0a:bc:01\n"_s)
                                 << u"02-FC-00-0A-BC-01"_s;
        QTest::newRow("address empty") << macAddressText({}) << QString();
        QTest::newRow("address malformed") << macAddressText(u"02:fc:0:0a:bc:01"_s) << QString();
        // Known names decide: s390x and sparcv9 carry no "64".
        for (const auto& [name, width] : {std::pair{"x86_64", "64"},
                                          {"arm64", "64"},
                                          {"s390x", "64"},
                                          {"sparcv9", "64"},
                                          {"power64le", "64"},
                                          {"i386", "32"},
                                          {"arm", "32"},
                                          {"s390", "32"}})
            QTest::addRow("width of %s", name)
                << (architectureIs64Bit(QString::fromLatin1(name)) ? u"64"_s : u"32"_s)
                << QString::fromLatin1(width);
    }

    void linuxFiles()
    {
        QFETCH(QString, parsed);
        QTEST(parsed, "expected");
    }

    void sysfsTrees()
    {
        const QString memory = m_environment.path(u"memory"_s);
        QCOMPARE(SystemProfilePlatform::onlineMemoryBytes(memory), quint64(0));
        QVERIFY(putFile(memory + u"/block_size_bytes"_s, "8000000\n"));
        for (const auto& [block, online] : {std::pair{"memory0", "1\n"},
                                            {"memory7", "0\n"},
                                            {"memory12", "1\n"},
                                            {"memoryX", "1\n"}})
            QVERIFY(putFile(memory + '/' + block + u"/online"_s, online));
        QCOMPARE(SystemProfilePlatform::onlineMemoryBytes(memory), quint64(2 * 0x8000000));

        const QString net = m_environment.path(u"net"_s);
        for (const auto& [name, address] : {std::pair{"eth0", "3c:7c:3f:11:22:33\n"},
                                            {"lo", "00:00:00:00:00:00\n"},
                                            {"eth1", "00:50:56:c0:00:08\n"},
                                            {"vbox", "0c:81:12:00:00:01\n"},
                                            {"tap", "02:00:54:55:4e:01\n"},
                                            {"odd", "garbage\n"},
                                            {"empty", ""}}) {
            QVERIFY(putFile(net + '/' + name + u"/address"_s, address));
            if (QByteArray(name) != "lo")
                QVERIFY(QFile::link(u"/sys/devices/system/cpu"_s, net + '/' + name + u"/device"_s));
        }
        QVERIFY(putFile(net + u"/veth/address"_s, "3c:7c:3f:11:22:44\n"));
        QStringList found = SystemProfilePlatform::sysfsAdapterAddresses(net);
        found.sort();
        QCOMPARE(found, QStringList({u"00-50-56-C0-00-08"_s, u"3C-7C-3F-11-22-33"_s}));
    }

    void linuxProfile()
    {
        QSharedPointer<SystemProfile> fromThreads[2];
        std::unique_ptr<QThread> threads[2];
        for (int i = 0; i < 2; ++i)
            threads[i].reset(
                QThread::create([&fromThreads, i] { fromThreads[i] = SystemProfile::instance(); }));
        for (auto& thread : threads)
            thread->start();
        for (auto& thread : threads)
            QVERIFY(thread->wait(60000));
        QVERIFY(fromThreads[0]);
        QCOMPARE(fromThreads[0], fromThreads[1]);
        QCOMPARE(SystemProfile::instance(), fromThreads[0]);

        const SystemProfile& profile = *fromThreads[0];
        QVERIFY(profile.osName().startsWith(u"Linux "_s));
        QCOMPARE(profile.cpuArchitecture(), QSysInfo::currentCpuArchitecture());
        QVERIFY(profile.cpuSpeed().endsWith(u" Ghz"_s));
        QVERIFY(profile.cpuThreads() >= 1);
        QVERIFY(profile.ramGB() >= 1);
        QCOMPARE(profile.homeFolderName(), QFileInfo(m_environment.home()).fileName());
        QProcess id;
        id.start(u"id"_s, {u"-un"_s});
        QVERIFY(id.waitForFinished());
        QCOMPARE(profile.userName(), QString::fromLocal8Bit(id.readAllStandardOutput()).trimmed());
        QCOMPARE(profile.hostName(), QSysInfo::machineHostName());

        const QStringList addresses = profile.macAddresses();
        QVERIFY(std::is_sorted(addresses.cbegin(), addresses.cend()));
        QCOMPARE(profile.macAddresses(), addresses);
    }
};

QTEST_MAIN(tst_SystemProfile)
#include "tst_systemprofile.moc"
