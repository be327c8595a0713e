#include "RecordingData.h"
#include "ReportFragments.h"
#include "SupportTab.h"
#include "SupportTabs.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDesktopServices>
#include <QLabel>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// A page that shows its collector's text and counts its refreshes.
class RecordingTab : public SupportTab
{
public:
    explicit RecordingTab(SupportData* collector)
        : SupportTab(collector)
        , label(createLabel())
    {
        (new QVBoxLayout(this))->addWidget(label);
    }

    void updateContent() override
    {
        ++refreshes;
        showText(label);
    }

    QLabel* label;
    int refreshes = 0;
};

SupportDataTable makeTable(const QList<int>& kindsWithErrors)
{
    const SupportDataTable table = RecordingData::table({0, 1, 3, 4, 5});
    for (int kind : kindsWithErrors)
        RecordingData::in(table, kind)->fakeErrors << u"Something is wrong."_s;
    return table;
}

SupportTab* recordingTab(SupportData* collector)
{
    return new RecordingTab(collector);
}

// Loads the tabs and names them in order, "!" marking a tab with the error icon.
QString loadedNames(SupportTabs& tabs)
{
    QSignalSpy loaded(&tabs, &SupportTabs::signalLoadFinished);
    tabs.load();
    if (!loaded.wait(10000))
        return u"<not loaded>"_s;
    QStringList result;
    for (int i = 0; i < tabs.count(); ++i)
        result << tabs.tabText(i) + (tabs.tabIcon(i).isNull() ? "" : "!");
    return result.join(',');
}

// Stands in for the desktop's file manager on the test's private session bus, and records what
// the reveal falls back to opening when no file manager answers.
class FileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    FileManager() { QDesktopServices::setUrlHandler(u"file"_s, this, "open"); }
    ~FileManager() override { QDesktopServices::unsetUrlHandler(u"file"_s); }
    QStringList seen;

public slots:
    Q_SCRIPTABLE void ShowItems(const QStringList& uris, const QString&)
    {
        seen << "shown " + uris.join(' ');
    }
    void open(const QUrl& url) { seen << "opened " + url.toString(); }
};

} // namespace

class tst_SupportTabs : public QObject
{
    Q_OBJECT

    RecordingData m_data{3};

private slots:
    void init() { m_data.links.clear(); }

    void tabOrder_data()
    {
        QTest::addColumn<QList<int>>("kindsWithErrors");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no errors") << QList<int>() << "Display,Fonts,Permissions,Corvanta,System";
        QTest::newRow("permissions")
            << QList<int>{3} << "Permissions!,Display,Fonts,Corvanta,System";
        QTest::newRow("two, kept in kind order")
            << QList<int>{5, 1} << "Fonts!,System!,Display,Permissions,Corvanta";
    }

    void tabOrder()
    {
        QFETCH(QList<int>, kindsWithErrors);
        SupportTabs tabs(makeTable(kindsWithErrors), recordingTab);
        QTEST(loadedNames(tabs), "expected");
    }

    void pagesAreBuiltOnce()
    {
        const SupportDataTable table = makeTable({});
        SupportTabs tabs(table, recordingTab);
        QVERIFY(!loadedNames(tabs).startsWith('<'));
        QWidget* firstPage = tabs.widget(0);
        // A later pass in which Corvanta found a problem only moves its page to the front.
        RecordingData::in(table, 4)->fakeErrors << u"x"_s;
        QCOMPARE(loadedNames(tabs), u"Corvanta!,Display,Fonts,Permissions,System"_s);
        QCOMPARE(tabs.widget(1), firstPage);
        QCOMPARE(static_cast<RecordingTab*>(firstPage)->refreshes, 2);
    }

    // Action links go to the collector; plain ones are revealed, by the file manager when the
    // session bus has one, else by opening their folder.
    void links_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<bool>("fileManager");
        QTest::addColumn<QStringList>("received");
        QTest::addColumn<QStringList>("revealed");
        QTest::newRow("action") << "#deletePath/x" << true << QStringList{"deletePath/x"}
                                << QStringList();
        QTest::newRow("empty") << "" << true << QStringList() << QStringList();
        QTest::newRow("file manager")
            << "file:///tmp/o%27brien/My Files/report.txt" << true << QStringList()
            << QStringList{"shown file:///tmp/o'brien/My%20Files/report.txt"};
        QTest::newRow("no file manager")
            << "/var/tmp/some folder/file.txt" << false << QStringList()
            << QStringList{"opened file:///var/tmp/some folder"};
    }

    void links()
    {
        QFETCH(QString, link);
        QFETCH(bool, fileManager);
        QFETCH(QStringList, received);
        QFETCH(QStringList, revealed);
        const QString service = u"org.freedesktop.FileManager1"_s;
        QDBusConnection bus = QDBusConnection::sessionBus();
        QVERIFY2(bus.isConnected(), "runs on a private session bus (dbus-run-session)");
        FileManager manager;
        const auto unregister = qScopeGuard([&] {
            bus.unregisterService(service);
            bus.unregisterObject(u"/org/freedesktop/FileManager1"_s);
        });
        if (fileManager) {
            QVERIFY(bus.registerObject(u"/org/freedesktop/FileManager1"_s, &manager,
                                       QDBusConnection::ExportScriptableSlots));
            QVERIFY(bus.registerService(service));
        }
        QCOMPARE(bus.interface()->isServiceRegistered(service).value(), fileManager);
        RecordingTab tab(&m_data);
        tab.onLinkActivated(link);
        QTest::qWait(100);
        QTRY_COMPARE(manager.seen, revealed);
        QCOMPARE(m_data.links, received);
        QCOMPARE(tab.refreshes, received.size());
    }

    void hostileLinkSurvivesTheLabel_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("hostile") << "/home/o'brien/say \"hi\" a&b<c>d/&amp;/100%/%41%2F/two\nlines";
        QTest::newRow("plain") << "/home/user/.local/share/Corvanta";
    }

    // Through the real label: rendered as rich text, then activated from the keyboard.
    void hostileLinkSurvivesTheLabel()
    {
        QFETCH(QString, path);
        m_data.fakeText = removeLink("deletePath" + path) + " Path: " + fileLink(path);
        m_data.load();
        RecordingTab tab(&m_data);
        tab.updateContent();
        tab.show();
        tab.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&tab));
        tab.label->setFocus();
        // The first Tab lands on "Remove".
        QTest::keyClick(tab.label, Qt::Key_Tab);
        QTest::keyClick(tab.label, Qt::Key_Return);
        QCOMPARE(m_data.links, QStringList{"deletePath" + path});
        // The plain report shows the path as it is, without the action word.
        QCOMPARE(htmlToPlainText(m_data.fakeText), " Path: " + path);
    }
};

QTEST_MAIN(tst_SupportTabs)
#include "tst_supporttabs.moc"
