#include "BaseSettings.h"
#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_BaseSettings : public QObject
{
    Q_OBJECT

    // Before the first QSettings, which fixes its folders for the whole process.
    TestEnvironment m_environment;

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        QCoreApplication::setOrganizationName(u"Kelvanmoor"_s);
        QCoreApplication::setApplicationName(u"Corvanta"_s);
    }

    // Keys go under the pushed groups in the user's own file, a common key outside them. Removing
    // a group takes its children and leaves the store at the top, until the groups are entered.
    void groups()
    {
        BaseSettings settings;
        QSettings& store = *settings.settings();
        QCOMPARE(store.fileName(), m_environment.path(u".config/Kelvanmoor/Corvanta.ini"_s));
        settings.setValue(u"top"_s, 1);
        store.setValue(u"net/proxy/old/key"_s, 1);
        settings.pushGroup(u"net"_s);
        settings.pushGroup(u"proxy"_s);
        QVERIFY(!settings.contains(u"x"_s));
        settings.setValue(u"x"_s, 42);
        QCOMPARE(settings.value(u"x"_s, 0).toInt(), 42);
        store.setValue(BaseSettings::commonKey(u"k"_s), 7);
        settings.removeGroup(u"net/proxy/old"_s);
        QCOMPARE(store.group(), QString());
        store.sync();
        QStringList keys = QSettings(store.fileName(), QSettings::IniFormat).allKeys();
        keys.sort();
        QCOMPARE(keys, (QStringList{"common/k", "net/proxy/x", "top"}));
        settings.beginGroups();
        QCOMPARE(store.group(), u"net/proxy"_s);
        QCOMPARE(store.value(u"x"_s).toInt(), 42);
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
};

QTEST_GUILESS_MAIN(tst_BaseSettings)
#include "tst_basesettings.moc"
