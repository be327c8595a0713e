#include "MessageLog.h"
#include "ProductHome.h"
#include "ReportFragments.h"
#include "RunAsNobody.h"
#include "SettingsRepair.h"
#include "SupportCorvantaData.h"
#include "SupportCorvantaTab.h"

#include <QDir>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QStringList logged(const MessageLog& log)
{
    static const QRegularExpression pattern(u"^(Failed to|Unsupported link clicked)"_s);
    return log.messages().filter(pattern);
}

} // namespace

class tst_SupportCorvanta : public QObject
{
    Q_OBJECT

    ProductHome m_home;
    QString home(const QString& relative) const { return m_home.path(relative); }

private slots:
    void initTestCase() { QVERIFY(m_home.isValid()); }
    void init() { QVERIFY(m_home.prepare()); }

    void pageText_data()
    {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<QStringList>("drives"); // where the program is found, in both folders
        QTest::addColumn<QString>("expected");
        const QString data = m_home.dataFolder(), indent(20, ' ');
        const QString folders = "Application Data:   " + data + " \nTemporary Files:    " + data
                                + "/temp \nUUID:               ";
        const QString associations = "File Associations (Machine):\n\nFile Associations "
                                     "(User):\n.cvd      \n\n";
        QTest::newRow("prepared") << "" << QStringList()
                                  << folders + "6f1c2d3e-0000-4000-8000-0123456789ab\n\n"
                                         + associations;
        QTest::newRow("nothing")
            << "nothing" << QStringList()
            << "Errors:\n1. Application Data folder not found.\n2. Temporary Files folder not "
               "found.\n3. UUID file not found.\n\nApplication Data:   "
                   + data + " - Does Not Exist \nTemporary Files:    " + data
                   + "/temp - Does Not Exist \nUUID:               \n\n" + associations;
        // The viewer edition is not a version of the product.
        QTest::newRow("versions") << "versions" << QStringList{"C:/"}
                                  << "Errors:\n1. UUID file empty.\n\n" + folders
                                         + "\n\nVersions:           \n" + indent + "/opt/a - 7.1\n"
                                         + indent
                                         + "C:\\Program Files (x86)\\Corvanta\\Corvanta.exe\n"
                                         + indent + "C:\\Program Files\\Corvanta\\Corvanta.exe\n\n"
                                         + associations;
    }

    void pageText()
    {
        QFETCH(QString, setup);
        QFETCH(QStringList, drives);
        QFETCH(QString, expected);
        if (setup == u"nothing"_s)
            QVERIFY(QDir(m_home.dataFolder()).removeRecursively());
        if (setup == u"versions"_s) {
            QVERIFY(putFile(m_home.dataFolder() + u"/userUUID.txt"_s, QByteArray()));
            for (const auto& [file, name] : {std::pair{"a", "Corvanta"}, {"b", "Corvanta Viewer"}})
                QVERIFY(putFile(home(u"system-data/applications/%1.desktop"_s.arg(file)),
                                "[Desktop Entry]\nExec=/opt/" + QByteArray(file)
                                    + "/run\nName=" + name + "\nX-AppImage-Version=7.1\n"));
        }
        SupportCorvantaData data([&](const QString& product) {
            return SupportCorvantaData::programFilesInstallations(
                product, drives, [](const QString&) { return true; });
        });
        data.load();
        QCOMPARE(htmlToPlainText(*data.text()), expected);
        QVERIFY(data.text()->contains(removeLink(u"removeUserExtension.cvd"_s)));
    }

    void programFilesInstallations_data()
    {
        QTest::addColumn<QStringList>("drives");
        QTest::addColumn<QString>("product");
        QTest::addColumn<QStringList>("expected"); // what is found: all but drive E
        QTest::newRow("drives") << QStringList{"C:/", "E:/", "D:/"} << "Corvanta"
                                << QStringList{"C:\\Program Files\\Corvanta\\Corvanta.exe",
                                               "C:\\Program Files (x86)\\Corvanta\\Corvanta.exe",
                                               "D:\\Program Files\\Corvanta\\Corvanta.exe",
                                               "D:\\Program Files (x86)\\Corvanta\\Corvanta.exe"};
        QTest::newRow("cleaned, once")
            << QStringList{"C:/"} << "..\\Corvanta" << QStringList{"C:\\Corvanta.exe"};
    }

    void programFilesInstallations()
    {
        QFETCH(QStringList, drives);
        QFETCH(QString, product);
        QFETCH(QStringList, expected);
        QCOMPARE(SupportCorvantaData::programFilesInstallations(
                     product, drives, [](const QString& path) { return !path.startsWith('E'); }),
                 expected);
    }

    void links_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QString>("gone");
        QTest::addColumn<bool>("locked"); // a folder of links that nobody may change
        QTest::addColumn<QString>("message");
        QTest::newRow("data") << "deleteAppData"
                              << ".local/share/Corvanta" << false << "";
        QTest::newRow("temporary files") << "deleteTempFiles"
                                         << ".local/share/Corvanta/temp" << false << "";
        QTest::newRow("locked") << "deleteAppData"
                                << "" << true
                                << "Failed to remove " + m_home.dataFolder() + "/locked/link";
        QTest::newRow("extension") << "removeUserExtension.cvd"
                                   << ".config/mimeapps.list" << false << "";
        QTest::newRow("another program's extension")
            << "removeUserExtension.cvo"
            << "" << false << "Failed to remove association: .cvo";
        QTest::newRow("unsupported") << "deleteAppData2"
                                     << "" << false << "Unsupported link clicked: deleteAppData2";
    }

    // Links in the data folder lead out of it: deleting removes the links, never what they lead
    // to or its permissions, and deletes for good rather than into the trash.
    void links()
    {
        QFETCH(QString, link);
        QFETCH(QString, gone);
        QFETCH(bool, locked);
        QFETCH(QString, message);
        if (locked)
            RUN_AS_NOBODY_WHEN_ROOT();
        const QString kept = home(u"outside/kept.txt"_s),
                      lockedFolder = home(u".local/share/Corvanta/locked"_s);
        QVERIFY(putFile(kept, "kept") && QFile::setPermissions(kept, QFile::ReadOwner));
        QVERIFY(QFile::link(home(u"outside"_s), m_home.dataFolder() + u"/temp/linked folder"_s));
        QVERIFY(QFile::link(m_home.dataFolder(), m_home.dataFolder() + u"/temp/loop"_s));
        QVERIFY(QDir().mkpath(lockedFolder) && QFile::link(kept, lockedFolder + u"/link"_s));
        const auto unlock = qScopeGuard([&] {
            QFile::setPermissions(lockedFolder,
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        });
        QVERIFY(!locked || QFile::setPermissions(lockedFolder, QFile::ReadOwner | QFile::ExeOwner));
        auto expected = treeSnapshot(home(QString()));
        SupportCorvantaData data;
        data.load();
        MessageLog log;
        data.handleLink(link);
        QCOMPARE(logged(log).join('\n'), message);
        for (const QString& path : expected.keys()) {
            if (!gone.isEmpty() && (path + '/').startsWith(home(gone) + '/'))
                expected.remove(path);
        }
        if (gone.endsWith(u"mimeapps.list"_s))
            expected.insert(m_home.userMimeapps(), ProductHome::mimeappsWithoutProduct);
        QCOMPARE(treeSnapshot(home(QString())), expected);
        QCOMPARE(QFileInfo(kept).permissions() & 0x7077, QFile::ReadOwner);
        QVERIFY(!trashList().contains(home(QString())));
    }

    // The page's other buttons are pressed in the window by the end-to-end test.
    void removeAllApplicationDataWithTheFolderGone()
    {
        SupportCorvantaData data;
        data.load();
        SupportCorvantaTab page(&data);
        page.updateContent();
        QStringList tooltips;
        QPushButton* removeAll = nullptr;
        for (QPushButton* button : page.findChildren<QPushButton*>()) {
            tooltips << button->toolTip();
            if (button->text() == u"Remove All Application Data"_s)
                removeAll = button;
        }
        QCOMPARE(tooltips, QStringList({"All Corvanta file associations will be removed.", "",
                                        "All Corvanta preferences will be put into the trash bin.",
                                        "All Corvanta file associations, preferences, temporary "
                                        "files,\ncached lists of online plasmids, crash "
                                        "reports,\nand custom common features will be put into "
                                        "the trash bin."}));
        QVERIFY(QDir(m_home.dataFolder()).removeRecursively());
        QTest::mouseClick(removeAll, Qt::LeftButton);
        const QString listed = trashList();
        QCOMPARE(listed.count(home(QString())), 2);
        QVERIFY(listed.contains(' ' + m_home.preferences() + '\n'));
        QVERIFY(listed.contains(' ' + home(u".cache/Corvanta"_s) + '\n'));
        QCOMPARE(fileBytes(m_home.userMimeapps()), ProductHome::mimeappsWithoutProduct);
        QVERIFY(!removeAll->isEnabled() && !data.hasAssociations());
    }

    void repairedSettingsText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("two values") << "a=@DateTime(\\0\\x10)\nb=1\nc=@DateTime(2)\n"
                                    << "a=@DateTime()\nb=1\nc=@DateTime()\n";
        QTest::newRow("binary run")
            << QString::fromUtf8("k=@DateTime(\x01\xff\0\xfe)x"_ba) << "k=@DateTime()x";
        QTest::newRow("missing bracket") << "a=@DateTime(1)\nb=@DateTime(2\nc=3"
                                         << "a=@DateTime()\nb=@DateTime(2\nc=3";
        QTest::newRow("bracket on a later line") << "a=@DateTime(1\nb=2)\n"
                                                 << "a=@DateTime()\n";
        QTest::newRow("at position 0") << "=@DateTime(1)\nb=@DateTime(2)"
                                       << "=@DateTime(1)\nb=@DateTime(2)";
        QTest::newRow("other case") << "a=@datetime(1)"
                                    << "a=@datetime(1)";
    }

    void repairedSettingsText()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(::repairedSettingsText(text), expected);
    }

    void repairSettingsFile_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("repaired") << "repaired";
        QTest::newRow("missing") << "missing";
        QTest::newRow("read-only file") << "file";
        QTest::newRow("read-only folder") << "folder";
        QTest::newRow("full file system") << "full";
    }

    // A failed write never leaves a shortened or empty file behind.
    void repairSettingsFile()
    {
        QFETCH(QString, how);
        QString file = m_home.preferences(), locked;
        const auto unlock = qScopeGuard([&] {
            if (!locked.isEmpty())
                QFile::setPermissions(locked,
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        });
        if (how == u"full"_s) {
            // Again in a private mount namespace, where a file system of 8 KiB is about to fill.
            const QString tiny = qEnvironmentVariable("CORVANTA_TINY_FS");
            if (tiny.isEmpty()) {
                QProcess child;
                child.setProcessChannelMode(QProcess::MergedChannels);
                child.start(u"unshare"_s, {u"-rm"_s, u"sh"_s, u"-c"_s,
                                           u"mount -t tmpfs -o size=8k tmpfs /mnt && "
                                           "CORVANTA_TINY_FS=/mnt exec \"$0\" \"$1\""_s,
                                           QCoreApplication::applicationFilePath(),
                                           u"repairSettingsFile:full file system"_s});
                QVERIFY(child.waitForFinished(60000));
                const QString output = QString::fromUtf8(child.readAll());
                QVERIFY2(child.exitCode() == 0
                             && output.contains(
                                 u"PASS   : tst_SupportCorvanta::repairSettingsFile(full"_s),
                         qPrintable(output));
                return;
            }
            QVERIFY(putFile(file = tiny + u"/Corvanta.ini"_s, ProductHome::preferencesText));
            QFile filler(tiny + u"/filler"_s);
            QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
            while (filler.write(QByteArray(512, 'x')) == 512) {
            }
        } else if (how == u"file"_s || how == u"folder"_s) {
            RUN_AS_NOBODY_WHEN_ROOT();
            locked = how == u"file"_s ? file : QFileInfo(file).absolutePath();
            QVERIFY(QFile::setPermissions(locked, QFile::ReadOwner | QFile::ExeOwner));
        } else if (how == u"missing"_s) {
            QVERIFY(QFile::remove(file));
        }
        MessageLog log;
        QCOMPARE(::repairSettingsFile(file), how == u"repaired"_s);
        const QByteArray expected = how == u"repaired"_s  ? ProductHome::repairedPreferences
                                    : how == u"missing"_s ? "<unreadable>"_ba
                                                          : ProductHome::preferencesText;
        QCOMPARE(fileBytes(file), expected);
        QCOMPARE(QDir(QFileInfo(file).absolutePath())
                     .entryList(QDir::Files)
                     .filter(u"Corvanta"_s)
                     .size(),
                 how == u"missing"_s ? 0 : 1);
        QCOMPARE(logged(log).size(), how == u"repaired"_s || how == u"missing"_s ? 0 : 1);
    }
};

QTEST_MAIN(tst_SupportCorvanta)
#include "tst_supportcorvanta.moc"
