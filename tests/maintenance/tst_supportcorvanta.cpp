#include "MessageLog.h"
#include "ProductHome.h"
#include "ReportFragments.h"
#include "RunAsNobody.h"
#include "SettingsRepair.h"
#include "SupportCorvantaData.h"
#include "SupportCorvantaTab.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QStringList buttonTexts{u"Remove All Associations"_s, u"Repair Preferences"_s,
                              u"Remove Preferences"_s, u"Remove All Application Data"_s};

// The buttons' enabled states, a letter each in the order above: "arpd" when all are enabled.
QString enabledButtons(const QWidget& page)
{
    QString states;
    for (QPushButton* button : page.findChildren<QPushButton*>()) {
        if (button->isEnabled())
            states += "arpd"[buttonTexts.indexOf(button->text())];
    }
    return states;
}

QPushButton* buttonNamed(const QWidget& page, const QString& text)
{
    for (QPushButton* button : page.findChildren<QPushButton*>()) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

QStringList logged(const MessageLog& log)
{
    static const QRegularExpression pattern(
        u"^(Failed to remove|Unsupported link clicked|Failed to repair)"_s);
    return log.messages().filter(pattern);
}

} // namespace

class tst_SupportCorvanta : public QObject
{
    Q_OBJECT

    ProductHome m_home;
    QString home(const QString& relative) const { return m_home.path(relative); }

private slots:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(u"Kelvanmoor"_s);
        QVERIFY(m_home.isValid());
    }

    void init() { QVERIFY(m_home.prepare()); }

    void pageText_data()
    {
        QTest::addColumn<QString>("removed"); // removed before the load
        QTest::addColumn<QString>("expected");
        const QString data = m_home.dataFolder();
        const QString associations =
            u"File Associations (Machine):\n\nFile Associations (User):\n"_s;
        QTest::newRow("prepared") << QString()
                                  << "Application Data:   " + data
                                         + " \nTemporary Files:    " + data
                                         + "/temp \nUUID:               "
                                           "6f1c2d3e-0000-4000-8000-0123456789ab\n\n"
                                         + associations + ".cvd      \n\n";
        QTest::newRow("nothing") << ".local/share/Corvanta"
                                 << "Errors:\n1. Application Data folder not found.\n2. Temporary "
                                    "Files folder not found.\n3. UUID file not found.\n\n"
                                    "Application Data:   "
                                        + data + " - Does Not Exist \nTemporary Files:    " + data
                                        + "/temp - Does Not Exist \nUUID:               \n\n"
                                        + associations + ".cvd      \n\n";
    }

    void pageText()
    {
        QFETCH(QString, removed);
        QFETCH(QString, expected);
        QVERIFY(removed.isEmpty() || QDir(home(removed)).removeRecursively());
        SupportCorvantaData data;
        data.load();
        QCOMPARE(htmlToPlainText(*data.text()), expected);
        QVERIFY(data.text()->contains(removeLink(u"removeUserExtension.cvd"_s)));
    }

    // The viewer edition is not a version; drive C holds the program in both Program Files.
    void emptyIdentifierAndVersions()
    {
        QVERIFY(putFile(m_home.dataFolder() + u"/userUUID.txt"_s, QByteArray()));
        for (const auto& [file, name] : {std::pair{"a", "Corvanta"}, {"b", "Corvanta Viewer"}}) {
            QVERIFY(putFile(home(u"system-data/applications/%1.desktop"_s.arg(file)),
                            "[Desktop Entry]\nType=Application\nExec=/opt/" + QByteArray(file)
                                + "/run\nName=" + name + "\nX-AppImage-Version=7.1\n"));
        }
        SupportCorvantaData data([](const QString& product) {
            return SupportCorvantaData::programFilesInstallations(
                product, {u"C:/"_s}, [](const QString&) { return true; });
        });
        data.load();
        QCOMPARE(data.errors(), QStringList{u"UUID file empty."_s});
        const QString indent(20, ' ');
        const QString versions = u"\n\nVersions:"_s.leftJustified(22) + "\n" + indent
                                 + "/opt/a - 7.1\n" + indent
                                 + "C:\\Program Files (x86)\\Corvanta\\Corvanta.exe\n" + indent
                                 + "C:\\Program Files\\Corvanta\\Corvanta.exe\n\nFile";
        QVERIFY2(htmlToPlainText(*data.text()).contains(versions), qPrintable(*data.text()));
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
        QTest::newRow("cleaned") << QStringList{"C:/"} << "..\\Corvanta"
                                 << QStringList{"C:\\Corvanta.exe"};
        QTest::newRow("no drives") << QStringList() << "Corvanta" << QStringList();
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
        QTest::newRow("application data") << "deleteAppData"
                                          << ".local/share/Corvanta" << false << "";
        QTest::newRow("temporary files") << "deleteTempFiles"
                                         << ".local/share/Corvanta/temp" << false << "";
        QTest::newRow("locked") << "deleteAppData"
                                << "" << true
                                << "Failed to remove " + m_home.dataFolder() + "/locked/link";
        QTest::newRow("user extension") << "removeUserExtension.cvd"
                                        << ".config/mimeapps.list" << false << "";
        QTest::newRow("another program's extension")
            << "removeUserExtension.cvo"
            << "" << false << "Failed to remove association: .cvo";
        QTest::newRow("unsupported") << "deleteAppData2"
                                     << "" << false << "Unsupported link clicked: deleteAppData2";
    }

    // Links in the data folder lead out of it: deleting removes the links, never what they lead
    // to, and deletes for good rather than into the trash.
    void links()
    {
        QFETCH(QString, link);
        QFETCH(QString, gone);
        QFETCH(bool, locked);
        QFETCH(QString, message);
        if (locked)
            RUN_AS_NOBODY_WHEN_ROOT();
        const QString kept = home(u"outside/kept.txt"_s);
        const QString lockedFolder = m_home.dataFolder() + u"/locked"_s;
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

    void buttons_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("goneFirst");
        QTest::addColumn<QStringList>("trashed");
        QTest::addColumn<QByteArray>("preferences");
        QTest::addColumn<QByteArray>("mimeapps");
        QTest::addColumn<QString>("enabledAfter");
        const QString preferences = u".config/Kelvanmoor/Corvanta.ini"_s;
        const QByteArray gone = "<unreadable>";
        QTest::newRow("associations")
            << buttonTexts[0] << "" << QStringList() << ProductHome::preferencesText
            << ProductHome::mimeappsWithoutProduct << "rpd";
        QTest::newRow("repair") << buttonTexts[1] << "" << QStringList()
                                << ProductHome::repairedPreferences << ProductHome::mimeapps
                                << "arpd";
        QTest::newRow("preferences") << buttonTexts[2] << "" << QStringList{preferences} << gone
                                     << ProductHome::mimeapps << "ard";
        QTest::newRow("application data")
            << buttonTexts[3] << ""
            << QStringList{".local/share/Corvanta", ".cache/Corvanta", preferences} << gone
            << ProductHome::mimeappsWithoutProduct << "r";
        QTest::newRow("data folder already gone")
            << buttonTexts[3] << ".local/share/Corvanta"
            << QStringList{".cache/Corvanta", preferences} << gone
            << ProductHome::mimeappsWithoutProduct << "r";
    }

    void buttons()
    {
        QFETCH(QString, button);
        QFETCH(QString, goneFirst);
        QFETCH(QStringList, trashed);
        QFETCH(QByteArray, preferences);
        QFETCH(QByteArray, mimeapps);
        QFETCH(QString, enabledAfter);
        SupportCorvantaData data;
        data.load();
        SupportCorvantaTab page(&data);
        page.updateContent();
        QCOMPARE(enabledButtons(page), u"arpd"_s);
        QStringList tooltips;
        for (const QString& text : buttonTexts)
            tooltips << buttonNamed(page, text)->toolTip();
        QCOMPARE(
            tooltips,
            QStringList({"All Corvanta file associations will be removed.", "",
                         "All Corvanta preferences will be put into the trash bin.",
                         "All Corvanta file associations, preferences, temporary files,\ncached "
                         "lists of online plasmids, crash reports,\nand custom common features "
                         "will be put into the trash bin."}));
        QVERIFY(goneFirst.isEmpty() || QDir(home(goneFirst)).removeRecursively());
        QTest::mouseClick(buttonNamed(page, button), Qt::LeftButton);
        const QString listed = trashList();
        QCOMPARE(listed.count(home(QString())), trashed.size());
        for (const QString& path : trashed)
            QVERIFY2(listed.contains(' ' + home(path) + '\n'), qPrintable(listed));
        QCOMPARE(fileBytes(m_home.preferences()), preferences);
        QCOMPARE(fileBytes(m_home.userMimeapps()), mimeapps);
        QCOMPARE(enabledButtons(page), enabledAfter);
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
        QTest::newRow("empty") << ""
                               << "";
    }

    void repairedSettingsText()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(::repairedSettingsText(text), expected);
    }

    void failedRepairKeepsTheFile_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("missing") << "missing";
        QTest::newRow("read-only file") << "file";
        QTest::newRow("read-only folder") << "folder";
        QTest::newRow("full file system") << "full";
    }

    void failedRepairKeepsTheFile()
    {
        QFETCH(QString, how);
        QString file = m_home.preferences();
        QString locked;
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
                child.start(
                    u"unshare"_s,
                    {u"-rm"_s, u"sh"_s, u"-c"_s,
                     u"mount -t tmpfs -o size=8k tmpfs /mnt && CORVANTA_TINY_FS=/mnt exec \"$0\" \"$1\""_s,
                     QCoreApplication::applicationFilePath(),
                     u"failedRepairKeepsTheFile:full file system"_s});
                QVERIFY(child.waitForFinished(60000));
                const QString output = QString::fromUtf8(child.readAll());
                QVERIFY2(child.exitCode() == 0
                             && output.contains(
                                 u"PASS   : tst_SupportCorvanta::failedRepairKeepsTheFile(full"_s),
                         qPrintable(output));
                return;
            }
            file = tiny + u"/Corvanta.ini"_s;
            QVERIFY(putFile(file, ProductHome::preferencesText));
            QFile filler(tiny + u"/filler"_s);
            QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
            while (filler.write(QByteArray(512, 'x')) == 512) {
            }
        } else if (how != u"missing"_s) {
            RUN_AS_NOBODY_WHEN_ROOT();
            locked = how == u"file"_s ? file : QFileInfo(file).absolutePath();
            QVERIFY(QFile::setPermissions(locked, QFile::ReadOwner | QFile::ExeOwner));
        } else {
            QVERIFY(QFile::remove(file));
        }
        MessageLog log;
        QVERIFY(!repairSettingsFile(file));
        QCOMPARE(fileBytes(file),
                 how == u"missing"_s ? "<unreadable>"_ba : ProductHome::preferencesText);
        QCOMPARE(QDir(QFileInfo(file).absolutePath()).entryList(QDir::Files).filter(u"Corvanta"_s),
                 how == u"missing"_s ? QStringList() : QStringList{u"Corvanta.ini"_s});
        QCOMPARE(logged(log).size(), how == u"missing"_s ? 0 : 1);
    }
};

QTEST_MAIN(tst_SupportCorvanta)
#include "tst_supportcorvanta.moc"
