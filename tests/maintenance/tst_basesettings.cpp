#include "BaseSettings.h"
#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_BaseSettings : public QObject
{
    Q_OBJECT

    // Before the first QSettings, which fixes its folders for the whole process.
    TestEnvironment m_environment;
    QString iniFile() const { return m_environment.path(".config/Kelvanmoor/Corvanta.ini"); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        QCoreApplication::setOrganizationName(u"Kelvanmoor"_s);
        QCoreApplication::setApplicationName(u"Corvanta"_s);
    }

    void cleanup() { QDir(m_environment.path(u".config"_s)).removeRecursively(); }

    void keysThroughGroups_data()
    {
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<QString>("storedKey");
        QTest::newRow("no group") << QStringList() << "x";
        QTest::newRow("two groups") << QStringList{"net", "proxy"} << "net/proxy/x";
    }

    void keysThroughGroups()
    {
        QFETCH(QStringList, groups);
        QFETCH(QString, storedKey);
        {
            BaseSettings settings;
            QCOMPARE(settings.settings()->fileName(), iniFile());
            for (const QString& group : groups)
                settings.pushGroup(group);
            QVERIFY(!settings.contains(u"x"_s));
            settings.setValue(u"x"_s, 42);
            QCOMPARE(settings.value(u"x"_s, 0).toInt(), 42);
        }
        QSettings file(iniFile(), QSettings::IniFormat);
        QCOMPARE(file.allKeys(), QStringList{storedKey});
        QCOMPARE(file.value(storedKey).toInt(), 42);
    }

    void fallbacksAreOff()
    {
        // The organization-wide file of the same user scope holds the key, and plain QSettings
        // would answer from it.
        QSettings organization(m_environment.path(u".config/Kelvanmoor.ini"_s),
                               QSettings::IniFormat);
        organization.setValue(u"net/proxy/host"_s, u"org.example"_s);
        organization.sync();
        QCOMPARE(
            QSettings(QSettings::IniFormat, QSettings::UserScope, u"Kelvanmoor"_s, u"Corvanta"_s)
                .value(u"net/proxy/host"_s),
            u"org.example"_s);
        BaseSettings settings;
        settings.pushGroup(u"net"_s);
        settings.pushGroup(u"proxy"_s);
        QVERIFY(!settings.contains(u"host"_s));
        QCOMPARE(settings.value(u"host"_s, u"none"_s), u"none"_s);
    }

    void commonKeyAndRemoveGroup()
    {
        BaseSettings settings;
        QSettings& store = *settings.settings();
        for (const char* key : {"a/b/c/d", "a/b/e", "a/keep", "b/e"})
            store.setValue(QLatin1String(key), 1);
        // Removing a group takes its children and leaves the store at the top.
        settings.removeGroup(u"a/b"_s);
        QCOMPARE(store.group(), QString());
        // A common key stays outside the pushed groups.
        settings.pushGroup(u"a"_s);
        store.setValue(BaseSettings::commonKey(u"k"_s), 7);
        QStringList keys = store.allKeys();
        keys.sort();
        QCOMPARE(keys, (QStringList{"a/keep", "b/e", "common/k"}));
        settings.beginGroups();
        QCOMPARE(store.group(), u"a"_s);
        QCOMPARE(store.value(u"keep"_s).toInt(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_BaseSettings)
#include "tst_basesettings.moc"
