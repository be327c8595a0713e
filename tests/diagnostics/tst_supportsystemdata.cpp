#include "FileSystemListing.h"
#include "SupportSystemData.h"
#include "TestEnvironment.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString listing = u"\r\n\r\nDeviceID     : C:\r\nSize         : 238.5 GB\r\n\r\n"_s;

} // namespace

class tst_SupportSystemData : public QObject
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
        QTest::newRow("all well, ends with the listing") << 16.0 << listing << none << true << ""
                                                         << ""
                                                         << "16 GB"
                                                         << ""
                                                         << "OK" + listing;
        QTest::newRow("exactly 1 GB") << 1.0 << listing << none << true << ""
                                      << ""
                                      << "1 GB"
                                      << ""
                                      << "OK" + listing;
        QTest::newRow("half") << 0.5 << listing << none << true << "" << lowRam << "0.5 GB"
                              << ""
                              << "OK" + listing;
        QTest::newRow("none") << 0.0 << listing << none << true << "" << lowRam << "0 GB"
                              << ""
                              << "OK" + listing;
        QTest::newRow("unknown RAM, no file systems")
            << -1.0 << "" << none << true << ""
            << "Errors:<br>1. Insufficient RAM.<br>2. Failed to find file systems.<br><br>"
            << "-1 GB"
            << ""
            << "OK";
        QTest::newRow("TLS errors numbered")
            << 8.0 << listing << QList<QSslError>{selfSigned, wrongHost} << true << ""
            << ""
            << "8 GB"
            << "SSL Errors:         <br>1. " + selfSigned.errorString() + "<br>2. "
                   + wrongHost.errorString() + "<br><br>"
            << "OK" + listing;
        QTest::newRow("probe failed, benchmark lines joined")
            << 16.0 << listing << none << false << "Write: 120.5 MB/s\nRead: 800.2 MB/s"
            << ""
            << "16 GB"
            << ""
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
        QTest::newRow("disk, same digits elsewhere")
            << u"FreeSpace    : 1073741824\r\nSize         : 256060514304\r\n"
               "VolumeName   : 256060514304\r\n"_s
            << u"FreeSpace    : 1 GB\r\nSize         : 238.5 GB\r\nVolumeName   : 238.5 GB\r\n"_s;
        QTest::newRow("digits inside a longer number")
            << u"Size : 10\r\nSerial : 2010\r\n"_s
            << u"Size : 10 bytes\r\nSerial : 2010 bytes\r\n"_s;
        QTest::newRow("no count to rewrite") << u"size : 2048\r\nZ: \\\\nas\\share\r\n"_s
                                             << u"size : 2048\r\nZ: \\\\nas\\share\r\n"_s;
    }

    void sizeTexts()
    {
        QFETCH(QString, output);
        QFETCH(QString, expected);
        QCOMPARE(withSizeTexts(output), expected);
    }

    void volumeBlocks_data()
    {
        QTest::addColumn<QList<MountedVolume>>("volumes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("none") << QList<MountedVolume>() << QString();
        QTest::newRow("network shares last")
            << QList<MountedVolume>{{u"//nas/share"_s, u"cifs"_s, u"/mnt/nas"_s, 4096, 1024},
                                    {u"/dev/sda2"_s, u"ext4"_s, u"/"_s, 2048, 10},
                                    {u"/dev/sdb1"_s, u"xfs"_s, u"/data"_s, 0, 0}}
            << u"\n\nDeviceID   : /dev/sda2\nFileSystem : ext4\nMountPoint : /\n"
               "Size       : 2048\nFreeSpace  : 10\n"
               "\nDeviceID   : /dev/sdb1\nFileSystem : xfs\nMountPoint : /data\n"
               "Size       : 0\nFreeSpace  : 0\n"
               "\nDeviceID   : //nas/share\nFileSystem : cifs\nMountPoint : /mnt/nas\n"
               "Size       : 4096\nFreeSpace  : 1024\n\n"_s;
    }

    void volumeBlocks()
    {
        QFETCH(QList<MountedVolume>, volumes);
        QFETCH(QString, expected);
        QCOMPARE(volumeListing(volumes), expected);
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
};

QTEST_MAIN(tst_SupportSystemData)
#include "tst_supportsystemdata.moc"
