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
    "AdapterType=Wireless\r\nDescription=Wi-Fi\r\nMACAddress=AC-12-03-04-05-06\r\n"_s;

bool putExecutable(const QString& path, const QByteArray& script)
{
    return putFile(path, script)
           && QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

class tst_SystemProfile : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;
    QByteArray m_path = qgetenv("PATH");

    // A wmic that records its arguments and runs and prints the file named by WMIC_OUTPUT.
    QString fakeWmicFolder() const { return m_environment.path(u"bin"_s); }
    QByteArray recorded(const QString& name) const
    {
        return fileBytes(fakeWmicFolder() + '/' + name);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        QVERIFY(putExecutable(
            fakeWmicFolder() + u"/wmic"_s,
            "#!/bin/sh\nd=$(dirname \"$0\")\nprintf '%s\\n' \"$@\" > \"$d/arguments\"\n"
            "echo run >> \"$d/runs\"\ncat \"$WMIC_OUTPUT\"\n"));
        qputenv("PATH", fakeWmicFolder().toUtf8() + ':' + m_path);
    }

    void versionName_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("expected");
        QTest::newRow("8.1") << 1 << u"6.3"_s << u"8.1"_s;
        QTest::newRow("Vista") << 1 << u"6.0"_s << u"Vista"_s;
        QTest::newRow("XP") << 1 << u"5.1"_s << u"XP"_s;
        QTest::newRow("2003") << 1 << u"5.2"_s << u"2003"_s;
        QTest::newRow("unknown minor") << 1 << u"6.4"_s << u"?"_s;
        QTest::newRow("unknown major") << 1 << u"4.0"_s << u"?"_s;
        QTest::newRow("major alone") << 1 << u"6"_s << u"6"_s;
        QTest::newRow("11") << 1 << u"11"_s << u"11"_s;
        QTest::newRow("10 with minor") << 1 << u"10.0"_s << u"10"_s;
        QTest::newRow("Sonoma") << 2 << u"14.2"_s << u"Sonoma"_s;
        QTest::newRow("Cheetah") << 2 << u"10.0"_s << u"Cheetah"_s;
        QTest::newRow("Catalina") << 2 << u"10.15"_s << u"Catalina"_s;
        QTest::newRow("mac 10 alone") << 2 << u"10"_s << u"?"_s;
        QTest::newRow("mac 10.16") << 2 << u"10.16"_s << u"?"_s;
        QTest::newRow("other kind") << 3 << u"10"_s << u"?"_s;
    }

    void versionName()
    {
        QFETCH(int, kind);
        QFETCH(QString, version);
        QFETCH(QString, expected);
        QCOMPARE(SystemProfile::versionName(kind, version), expected);
    }

    void windowsAnswers_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("width");
        QTest::addColumn<bool>("is64");
        QTest::newRow("11, 64 bits")
            << u"Caption=Microsoft Windows 11 Pro"_s << u"11"_s << u"AddressWidth=64"_s << true;
        QTest::newRow("no number, 32 bits")
            << u"Caption=Microsoft Windows Server"_s << u"7"_s << u"AddressWidth=32"_s << false;
        QTest::newRow("nothing") << QString() << u"7"_s << QString() << false;
        QTest::newRow("wrong case")
            << u"caption=Microsoft Windows 10"_s << u"7"_s << u"addresswidth=64 x"_s << false;
    }

    void windowsAnswers()
    {
        QFETCH(QString, caption);
        QFETCH(QString, name);
        QFETCH(QString, width);
        QFETCH(bool, is64);
        // The running system (6.1 here) stands in when the caption has no release number.
        QCOMPARE(SystemProfile::versionName(1, windowsVersion(caption, 6, 1)), name);
        QCOMPARE(addressWidthIs64(width), is64);
    }

    void memory_data()
    {
        QTest::addColumn<QString>("chips");
        QTest::addColumn<quint64>("totalBytes");
        QTest::addColumn<double>("expected");
        QTest::newRow("two modules")
            << u"Capacity=8589934592 Capacity=8589934592"_s << quint64(0) << 16.0;
        QTest::newRow("chips win over total") << u"Capacity=4294967296"_s << 64 * GiB << 4.0;
        QTest::newRow("odd parts ignored")
            << u"Capacity=4294967296 Capacity x=1=2 Capacity=junk"_s << quint64(0) << 4.0;
        QTest::newRow("7.95 up") << QString() << quint64(7.95 * GiB) + 1 << 8.0;
        QTest::newRow("7.94 down") << QString() << quint64(7.94 * GiB) << 7.0;
        QTest::newRow("15.9 truncated") << QString() << quint64(15.9 * GiB) << 15.0;
    }

    void memory()
    {
        QFETCH(QString, chips);
        QFETCH(quint64, totalBytes);
        QFETCH(double, expected);
        QCOMPARE(wholeGB(memoryGiB(chips, totalBytes)), expected);
    }

    void cpuSpeed_data()
    {
        QTest::addColumn<double>("mhz");
        QTest::addColumn<QString>("expected");
        QTest::newRow("3600") << 3600.0 << u"3.6 Ghz"_s;
        QTest::newRow("2904") << 2904.0 << u"2.9 Ghz"_s;
        QTest::newRow("2445.432") << 2445.432 << u"2.45 Ghz"_s;
        QTest::newRow("2999.6") << 2999.6 << u"3 Ghz"_s;
        QTest::newRow("absent") << 0.0 << QString();
        QTest::newRow("negative") << -100.0 << QString();
    }

    void cpuSpeed()
    {
        QFETCH(double, mhz);
        QFETCH(QString, expected);
        QCOMPARE(cpuSpeedText(mhz), expected);
    }

    void adapterScan()
    {
        // Kept: the Intel card, Hyper-V (the words are not adjacent), VMware's 00-50-56 range
        // and the lower-case type. The rest are virtual, special or not Ethernet.
        QStringList found = physicalAdapterAddresses(adapterListing);
        found.sort();
        QCOMPARE(found, QStringList({u"00-15-5D-01-02-03"_s, u"00-1C-42-00-00-08"_s,
                                     u"00-50-56-C0-00-08"_s, u"3C-7C-3F-11-22-33"_s}));
        QCOMPARE(adapterRecords(adapterListing).size(), 9);
        QCOMPARE(adapterRecords(adapterListing).at(0).description, u"Intel(R) Ethernet I219-V"_s);
        // What runWmic hands over is one line, so no record is ever found in it.
        QVERIFY(adapterRecords(adapterListing.simplified()).isEmpty());
    }

    void isVirtualMacAddress_data()
    {
        QTest::addColumn<QString>("mac");
        QTest::addColumn<bool>("expected");
        QTest::newRow("first prefix") << u"00-00-6C-01-02-03"_s << true;
        QTest::newRow("last prefix") << u"F0-5D-89-01-02-03"_s << true;
        QTest::newRow("lower case") << u"f0-5d-89-01-02-03"_s << false;
        QTest::newRow("colons") << u"00:00:6C:01:02:03"_s << false;
        QTest::newRow("VMware") << u"00-50-56-01-02-03"_s << false;
    }

    void isVirtualMacAddress()
    {
        QFETCH(QString, mac);
        QFETCH(bool, expected);
        QCOMPARE(SystemProfile::isVirtualMacAddress(mac), expected);
    }

    void runWmic()
    {
        QVERIFY(putFile(m_environment.path(u"caption"_s),
                        "\r\n\r\nCaption=Microsoft Windows 11 Pro  \r\n\r\n\r\n"));
        qputenv("WMIC_OUTPUT", m_environment.path(u"caption"_s).toUtf8());
        QCOMPARE(SystemProfile::runWmic(u" os  get caption /Format:list"_s),
                 u"Caption=Microsoft Windows 11 Pro"_s);
        QCOMPARE(recorded(u"arguments"_s), "/interactive:off\nos\nget\ncaption\n/Format:list\n");

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
        QFETCH(bool, fresh);
        QCOMPARE(isCacheFresh(list, madeAt, now), fresh);
    }

    void linuxFiles_data()
    {
        QTest::addColumn<QString>("parsed");
        QTest::addColumn<QString>("expected");
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
        QTest::newRow("cpuinfo first") << QString::number(
            cpuInfoMHz(u"processor\t: 0\ncpu MHz\t\t: 2445.432\ncpu MHz\t\t: 1200.000\n"_s))
                                       << u"2445.43"_s;
        QTest::newRow("cpuinfo malformed")
            << QString::number(cpuInfoMHz(u"cpu MHz : fast\n"_s)) << u"0"_s;
        QTest::newRow("cpuinfo missing")
            << QString::number(cpuInfoMHz(u"processor : 0\n"_s)) << u"0"_s;
        QTest::newRow("max freq") << QString::number(maxFrequencyMHz(u"3600000\n"_s)) << u"3600"_s;
        QTest::newRow("max freq malformed") << QString::number(maxFrequencyMHz(u"n/a"_s)) << u"0"_s;
        QTest::newRow("meminfo") << QString::number(
            memTotalBytes(u"MemTotal:       16315412 kB\nMemFree: 1 kB\n"_s))
                                 << u"16706981888"_s;
        QTest::newRow("meminfo missing")
            << QString::number(memTotalBytes(u"MemFree: 1 kB"_s)) << u"0"_s;
        QTest::newRow("meminfo malformed")
            << QString::number(memTotalBytes(u"MemTotal: lots"_s)) << u"0"_s;
        QTest::newRow("block size") << QString::number(hexBytes(u"8000000\n"_s)) << u"134217728"_s;
        QTest::newRow("block size malformed") << QString::number(hexBytes(u"0x"_s)) << u"0"_s;
        QTest::newRow("address") << macAddressText(u"02:fc:00:0a:bc:01\n"_s)
                                 << u"02-FC-00-0A-BC-01"_s;
        QTest::newRow("address empty") << macAddressText({}) << QString();
        QTest::newRow("address malformed") << macAddressText(u"02:fc:0:0a:bc:01"_s) << QString();
    }

    void linuxFiles()
    {
        QFETCH(QString, parsed);
        QFETCH(QString, expected);
        QCOMPARE(parsed, expected);
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
        QThread* threads[2];
        for (int i = 0; i < 2; ++i)
            threads[i] =
                QThread::create([&fromThreads, i] { fromThreads[i] = SystemProfile::instance(); });
        for (QThread* thread : threads)
            thread->start();
        for (QThread* thread : threads) {
            QVERIFY(thread->wait(60000));
            delete thread;
        }
        QVERIFY(fromThreads[0]);
        QCOMPARE(fromThreads[0], fromThreads[1]);
        QCOMPARE(SystemProfile::instance(), fromThreads[0]);

        const SystemProfile& profile = *fromThreads[0];
        QVERIFY(profile.osName().startsWith(u"Linux "_s));
        QVERIFY(!profile.osVersion().isEmpty());
        QCOMPARE(profile.cpuArchitecture(), QSysInfo::currentCpuArchitecture());
        QVERIFY(profile.cpuSpeed().endsWith(u" Ghz"_s));
        QVERIFY(profile.cpuCount() >= 1);
        QCOMPARE(profile.cpuThreads(), profile.cpuCount());
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
