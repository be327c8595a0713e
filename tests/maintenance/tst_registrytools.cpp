#include "BaseSettings.h"
#include "RegistryTools.h"
#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QScopeGuard>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Two globs for the product's type, one for another program's, one for another product's.
const QByteArray mimePackage =
    "<?xml version=\"1.0\"?>\n<mime-info "
    "xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
    "<mime-type type=\"application/x-corvanta-design\"><glob pattern=\"*.cvd\"/>"
    "<glob pattern=\"*.cvdx\"/></mime-type>\n"
    "<mime-type type=\"application/x-corvanta-other\"><glob pattern=\"*.cvo\"/></mime-type>\n"
    "<mime-type type=\"application/x-corvanta-view\"><glob pattern=\"*.cvv\"/></mime-type>\n"
    "</mime-info>\n";

const QByteArray userMimeapps =
    "# kept comment\r\n[Added Associations]\napplication/x-corvanta-design=Corvanta.desktop;\n\n"
    "[Default Applications]\n"
    "  application/x-corvanta-design = Corvanta.desktop;org.other.desktop;\n# another comment\n"
    "application/x-corvanta-other=other.desktop;\n"
    "application/x-corvanta-view=CorvantaViewer.desktop;";

const QString product = u"Corvanta"_s;
const QString scaleName = u"QT_AUTO_SCREEN_SCALE_FACTOR"_s;

// "name|icon|location|version" for each entry.
QStringList texts(const QList<UninstallEntry>& entries)
{
    QStringList texts;
    for (const UninstallEntry& entry : entries)
        texts << QStringList{entry.DisplayName, entry.DisplayIcon, entry.InstallLocation,
                             entry.DisplayVersion}
                     .join('|');
    return texts;
}

} // namespace

// The user's and machine's stores: settings file, mimeapps.list, desktop entries, environment.d.
class tst_RegistryTools : public QObject
{
    Q_OBJECT

    // Before the first QSettings, which fixes its folders for the whole process.
    TestEnvironment m_environment;
    QString config(const QString& name) const { return m_environment.path(".config/" + name); }
    QString data(const QString& name) const { return m_environment.path(".local/share/" + name); }
    static QStringList sorted(QStringList list) { return list.sort(), list; }
#ifdef Q_OS_WIN
    static auto key(const QString& path)
    {
        return std::make_unique<QSettings>(path, QSettings::NativeFormat);
    }
#endif

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        QCoreApplication::setOrganizationName(u"Kelvanmoor"_s);
        QCoreApplication::setApplicationName(u"Corvanta"_s);
#ifndef Q_OS_WIN
        // QMimeDatabase reads the data folders once, so they are in place before its first use.
        qputenv("XDG_DATA_DIRS", m_environment.path(u"system-data"_s).toUtf8());
        qputenv("XDG_CONFIG_DIRS", m_environment.path(u"system-config"_s).toUtf8());
        QVERIFY(putFile(data(u"mime/packages/corvanta-test.xml"_s), mimePackage));
        QCOMPARE(QProcess::execute(u"update-mime-database"_s, {data(u"mime"_s)}), 0);
#endif
    }

    void cleanup()
    {
        for (const QString folder :
             {".config", ".local/share/applications", "system-config", "system-data/applications"})
            QDir(m_environment.path(folder)).removeRecursively();
    }

    // Keys go under the pushed groups in the user's own file, common keys outside; removing a group
    // takes its children. Unlike plain QSettings, the organization-wide file is not consulted.
    void groups()
    {
        QSettings(m_environment.path(u".config/Kelvanmoor.ini"_s), QSettings::IniFormat)
            .setValue(u"net/proxy/host"_s, u"org.example"_s);
        BaseSettings settings;
        QSettings& store = *settings.settings();
        settings.setValue(u"top"_s, 1);
        store.setValue(u"net/proxy/old/key"_s, 1);
        settings.pushGroup(u"net"_s);
        settings.pushGroup(u"proxy"_s);
        QVERIFY(!settings.contains(u"host"_s));
        settings.setValue(u"x"_s, 42);
        QCOMPARE(settings.value(u"x"_s, 0).toInt(), 42);
        store.setValue(BaseSettings::commonKey(u"k"_s), 7);
        settings.removeGroup(u"net/proxy/old"_s);
        store.sync();
        QCOMPARE(sorted(QSettings(store.fileName(), QSettings::IniFormat).allKeys()),
                 (QStringList{"common/k", "net/proxy/x", "top"}));
        settings.beginGroups();
        QCOMPARE(store.group(), u"net/proxy"_s);
    }

#ifndef Q_OS_WIN
    // What the desktop answers for the product's type: GIO's default, then xdg-mime's.
    QStringList desktopDefaults()
    {
        const QString type = u"application/x-corvanta-design"_s;
        QProcess gio;
        gio.start(u"gio"_s, {u"mime"_s, type});
        QProcess xdg;
        xdg.start(u"xdg-mime"_s, {u"query"_s, u"default"_s, type});
        if (!gio.waitForFinished() || !xdg.waitForFinished())
            return {u"<not run>"_s};
        const QString line = QString::fromUtf8(gio.readAllStandardOutput()).section('\n', 0, 0);
        return {line.startsWith(u"Default"_s) ? line.section(u": "_s, 1) : QString(),
                QString::fromUtf8(xdg.readAllStandardOutput()).trimmed()};
    }

    // "Remove All Associations" as GLib reads the file: only our ids go, from both groups.
    void associations_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QStringList>("listed");
        QTest::addColumn<QByteArray>("after"); // the whole file after the removal; empty: unchanged
        // GIO's and xdg-mime's, before and after. xdg-mime reads only [Default Applications] lines
        // that begin with the type, and the first of repeats.
        QTest::addColumn<QStringList>("defaults");
        const auto row = [](const char* name, const QByteArray& text, const QStringList& listed,
                            const QByteArray& after, const QStringList& defaults) {
            QTest::newRow(name) << text << listed << after << defaults;
        };
        const QByteArray group = "[Default Applications]\n";
        const QByteArray key = "application/x-corvanta-design=";
        const QString other = u"org.other.desktop"_s;
        const QString ours = u"Corvanta.desktop"_s;
        const QStringList both{u".cvd"_s, u".cvdx"_s};
        row("both groups", userMimeapps, both,
            QByteArray(userMimeapps)
                .replace(key + "Corvanta.desktop;\n", "")
                .replace("= Corvanta.desktop;", "= "),
            {ours, {}, other, {}});
        row("another program's first", group + key + "org.other.desktop;Corvanta.desktop;\n", {},
            {}, {other, other, other, other});
        row("added only", "[Added Associations]\n" + key + "Corvanta.desktop;org.other.desktop\n",
            both, "[Added Associations]\n" + key + "org.other.desktop\n", {ours, {}, other, {}});
        const QByteArray repeated =
            group + key + "org.other.desktop\n[Added Associations]\n" + group;
        row("last of repeats", repeated + key + "Corvanta.desktop;\n", both, repeated,
            {ours, other, other, other});
        row("stray bytes", "# caf\xe9\n" + group + key + "Corvanta.desktop;\nx/y=caf\xe9\n", both,
            "# caf\xe9\n" + group + "x/y=caf\xe9\n", {ours, ours, {}, {}});
        row("byte-order mark", "\xef\xbb\xbf" + group + key + "Corvanta.desktop\n", {}, {},
            {{}, {}, {}, {}});
    }

    void associations()
    {
        QFETCH(QByteArray, text);
        QFETCH(QStringList, listed);
        QFETCH(QByteArray, after);
        QFETCH(QStringList, defaults);
        if (after.isEmpty())
            after = text;
        for (const char* id : {"Corvanta", "CorvantaViewer", "org.other"})
            QVERIFY(putFile(data(u"applications/%1.desktop"_s.arg(id)),
                            "[Desktop Entry]\nType=Application\nName=" + QByteArray(id)
                                + "\nExec=true %f\n"));
        const QString path = config(u"mimeapps.list"_s);
        QVERIFY(putFile(path, text));
        QCOMPARE(desktopDefaults(), defaults.mid(0, 2));
        QCOMPARE(sorted(productAssociations(product, false)), listed);
        QVERIFY(productAssociations(product, true).isEmpty());
        QVERIFY(!removeProductAssociation(u".cvo"_s, product, false)
                && !removeProductAssociation(u".nosuch"_s, product, false));
        QCOMPARE(fileBytes(path), text);
        for (const QString& extension : listed)
            removeProductAssociation(extension, product, false);
        QCOMPARE(fileBytes(path), after);
        QVERIFY(productAssociations(product, false).isEmpty());
        QCOMPARE(desktopDefaults(), defaults.mid(2));
    }
#endif

    // The user's and the machine's stores apart: only the product's are listed, and removed only
    // while they are the product's; on Linux the machine's first file that names a type decides.
    void machineAssociations()
    {
#ifdef Q_OS_WIN
        const auto classes = [](bool machine) {
            return key(
                u"HKEY_%1\\Software\\Classes"_s.arg(machine ? "LOCAL_MACHINE" : "CURRENT_USER"));
        };
        for (const bool machine : {false, true})
            for (const QString id : {"Corvanta.cvd", "Other.cvo", "CorvantaViewer.cvv"})
                classes(machine)->setValue('.' + id.section('.', 1) + "/.", id);
        const auto cleanUp = qScopeGuard([&] {
            for (const bool machine : {false, true})
                for (const QString extension : {".cvd", ".cvo", ".cvv"})
                    classes(machine)->remove(extension);
        });
        const QStringList ours{u".cvd"_s};
#else
        QVERIFY(putFile(config(u"mimeapps.list"_s), userMimeapps));
        QVERIFY(putFile(m_environment.path(u"system-config/mimeapps.list"_s),
                        "[Default Applications]\napplication/x-corvanta-other=other.desktop\n"));
        QVERIFY(putFile(m_environment.path(u"system-data/applications/mimeapps.list"_s),
                        "[Default Applications]\napplication/x-corvanta-design=Corvanta.desktop\n"
                        "application/x-corvanta-other=CorvantaViewer.desktop\n"
                        "application/x-corvanta-view=CorvantaViewer.desktop\n"));
        const QStringList ours{u".cvd"_s, u".cvdx"_s};
#endif
        for (const bool machine : {false, true}) {
            QCOMPARE(sorted(productAssociations(product, machine)), ours);
            QVERIFY(!removeProductAssociation(u".cvo"_s, product, machine));
        }
        QVERIFY(removeProductAssociation(u".cvd"_s, product, false));
        QVERIFY(productAssociations(product, false).isEmpty());
        QCOMPARE(sorted(productAssociations(product, true)), ours);
        // "Corvanta" is not "Corvanta Viewer".
        for (const bool machine : {false, true})
            QCOMPARE(productAssociations(u"Corvanta Viewer"_s, machine), QStringList{".cvv"});
#ifdef Q_OS_WIN
        QCOMPARE(classes(false)->value(u".cvd/."_s), QVariant());
        QCOMPARE(classes(false)->value(u".cvo/."_s), u"Other.cvo"_s);
#else
        // A file too large to be read names nothing.
        const QByteArray large(
            "[Default Applications]\napplication/x-corvanta-design=Corvanta.desktop");
        QVERIFY(putFile(config(u"mimeapps.list"_s),
                        large + "\nx/y=" + QByteArray(5 << 20, 'x') + '\n'));
        QVERIFY(productAssociations(product, false).isEmpty());
#endif
    }

    // As the menu or Windows' 32-bit Uninstall list shows them; the support tool's own entry (by
    // name or program) is not the product. On Linux "env" and assignments are skipped, and the
    // user's entry hides the machine's of the same id.
    void installedPrograms()
    {
#ifdef Q_OS_WIN // the 64-bit list is not read, by design
        const QString list =
            u"HKEY_LOCAL_MACHINE\\SOFTWARE\\%1Microsoft\\Windows\\CurrentVersion\\Uninstall"_s;
        const QString wow = list.arg("WOW6432Node\\"),
                      self = QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
        // The list, then the entry's name, icon, location and version.
        const QList<QStringList> entries{
            {wow, "Corvanta", "C:\\Corvanta\\Corvanta.exe,0", "C:\\Corvanta", "5.2.1"},
            {wow, "Corvanta Support", "C:\\Support\\Support.exe"},
            {wow, "Corvanta Helper", '"' + self + "\",0"},
            {list.arg(QString()), "Corvanta 64", "C:\\Corvanta\\Corvanta.exe"},
        };
        const QStringList names{"DisplayName", "DisplayIcon", "InstallLocation", "DisplayVersion"};
        for (const QStringList& entry : entries)
            for (qsizetype i = 1; i < entry.size(); ++i)
                key(entry[0] + "\\Corvanta test " + entry[1])->setValue(names[i - 1], entry[i]);
        const auto cleanUp = qScopeGuard([&] {
            for (const QStringList& entry : entries)
                key(entry[0])->remove("Corvanta test " + entry[1]);
        });
        const QString expected = u"Corvanta|C:\\Corvanta\\Corvanta.exe,0|C:\\Corvanta|5.2.1"_s;
#else
        QVERIFY(putFile(data(u"applications/Corvanta.desktop"_s),
                        "[Desktop Entry]\nName=Corvanta\nIcon=corvanta\n"
                        "Exec=env A=1 \"B=x y\" /opt/Corvanta/Corvanta %F\n"
                        "X-AppImage-Version=5.2.1\n[Desktop Action New]\nName=New design\n"
                        "Exec=/opt/other/new\n"));
        QVERIFY(putFile(data(u"applications/vendor/Viewer.desktop"_s),
                        "[Desktop Entry]\nName=Viewer\nExec=\"/opt/Corvanta Viewer/viewer\"\n"));
        QVERIFY(putFile(m_environment.path(u"system-data/applications/vendor-Viewer.desktop"_s),
                        "[Desktop Entry]\nName=Viewer\nExec=/opt/old/viewer\n"));
        QVERIFY(putFile(data(u"applications/Link.desktop"_s),
                        "[Desktop Entry]\nName=Link\nType=Link\nURL=https://example.org\n"));
        QVERIFY(QFile::copy(
            QStringLiteral(CORVANTA_SOURCE_DIR "/packaging/com.kelvanmoor.CorvantaSupport.desktop"),
            data(u"applications/com.kelvanmoor.CorvantaSupport.desktop"_s)));
        QVERIFY(putFile(data(u"applications/renamed.desktop"_s),
                        "[Desktop Entry]\nName=Corvanta Helper\nExec=\""
                            + QCoreApplication::applicationFilePath().toUtf8() + "\"\n"));
        // An entry without a program has no install location.
        QCOMPARE(sorted(texts(uninstallEntries())),
                 (QStringList{"Corvanta|corvanta|/opt/Corvanta|5.2.1", "Link|||",
                              "Viewer||/opt/Corvanta Viewer|"}));
        const QString expected = u"Corvanta|corvanta|/opt/Corvanta|5.2.1"_s;
#endif
        // Asked for the product's, in another case, only its entry comes.
        QCOMPARE(texts(uninstallEntries(u"CORVANTA"_s)), QStringList{expected});
    }

    // Windows: the user's Environment key, read back through QSettings. Linux: ours is replaced
    // in place (line ends kept, repeats dropped); files read in order, last wins.
    void environmentRoundTrip()
    {
#ifdef Q_OS_WIN
        const auto environment = key(u"HKEY_CURRENT_USER\\Environment"_s);
        QVERIFY(setEnvironmentVariable(scaleName, u"0"_s));
        QCOMPARE(environment->value(scaleName).toString() + environmentVariable(scaleName),
                 u"00"_s);
        QVERIFY(removeEnvironmentVariable(scaleName) && !removeEnvironmentVariable(scaleName));
        QCOMPARE(environment->value(scaleName, u"none"_s).toString()
                     + environmentVariable(scaleName),
                 u"none"_s);
#else
        const QString ours = config(u"environment.d/60-corvanta-support.conf"_s);
        const QString early = config(u"environment.d/10-early.conf"_s);
        const QByteArray others = "PATH=/opt/bin:$PATH\nQT_AUTO_SCREEN_SCALE_FACTORS=4\n";
        QVERIFY(putFile(ours, "# ours\r\nQT_AUTO_SCREEN_SCALE_FACTOR=5\r\n" + others
                                  + " QT_AUTO_SCREEN_SCALE_FACTOR = 3\n"));
        QVERIFY(putFile(early, "QT_AUTO_SCREEN_SCALE_FACTOR=1\n"));
        QCOMPARE(environmentVariable(scaleName), u"3"_s);

        QVERIFY(setEnvironmentVariable(scaleName, u"0"_s));
        QCOMPARE(fileBytes(ours), "# ours\r\nQT_AUTO_SCREEN_SCALE_FACTOR=0\r\n" + others);
        QCOMPARE(environmentVariable(scaleName), u"0"_s);

        QVERIFY(
            putFile(config(u"environment.d/90-late.conf"_s), "QT_AUTO_SCREEN_SCALE_FACTOR=2\n"));
        QCOMPARE(environmentVariable(scaleName), u"2"_s);

        QVERIFY(removeEnvironmentVariable(scaleName) && !removeEnvironmentVariable(scaleName));
        QCOMPARE(fileBytes(ours), "# ours\r\n" + others);
        QCOMPARE(fileBytes(early), QByteArray("QT_AUTO_SCREEN_SCALE_FACTOR=1\n"));
        // Left with nothing else, our file goes rather than stay empty.
        QVERIFY(putFile(ours, "QT_AUTO_SCREEN_SCALE_FACTOR=0\n\n")
                && removeEnvironmentVariable(scaleName) && !QFileInfo::exists(ours));
        // A folder in our file's place cannot be read, even by root; the later file still counts.
        QVERIFY(QDir().mkpath(ours));
        QCOMPARE(environmentVariable(scaleName), u"2"_s);
#endif
    }
};

QTEST_GUILESS_MAIN(tst_RegistryTools)
#include "tst_registrytools.moc"
