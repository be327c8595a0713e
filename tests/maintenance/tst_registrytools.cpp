#include "RegistryTools.h"
#include "TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QMimeDatabase>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace {

const QByteArray mimePackage =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
    "  <mime-type type=\"application/x-corvanta-design\">\n"
    "    <comment>Corvanta design</comment>\n"
    "    <glob pattern=\"*.cvd\"/>\n"
    "    <glob pattern=\"*.cvdx\"/>\n"
    "  </mime-type>\n"
    "  <mime-type type=\"application/x-corvanta-other\">\n"
    "    <comment>Design of another program</comment>\n"
    "    <glob pattern=\"*.cvo\"/>\n"
    "  </mime-type>\n"
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

bool writeFile(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

QString configPath(const QString& relative)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QLatin1Char('/') + relative;
}

QString dataPath(const QString& relative)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1Char('/')
           + relative;
}

QString environmentFile()
{
    return configPath(QStringLiteral("environment.d/60-corvanta-support.conf"));
}

} // namespace

class tst_RegistryTools : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void defaultApplications_data();
    void defaultApplications();
    void withoutProductDefaults_data();
    void withoutProductDefaults();
    void withEnvironmentValue_data();
    void withEnvironmentValue();
    void environmentValue_data();
    void environmentValue();
    void execProgram_data();
    void execProgram();

    void associationsFollowTheMimeDatabase();
    void removalKeepsEverythingElse();
    void machineAssociations();
    void installedProgramsFromDesktopEntries();
    void environmentRoundTrip();
    void badInput_data();
    void badInput();

private:
    TestEnvironment m_environment;
};

void tst_RegistryTools::initTestCase()
{
    QVERIFY(m_environment.isValid());
    // QMimeDatabase reads the data folders once, so they are in place before its first use.
    qputenv("XDG_DATA_DIRS", m_environment.path(QStringLiteral("system-data")).toUtf8());
    qputenv("XDG_CONFIG_DIRS", m_environment.path(QStringLiteral("system-config")).toUtf8());
    QVERIFY(writeFile(dataPath(QStringLiteral("mime/packages/corvanta-test.xml")), mimePackage));
    QCOMPARE(QProcess::execute(QStringLiteral("update-mime-database"),
                               {dataPath(QStringLiteral("mime"))}),
             0);
    QCOMPARE(QMimeDatabase()
                 .mimeTypeForFile(QStringLiteral("a.cvdx"), QMimeDatabase::MatchExtension)
                 .name(),
             QStringLiteral("application/x-corvanta-design"));
}

void tst_RegistryTools::cleanup()
{
    QDir(configPath(QString())).removeRecursively();
    QDir(dataPath(QStringLiteral("applications"))).removeRecursively();
    QDir(m_environment.path(QStringLiteral("system-config"))).removeRecursively();
}

void tst_RegistryTools::defaultApplications_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("first id of each type")
        << userMimeapps
        << QStringList{"application/x-corvanta-design=Corvanta.desktop",
                       "application/x-corvanta-other=other.desktop",
                       "text/plain=CorvantaViewer.desktop"};
    QTest::newRow("other groups ignored")
        << QByteArray("[Added Associations]\na/b=x.desktop\n[Default Applications]\nc/d=y.desktop")
        << QStringList{"c/d=y.desktop"};
    QTest::newRow("first definition wins")
        << QByteArray("[Default Applications]\na/b=x.desktop\na/b=y.desktop\n")
        << QStringList{"a/b=x.desktop"};
    QTest::newRow("malformed lines skipped")
        << QByteArray("[Default Applications\na/b=x.desktop\n[Default Applications]\nc/d\n=e\n"
                      "f/g=;\nh/i=z.desktop\n")
        << QStringList{"h/i=z.desktop"};
    QTest::newRow("not UTF-8") << QByteArray("[Default Applications]\na/b=x\xff.desktop\n")
                               << QStringList();
}

void tst_RegistryTools::defaultApplications()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, expected);
    QStringList actual;
    const QMap<QString, QString> defaults = ::defaultApplications(text);
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it)
        actual << it.key() + QLatin1Char('=') + it.value();
    QCOMPARE(actual, expected);
}

void tst_RegistryTools::withoutProductDefaults_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("mimeTypes");
    QTest::addColumn<QString>("product");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("only the default line goes")
        << userMimeapps << QStringList{"application/x-corvanta-design"} << "Corvanta"
        << QByteArray("# kept comment\r\n"
                      "[Added Associations]\n"
                      "application/x-corvanta-design=Corvanta.desktop;\n"
                      "\n"
                      "[Default Applications]\n"
                      "# another comment\n"
                      "application/x-corvanta-other=other.desktop;\n"
                      "text/plain=CorvantaViewer.desktop;\n");
    QTest::newRow("another program's default stays")
        << userMimeapps << QStringList{"application/x-corvanta-other"} << "Corvanta"
        << userMimeapps;
    QTest::newRow("product with a blank")
        << userMimeapps << QStringList{"text/plain"} << "Corvanta Viewer"
        << QByteArray(userMimeapps).replace("text/plain=CorvantaViewer.desktop;\n", "");
    QTest::newRow("prefix is not a name prefix")
        << userMimeapps << QStringList{"text/plain"} << "Corvanta" << userMimeapps;
    QTest::newRow("crlf and no final line end")
        << QByteArray("[Default Applications]\r\na/b=Corvanta.desktop\r\nc/d=x.desktop")
        << QStringList{"a/b", "c/d"} << "Corvanta"
        << QByteArray("[Default Applications]\r\nc/d=x.desktop");
    const QByteArray notUtf8("[Default Applications]\na/b=Corvanta.desktop\n#\xfe\n");
    QTest::newRow("not UTF-8 is left alone")
        << notUtf8 << QStringList{"a/b"} << "Corvanta" << notUtf8;
}

void tst_RegistryTools::withoutProductDefaults()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, mimeTypes);
    QFETCH(QString, product);
    QFETCH(QByteArray, expected);
    QCOMPARE(::withoutProductDefaults(text, mimeTypes, product), expected);
}

void tst_RegistryTools::withEnvironmentValue_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("empty file") << QByteArray() << "A"
                                << "0" << QByteArray("A=0\n");
    QTest::newRow("appended after other lines") << QByteArray("# mine\nB=1") << "A"
                                                << "0" << QByteArray("# mine\nB=1\nA=0\n");
    QTest::newRow("replaced in place, duplicates dropped")
        << QByteArray("A=1\r\nB=2\n A = 3\nAB=4\n") << "A"
        << "0" << QByteArray("A=0\r\nB=2\nAB=4\n");
    QTest::newRow("bad name") << QByteArray("B=1\n") << "A B"
                              << "0" << QByteArray();
    QTest::newRow("value with a line end") << QByteArray() << "A"
                                           << "0\nB=1" << QByteArray();
    QTest::newRow("enormous value")
        << QByteArray() << "A" << QString(maximumValueLength + 1, 'x') << QByteArray();
    QTest::newRow("not UTF-8") << QByteArray("B=\xff\n") << "A"
                               << "0" << QByteArray();
}

void tst_RegistryTools::withEnvironmentValue()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QByteArray, expected);
    QCOMPARE(::withEnvironmentValue(text, name, value), expected);
}

void tst_RegistryTools::environmentValue_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("last wins") << QByteArray("A=1\nA=2\n") << "2";
    QTest::newRow("quotes and blanks") << QByteArray("  A = \"x y\"  \n") << "x y";
    QTest::newRow("comment") << QByteArray("#A=1\n") << "";
    QTest::newRow("longer name") << QByteArray("AB=1\n") << "";
    QTest::newRow("malformed") << QByteArray("A\n=1\n") << "";
    QTest::newRow("enormous value ignored")
        << QByteArray("A=1\nA=" + QByteArray(maximumValueLength + 1, 'x') + '\n') << "1";
}

void tst_RegistryTools::environmentValue()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    QCOMPARE(::environmentValue(text, QStringLiteral("A")), expected);
}

void tst_RegistryTools::execProgram_data()
{
    QTest::addColumn<QString>("exec");
    QTest::addColumn<QString>("expected");

    QTest::newRow("arguments") << "corvanta %F --new"
                               << "corvanta";
    QTest::newRow("quoted path") << "\"/opt/My Apps/corvanta\" %U"
                                 << "/opt/My Apps/corvanta";
    QTest::newRow("unclosed quote") << "\"/opt/corvanta %U"
                                    << "";
    QTest::newRow("empty") << ""
                           << "";
}

void tst_RegistryTools::execProgram()
{
    QFETCH(QString, exec);
    QFETCH(QString, expected);
    QCOMPARE(::execProgram(exec), expected);
}

void tst_RegistryTools::associationsFollowTheMimeDatabase()
{
    QVERIFY(writeFile(configPath(QStringLiteral("mimeapps.list")), userMimeapps));
    QStringList extensions = productAssociations(QStringLiteral("Corvanta"), false);
    extensions.sort();
    QCOMPARE(extensions, (QStringList{".cvd", ".cvdx"}));
    QVERIFY(productAssociations(QStringLiteral("Corvanta"), true).isEmpty());
}

void tst_RegistryTools::removalKeepsEverythingElse()
{
    const QString path = configPath(QStringLiteral("mimeapps.list"));
    QVERIFY(writeFile(path, userMimeapps));

    QVERIFY(!removeProductAssociation(QStringLiteral(".cvo"), QStringLiteral("Corvanta"), false));
    QVERIFY(
        !removeProductAssociation(QStringLiteral(".nosuch"), QStringLiteral("Corvanta"), false));
    QCOMPARE(readFile(path), userMimeapps);

    QVERIFY(removeProductAssociation(QStringLiteral(".cvdx"), QStringLiteral("Corvanta"), false));
    QCOMPARE(
        readFile(path),
        QByteArray(userMimeapps)
            .replace("  application/x-corvanta-design = Corvanta.desktop;other.desktop;\n", ""));
    QVERIFY(productAssociations(QStringLiteral("Corvanta"), false).isEmpty());
    QVERIFY(!removeProductAssociation(QStringLiteral(".cvd"), QStringLiteral("Corvanta"), false));
}

void tst_RegistryTools::machineAssociations()
{
    // The first machine file that names a type decides it.
    QVERIFY(writeFile(m_environment.path(QStringLiteral("system-config/mimeapps.list")),
                      "[Default Applications]\napplication/x-corvanta-other=other.desktop\n"));
    QVERIFY(writeFile(m_environment.path(QStringLiteral("system-data/applications/mimeapps.list")),
                      "[Default Applications]\napplication/x-corvanta-other=Corvanta.desktop\n"
                      "application/x-corvanta-design=Corvanta.desktop\n"));
    QStringList extensions = productAssociations(QStringLiteral("Corvanta"), true);
    extensions.sort();
    QCOMPARE(extensions, (QStringList{".cvd", ".cvdx"}));
    QVERIFY(productAssociations(QStringLiteral("Corvanta"), false).isEmpty());
}

void tst_RegistryTools::installedProgramsFromDesktopEntries()
{
    const QString shell = QStandardPaths::findExecutable(QStringLiteral("sh"));
    QVERIFY(!shell.isEmpty());
    QVERIFY(writeFile(dataPath(QStringLiteral("applications/Corvanta.desktop")),
                      "[Desktop Entry]\nName=Corvanta\nIcon=corvanta\nExec=sh %F\n"
                      "X-AppImage-Version=5.2.1\n[Desktop Action New]\nName=New design\n"));
    QVERIFY(writeFile(dataPath(QStringLiteral("applications/vendor/Viewer.desktop")),
                      "[Desktop Entry]\nName=Viewer\nExec=\"/opt/Corvanta Viewer/viewer\"\n"));
    QVERIFY(writeFile(dataPath(QStringLiteral("applications/Link.desktop")),
                      "[Desktop Entry]\nName=Link\nType=Link\nURL=https://example.org\n"));

    QStringList found;
    for (const UninstallEntry& entry : uninstallEntries()) {
        found << QStringList{entry.DisplayName, entry.DisplayIcon, entry.InstallLocation,
                             entry.DisplayVersion}
                     .join(QLatin1Char('|'));
    }
    found.sort();
    QCOMPARE(found, (QStringList{"Corvanta|corvanta|" + QFileInfo(shell).absolutePath() + "|5.2.1",
                                 "Viewer||/opt/Corvanta Viewer|"}));
}

void tst_RegistryTools::environmentRoundTrip()
{
    const QString name = QStringLiteral("QT_AUTO_SCREEN_SCALE_FACTOR");
    QVERIFY(writeFile(environmentFile(), "# ours\nPATH=/opt/bin:$PATH\n"));
    QVERIFY(writeFile(configPath(QStringLiteral("environment.d/10-early.conf")),
                      "QT_AUTO_SCREEN_SCALE_FACTOR=1\n"));
    QCOMPARE(environmentVariable(name), QStringLiteral("1"));

    QElapsedTimer timer;
    timer.start();
    QVERIFY(setEnvironmentVariable(name, QStringLiteral("0")));
    QVERIFY2(timer.elapsed() < 5000, "the user manager is asked without a long wait");
    QCOMPARE(readFile(environmentFile()),
             QByteArray("# ours\nPATH=/opt/bin:$PATH\nQT_AUTO_SCREEN_SCALE_FACTOR=0\n"));
    QCOMPARE(environmentVariable(name), QStringLiteral("0"));

    QVERIFY(writeFile(configPath(QStringLiteral("environment.d/90-late.conf")),
                      "QT_AUTO_SCREEN_SCALE_FACTOR=2\n"));
    QCOMPARE(environmentVariable(name), QStringLiteral("2"));

    QVERIFY(removeEnvironmentVariable(name));
    QCOMPARE(readFile(environmentFile()), QByteArray("# ours\nPATH=/opt/bin:$PATH\n"));
    QVERIFY(!removeEnvironmentVariable(name));
    QCOMPARE(readFile(configPath(QStringLiteral("environment.d/10-early.conf"))),
             QByteArray("QT_AUTO_SCREEN_SCALE_FACTOR=1\n"));
}

void tst_RegistryTools::badInput_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected");

    const QString mimeapps = configPath(QStringLiteral("mimeapps.list"));
    const QString desktop = dataPath(QStringLiteral("applications/Corvanta.desktop"));
    const QString environment = environmentFile();
    const QByteArray design =
        "[Default Applications]\napplication/x-corvanta-design=Corvanta.desktop";
    const QByteArray entry = "[Desktop Entry]\nName=Corvanta\nExec=/opt/Corvanta/Corvanta\n";
    const QByteArray huge(maximumValueLength + 1, 'x');

    // Each kind of file first as it should be, so an empty answer below means the input.
    QTest::newRow("associations: good") << "associations" << mimeapps << design << ".cvd .cvdx";
    QTest::newRow("associations: missing") << "associations" << QString() << QByteArray() << "";
    QTest::newRow("associations: unreadable") << "associations" << mimeapps << QByteArray() << "";
    QTest::newRow("associations: malformed")
        << "associations" << mimeapps
        << QByteArray("[Default Applications]\napplication/x-corvanta-design\n=Corvanta.desktop")
        << "";
    QTest::newRow("associations: not UTF-8")
        << "associations" << mimeapps << design + "\n# \xc3\x28\n"
        << "";
    QTest::newRow("associations: enormous")
        << "associations" << mimeapps << design + "\nx/y=" + QByteArray(5 * 1024 * 1024, 'x') + '\n'
        << "";
    QTest::newRow("programs: good") << "programs" << desktop << entry << "Corvanta";
    QTest::newRow("programs: without Exec")
        << "programs" << desktop << QByteArray("[Desktop Entry]\nName=Corvanta\n") << "";
    QTest::newRow("programs: Exec in another group")
        << "programs" << desktop
        << QByteArray("[Desktop Entry]\nName=Corvanta\n[Desktop Action X]\nExec=x\n") << "";
    QTest::newRow("programs: not UTF-8") << "programs" << desktop << entry + "Comment=\xff\n"
                                         << "";
    QTest::newRow("programs: enormous Exec")
        << "programs" << desktop << "[Desktop Entry]\nName=Corvanta\nExec=" + huge + '\n'
        << "";
    QTest::newRow("environment: good")
        << "environment" << environment << QByteArray("QT_AUTO_SCREEN_SCALE_FACTOR=0\n") << "0";
    QTest::newRow("environment: malformed")
        << "environment" << environment << QByteArray("QT_AUTO_SCREEN_SCALE_FACTOR\n") << "";
    QTest::newRow("environment: not UTF-8")
        << "environment" << environment << QByteArray("QT_AUTO_SCREEN_SCALE_FACTOR=0\xff\n") << "";
    QTest::newRow("environment: enormous")
        << "environment" << environment << "QT_AUTO_SCREEN_SCALE_FACTOR=" + huge + '\n'
        << "";
    QTest::newRow("environment: unreadable") << "environment" << environment << QByteArray() << "";
}

void tst_RegistryTools::badInput()
{
    QFETCH(QString, query);
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);

    // A folder where the file should be cannot be read, not even by root.
    if (!file.isEmpty()) {
        QVERIFY(content.isEmpty() ? QDir().mkpath(file) : writeFile(file, content));
    }

    QStringList answer;
    if (query == QLatin1String("associations")) {
        answer = productAssociations(QStringLiteral("Corvanta"), false);
        answer.sort();
    } else if (query == QLatin1String("programs")) {
        for (const UninstallEntry& program : uninstallEntries())
            answer << program.DisplayName;
    } else {
        answer << environmentVariable(QStringLiteral("QT_AUTO_SCREEN_SCALE_FACTOR"));
    }
    answer.removeAll(QString());
    QCOMPARE(answer.join(QLatin1Char(' ')), expected);
}

QTEST_GUILESS_MAIN(tst_RegistryTools)
#include "tst_registrytools.moc"
