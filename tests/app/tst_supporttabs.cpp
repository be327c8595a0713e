#include "RecordingData.h"
#include "ReportFragments.h"
#include "SupportTab.h"
#include "SupportTabs.h"

#ifndef Q_OS_WIN
#include <QDBusConnection>
#endif
#include <QDesktopServices>
#include <QLabel>
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

// The desktop's file manager on the private session bus, and the fallback's opener.
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

private slots:
    // Pages with errors first, each group in kind order. A later pass only moves the pages.
    void tabOrder()
    {
        const SupportDataTable table = RecordingData::table({0, 1, 3, 4, 5});
        SupportTabs tabs(table,
                         [](SupportData* data) -> SupportTab* { return new RecordingTab(data); });
        QCOMPARE(loadedNames(tabs), u"Display,Fonts,Permissions,Corvanta,System"_s);
        QWidget* firstPage = tabs.widget(0);
        RecordingData::in(table, 5)->fakeErrors << u"x"_s;
        RecordingData::in(table, 1)->fakeErrors << u"x"_s;
        QCOMPARE(loadedNames(tabs), u"Fonts!,System!,Display,Permissions,Corvanta"_s);
        QCOMPARE(tabs.widget(2), firstPage);
        QCOMPARE(static_cast<RecordingTab*>(firstPage)->refreshes, 2);
    }

    // An action link from the keyboard reaches the collector; plain paths are only revealed.
    void links()
    {
        const QString path = u"/home/o'brien/say \"hi\" a&b<c>d/&amp;/100%/%41%2F/two\nlines"_s;
        RecordingData data(3);
        data.fakeText = removeLink("deletePath" + path) + " Path: " + fileLink(path);
        data.load();
        RecordingTab tab(&data);
        tab.updateContent();
        tab.show();
        tab.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&tab));
        tab.label->setFocus();
        // The first Tab lands on "Remove".
        QTest::keyClick(tab.label, Qt::Key_Tab);
        QTest::keyClick(tab.label, Qt::Key_Return);
        QCOMPARE(data.links, QStringList{"deletePath" + path});
        QCOMPARE(tab.refreshes, 2);

#ifndef Q_OS_WIN // Windows reveals a path with explorer.exe /select, which the Win32 suite runs.
        FileManager manager;
        tab.onLinkActivated(u"/var/tmp/some folder/file.txt"_s);
        QTRY_COMPARE(manager.seen, QStringList{u"opened file:///var/tmp/some folder"_s});
        QDBusConnection bus = QDBusConnection::sessionBus();
        QVERIFY(bus.registerObject(u"/org/freedesktop/FileManager1"_s, &manager,
                                   QDBusConnection::ExportScriptableSlots));
        QVERIFY(bus.registerService(u"org.freedesktop.FileManager1"_s));
        tab.onLinkActivated(u"file:///tmp/o%27brien/My Files/report.txt"_s);
        QTRY_COMPARE(manager.seen.mid(1),
                     QStringList{u"shown file:///tmp/o'brien/My%20Files/report.txt"_s});
        QCOMPARE(data.links.size(), 1);
        QCOMPARE(tab.refreshes, 2);
#endif
    }
};

QTEST_MAIN(tst_SupportTabs)
#include "tst_supporttabs.moc"
