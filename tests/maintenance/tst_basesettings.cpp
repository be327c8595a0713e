#include "BaseSettings.h"
#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTest>

class tst_BaseSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void opensTheUsersIniFile();
    void keysThroughGroups_data();
    void keysThroughGroups();
    void fallbacksAreOff();
    void commonKeyIgnoresGroups();
    void removeGroupTakesChildren();

private:
    // Before the first QSettings, which fixes its folders for the whole process.
    TestEnvironment m_environment;
};

void tst_BaseSettings::initTestCase()
{
    QVERIFY(m_environment.isValid());
    QCoreApplication::setOrganizationName(QStringLiteral("Kelvanmoor"));
    QCoreApplication::setApplicationName(QStringLiteral("Corvanta"));
}

void tst_BaseSettings::cleanup()
{
    QDir(m_environment.path(QStringLiteral(".config"))).removeRecursively();
}

void tst_BaseSettings::opensTheUsersIniFile()
{
    QCOMPARE(BaseSettings().settings()->fileName(),
             m_environment.path(QStringLiteral(".config/Kelvanmoor/Corvanta.ini")));
    QCOMPARE(BaseSettings(QStringLiteral("Other")).settings()->fileName(),
             m_environment.path(QStringLiteral(".config/Kelvanmoor/Other.ini")));
}

void tst_BaseSettings::keysThroughGroups_data()
{
    QTest::addColumn<QStringList>("groups");
    QTest::addColumn<QString>("storedKey");

    QTest::newRow("no group") << QStringList() << "x";
    QTest::newRow("one group") << QStringList{"a"} << "a/x";
    QTest::newRow("two groups") << QStringList{"net", "proxy"} << "net/proxy/x";
}

void tst_BaseSettings::keysThroughGroups()
{
    QFETCH(QStringList, groups);
    QFETCH(QString, storedKey);
    {
        BaseSettings settings;
        for (const QString& group : groups)
            settings.pushGroup(group);
        QVERIFY(!settings.contains(QStringLiteral("x")));
        settings.setValue(QStringLiteral("x"), 42);
        QCOMPARE(settings.value(QStringLiteral("x"), 0).toInt(), 42);
    }
    QSettings file(m_environment.path(QStringLiteral(".config/Kelvanmoor/Corvanta.ini")),
                   QSettings::IniFormat);
    QCOMPARE(file.allKeys(), QStringList{storedKey});
    QCOMPARE(file.value(storedKey).toInt(), 42);
}

void tst_BaseSettings::fallbacksAreOff()
{
    // The organization-wide file of the same user scope holds the key.
    QSettings organization(m_environment.path(QStringLiteral(".config/Kelvanmoor.ini")),
                           QSettings::IniFormat);
    organization.setValue(QStringLiteral("net/proxy/host"), QStringLiteral("org.example"));
    organization.sync();
    QCOMPARE(QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Kelvanmoor"),
                       QStringLiteral("Corvanta"))
                 .value(QStringLiteral("net/proxy/host"))
                 .toString(),
             QStringLiteral("org.example"));

    BaseSettings settings;
    settings.pushGroup(QStringLiteral("net"));
    settings.pushGroup(QStringLiteral("proxy"));
    QVERIFY(!settings.contains(QStringLiteral("host")));
    QCOMPARE(settings.value(QStringLiteral("host"), QStringLiteral("none")).toString(),
             QStringLiteral("none"));
}

void tst_BaseSettings::commonKeyIgnoresGroups()
{
    BaseSettings settings;
    settings.pushGroup(QStringLiteral("net"));
    settings.settings()->setValue(BaseSettings::commonKey(QStringLiteral("k")), 7);
    settings.settings()->sync();
    QSettings file(settings.settings()->fileName(), QSettings::IniFormat);
    QCOMPARE(file.value(QStringLiteral("common/k")).toInt(), 7);
}

void tst_BaseSettings::removeGroupTakesChildren()
{
    BaseSettings settings;
    QSettings& store = *settings.settings();
    store.setValue(QStringLiteral("a/b/c/d"), 1);
    store.setValue(QStringLiteral("a/b/e"), 2);
    store.setValue(QStringLiteral("a/keep"), 3);
    store.setValue(QStringLiteral("b/e"), 4);

    settings.removeGroup(QStringLiteral("a/b"));
    QCOMPARE(store.group(), QString());
    QStringList keys = store.allKeys();
    keys.sort();
    QCOMPARE(keys, (QStringList{"a/keep", "b/e"}));

    settings.pushGroup(QStringLiteral("a"));
    settings.beginGroups();
    QCOMPARE(store.group(), QStringLiteral("a"));
    QCOMPARE(store.value(QStringLiteral("keep")).toInt(), 3);
}

QTEST_GUILESS_MAIN(tst_BaseSettings)
#include "tst_basesettings.moc"
