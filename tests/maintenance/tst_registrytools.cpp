#include "RegistryTools.h"
#include "TestEnvironment.h"

#include <QDir>
#include <QMimeDatabase>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Two globs for the product's type, one for another program's.
const QByteArray mimePackage =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
    "<mime-type type=\"application/x-corvanta-design\"><comment>Corvanta design</comment>\n"
    "<glob pattern=\"*.cvd\"/><glob pattern=\"*.cvdx\"/></mime-type>\n"
    "<mime-type type=\"application/x-corvanta-other\"><comment>Other design</comment>\n"
    "<glob pattern=\"*.cvo\"/></mime-type>\n"
    "</mime-info>\n";

const QByteArray userMimeapps =
    "# kept comment\r\n"
    "[Added Associations]\n"
    "application/x-corvanta-design=Corvanta.desktop;\n"
    "\n"
    "[Default Applications]\n"
    "  application/x-corvanta-design = Corvanta.desktop;other.desktop;\n"
    "# another comment\n"
    "application/x-corvanta-other=other.desktop;\n"
    "text/plain=CorvantaViewer.desktop;\n";

QString configPath(const QString& relative)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + '/' + relative;
}

QString dataPath(const QString& relative)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + '/' + relative;
}

const QString product = u"Corvanta"_s;
const QString scaleName = u"QT_AUTO_SCREEN_SCALE_FACTOR"_s;

QString environmentFile()
{
    return configPath(u"environment.d/60-corvanta-support.conf"_s);
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

class tst_RegistryTools : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        // QMimeDatabase reads the data folders once, so they are in place before its first use.
        qputenv("XDG_DATA_DIRS", m_environment.path(u"system-data"_s).toUtf8());
        qputenv("XDG_CONFIG_DIRS", m_environment.path(u"system-config"_s).toUtf8());
        QVERIFY(putFile(dataPath(u"mime/packages/corvanta-test.xml"_s), mimePackage));
        QCOMPARE(QProcess::execute(u"update-mime-database"_s, {dataPath(u"mime"_s)}), 0);
        QCOMPARE(QMimeDatabase().mimeTypeForFile(u"a.cvdx"_s, QMimeDatabase::MatchExtension).name(),
                 u"application/x-corvanta-design"_s);
    }

    void cleanup()
    {
        QDir(configPath(QString())).removeRecursively();
        QDir(dataPath(u"applications"_s)).removeRecursively();
        QDir(m_environment.path(u"system-config"_s)).removeRecursively();
    }

    void withoutProductDefaults_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QStringList>("mimeTypes");
        QTest::addColumn<QString>("productName");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("product with a blank")
            << userMimeapps << QStringList{"text/plain"} << u"Corvanta Viewer"_s
            << QByteArray(userMimeapps).replace("text/plain=CorvantaViewer.desktop;\n", "");
        QTest::newRow("prefix is not a name prefix")
            << userMimeapps << QStringList{"text/plain"} << product << userMimeapps;
        QTest::newRow("crlf and no final line end")
            << QByteArray("[Default Applications]\r\na/b=Corvanta.desktop\r\nc/d=x.desktop")
            << QStringList{"a/b", "c/d"} << product
            << QByteArray("[Default Applications]\r\nc/d=x.desktop");
        const QByteArray notUtf8("[Default Applications]\na/b=Corvanta.desktop\n#\xfe\n");
        QTest::newRow("not UTF-8 is left alone")
            << notUtf8 << QStringList{"a/b"} << product << notUtf8;
    }

    void withoutProductDefaults()
    {
        QFETCH(QByteArray, text);
        QFETCH(QStringList, mimeTypes);
        QFETCH(QString, productName);
        QFETCH(QByteArray, expected);
        QCOMPARE(::withoutProductDefaults(text, mimeTypes, productName), expected);
    }

    void withEnvironmentValue_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("expected");
        const QString zero = u"0"_s;
        QTest::newRow("replaced in place, duplicates dropped")
            << QByteArray("A=1\r\nB=2\n A = 3\nAB=4\n") << "A" << zero
            << QByteArray("A=0\r\nB=2\nAB=4\n");
        QTest::newRow("bad name") << QByteArray("B=1\n") << "A B" << zero << QByteArray();
        QTest::newRow("value with a line end")
            << QByteArray() << "A" << u"0\nB=1"_s << QByteArray();
        QTest::newRow("enormous value")
            << QByteArray() << "A" << QString(maximumValueLength + 1, 'x') << QByteArray();
        QTest::newRow("not UTF-8") << QByteArray("B=\xff\n") << "A" << zero << QByteArray();
    }

    void withEnvironmentValue()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, name);
        QFETCH(QString, value);
        QFETCH(QByteArray, expected);
        QCOMPARE(::withEnvironmentValue(text, name, value), expected);
    }

    void associationsFollowTheMimeDatabase()
    {
        QVERIFY(putFile(configPath(u"mimeapps.list"_s), userMimeapps));
        QCOMPARE(sorted(productAssociations(product, false)), (QStringList{".cvd", ".cvdx"}));
        QVERIFY(productAssociations(product, true).isEmpty());
        // For the machine, the first file that names a type decides it.
        QVERIFY(QFile::remove(configPath(u"mimeapps.list"_s)));
        QVERIFY(putFile(m_environment.path(u"system-config/mimeapps.list"_s),
                        "[Default Applications]\napplication/x-corvanta-other=other.desktop\n"));
        QVERIFY(putFile(m_environment.path(u"system-data/applications/mimeapps.list"_s),
                        "[Default Applications]\napplication/x-corvanta-other=Corvanta.desktop\n"
                        "application/x-corvanta-design=Corvanta.desktop\n"));
        QCOMPARE(sorted(productAssociations(product, true)), (QStringList{".cvd", ".cvdx"}));
        QVERIFY(productAssociations(product, false).isEmpty());
    }

    void removalKeepsEverythingElse()
    {
        const QString path = configPath(u"mimeapps.list"_s);
        QVERIFY(putFile(path, userMimeapps));
        QVERIFY(!removeProductAssociation(u".cvo"_s, product, false));
        QVERIFY(!removeProductAssociation(u".nosuch"_s, product, false));
        QCOMPARE(fileBytes(path), userMimeapps);

        QVERIFY(removeProductAssociation(u".cvdx"_s, product, false));
        QCOMPARE(fileBytes(path),
                 QByteArray(userMimeapps)
                     .replace("  application/x-corvanta-design = Corvanta.desktop;other.desktop;\n",
                              ""));
        QVERIFY(productAssociations(product, false).isEmpty());
        QVERIFY(!removeProductAssociation(u".cvd"_s, product, false));
    }

    void installedProgramsFromDesktopEntries()
    {
        const QString shell = QStandardPaths::findExecutable(u"sh"_s);
        QVERIFY(!shell.isEmpty());
        QVERIFY(putFile(dataPath(u"applications/Corvanta.desktop"_s),
                        "[Desktop Entry]\nName=Corvanta\nIcon=corvanta\nExec=sh %F\n"
                        "X-AppImage-Version=5.2.1\n[Desktop Action New]\nName=New design\n"));
        QVERIFY(putFile(dataPath(u"applications/vendor/Viewer.desktop"_s),
                        "[Desktop Entry]\nName=Viewer\nExec=\"/opt/Corvanta Viewer/viewer\"\n"));
        QVERIFY(putFile(dataPath(u"applications/Link.desktop"_s),
                        "[Desktop Entry]\nName=Link\nType=Link\nURL=https://example.org\n"));
        QStringList found;
        for (const UninstallEntry& entry : uninstallEntries()) {
            found << QStringList{entry.DisplayName, entry.DisplayIcon, entry.InstallLocation,
                                 entry.DisplayVersion}
                         .join('|');
        }
        // Nothing is filtered out: an entry without a program has no install location.
        QCOMPARE(sorted(found),
                 (QStringList{"Corvanta|corvanta|" + QFileInfo(shell).absolutePath() + "|5.2.1",
                              "Link|||", "Viewer||/opt/Corvanta Viewer|"}));
        // Asked for the product's, in another case, only its entry comes.
        const QList<UninstallEntry> named = uninstallEntries(u"CORVANTA"_s);
        QCOMPARE(named.size(), 1);
        QCOMPARE(named.first().DisplayName, u"Corvanta"_s);
    }

    void environmentRoundTrip()
    {
        const QString early = configPath(u"environment.d/10-early.conf"_s);
        QVERIFY(putFile(environmentFile(), "# ours\nPATH=/opt/bin:$PATH\n"));
        QVERIFY(putFile(early, "QT_AUTO_SCREEN_SCALE_FACTOR=1\n"));
        QCOMPARE(environmentVariable(scaleName), u"1"_s);

        QElapsedTimer timer;
        timer.start();
        QVERIFY(setEnvironmentVariable(scaleName, u"0"_s));
        QVERIFY2(timer.elapsed() < 5000, "the user manager is asked without a long wait");
        QCOMPARE(fileBytes(environmentFile()),
                 QByteArray("# ours\nPATH=/opt/bin:$PATH\nQT_AUTO_SCREEN_SCALE_FACTOR=0\n"));
        QCOMPARE(environmentVariable(scaleName), u"0"_s);

        QVERIFY(putFile(configPath(u"environment.d/90-late.conf"_s),
                        "QT_AUTO_SCREEN_SCALE_FACTOR=2\n"));
        QCOMPARE(environmentVariable(scaleName), u"2"_s);

        QVERIFY(removeEnvironmentVariable(scaleName));
        QCOMPARE(fileBytes(environmentFile()), QByteArray("# ours\nPATH=/opt/bin:$PATH\n"));
        QVERIFY(!removeEnvironmentVariable(scaleName));
        QCOMPARE(fileBytes(early), QByteArray("QT_AUTO_SCREEN_SCALE_FACTOR=1\n"));
    }

    // The form Samba gives a Unix user: the Unix-users authority with the uid.
    void sidForm() { QCOMPARE(currentUserSid(), u"S-1-22-1-%1"_s.arg(::getuid())); }

    void badInput_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content"); // empty: a folder stands where the file should
        QTest::addColumn<QString>("expected");
        const QString mimeapps = configPath(u"mimeapps.list"_s);
        const QString desktop = dataPath(u"applications/Corvanta.desktop"_s);
        const QByteArray design =
            "[Default Applications]\napplication/x-corvanta-design=Corvanta.desktop";
        const QByteArray entry = "[Desktop Entry]\nName=Corvanta\nExec=/opt/Corvanta/Corvanta\n";
        const QByteArray named = "[Desktop Entry]\nName=Corvanta\n";
        const QByteArray huge(maximumValueLength + 1, 'x');
        const auto row = [](const char* query, const char* name, const QString& file,
                            const QByteArray& content, const char* expected = "") {
            QTest::addRow("%s: %s", query, name)
                << QString(query) << file << content << QString(expected);
        };
        // Each kind of file first as it should be, so an empty answer below means the input.
        row("associations", "good", mimeapps, design, ".cvd .cvdx");
        row("associations", "missing", QString(), QByteArray());
        row("associations", "unreadable", mimeapps, QByteArray());
        row("associations", "malformed", mimeapps,
            "[Default Applications]\napplication/x-corvanta-design\n=Corvanta.desktop");
        row("associations", "not UTF-8", mimeapps, design + "\n# \xc3\x28\n");
        row("associations", "enormous", mimeapps,
            design + "\nx/y=" + QByteArray(5 * 1024 * 1024, 'x') + '\n');
        row("programs", "good", desktop, entry, "Corvanta");
        row("programs", "without Exec", desktop, named, "Corvanta");
        row("programs", "Exec in another group", desktop, named + "[Desktop Action X]\nExec=x\n",
            "Corvanta");
        row("programs", "not UTF-8", desktop, entry + "Comment=\xff\n");
        row("programs", "enormous Exec", desktop, named + "Exec=" + huge + '\n', "Corvanta");
        row("environment", "good", environmentFile(), "QT_AUTO_SCREEN_SCALE_FACTOR=0\n", "0");
        row("environment", "malformed", environmentFile(), "QT_AUTO_SCREEN_SCALE_FACTOR\n");
        row("environment", "not UTF-8", environmentFile(), "QT_AUTO_SCREEN_SCALE_FACTOR=0\xff\n");
        row("environment", "enormous", environmentFile(),
            "QT_AUTO_SCREEN_SCALE_FACTOR=" + huge + '\n');
        row("environment", "unreadable", environmentFile(), QByteArray());
    }

    void badInput()
    {
        QFETCH(QString, query);
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        // A folder where the file should be cannot be read, not even by root.
        if (!file.isEmpty())
            QVERIFY(content.isEmpty() ? QDir().mkpath(file) : putFile(file, content));
        QStringList answer;
        if (query == QLatin1String("associations")) {
            answer = sorted(productAssociations(product, false));
        } else if (query == QLatin1String("programs")) {
            for (const UninstallEntry& program : uninstallEntries())
                answer << program.DisplayName;
        } else {
            answer << environmentVariable(scaleName);
        }
        answer.removeAll(QString());
        QCOMPARE(answer.join(' '), expected);
    }
};

QTEST_GUILESS_MAIN(tst_RegistryTools)
#include "tst_registrytools.moc"
