#include "RecordingData.h"
#include "ReportFragments.h"
#include "SupportTab.h"
#include "SupportTabs.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDesktopServices>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

namespace {

// A page that shows its collector's text and counts its refreshes.
class RecordingTab : public SupportTab
{
public:
    explicit RecordingTab(SupportData* collector)
        : SupportTab(collector)
        , label(createLabel())
    {
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(label);
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
    const QList<QPair<int, QString>> kinds{{0, QStringLiteral("Display")},
                                           {1, QStringLiteral("Fonts")},
                                           {3, QStringLiteral("Permissions")},
                                           {4, QStringLiteral("Corvanta")},
                                           {5, QStringLiteral("System")}};
    auto table = SupportDataTable::create();
    for (const auto& [kind, name] : kinds) {
        auto data = std::make_unique<RecordingData>(kind, name, nullptr);
        if (kindsWithErrors.contains(kind))
            data->fakeErrors << QStringLiteral("Something is wrong.");
        table->emplace(kind, std::move(data));
    }
    return table;
}

SupportTab* recordingTab(SupportData* collector)
{
    return new RecordingTab(collector);
}

// Stands in for the desktop's file manager on the test's private session bus.
class FileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public slots:
    void ShowItems(const QStringList& uris, const QString& startupId)
    {
        Q_UNUSED(startupId)
        shown << uris;
    }
};

// Records what the reveal falls back to opening when no file manager answers.
class UrlRecorder : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened << url; }
};

} // namespace

class tst_SupportTabs : public QObject
{
    Q_OBJECT

private slots:
    void tabOrder_data();
    void tabOrder();
    void pagesAreBuiltOnce();
    void actionLinksReachTheCollector_data();
    void actionLinksReachTheCollector();
    void hostileLinkSurvivesTheLabel_data();
    void hostileLinkSurvivesTheLabel();
    void plainLinkIsShownByTheFileManager();
    void withoutFileManagerTheFolderOpens();

private:
    static QString names(const QTabWidget& tabs);
};

QString tst_SupportTabs::names(const QTabWidget& tabs)
{
    QStringList result;
    for (int i = 0; i < tabs.count(); ++i)
        result << tabs.tabText(i) + (tabs.tabIcon(i).isNull() ? QString() : QStringLiteral("!"));
    return result.join(QLatin1Char(','));
}

void tst_SupportTabs::tabOrder_data()
{
    QTest::addColumn<QList<int>>("kindsWithErrors");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no errors") << QList<int>() << "Display,Fonts,Permissions,Corvanta,System";
    QTest::newRow("permissions") << QList<int>{3} << "Permissions!,Display,Fonts,Corvanta,System";
    QTest::newRow("two, kept in kind order")
        << QList<int>{5, 1} << "Fonts!,System!,Display,Permissions,Corvanta";
    QTest::newRow("all") << QList<int>{0, 1, 3, 4, 5}
                         << "Display!,Fonts!,Permissions!,Corvanta!,System!";
}

void tst_SupportTabs::tabOrder()
{
    QFETCH(QList<int>, kindsWithErrors);
    QFETCH(QString, expected);
    SupportTabs tabs(makeTable(kindsWithErrors), recordingTab);
    QSignalSpy loaded(&tabs, &SupportTabs::signalLoadFinished);
    tabs.load();
    QVERIFY(loaded.wait(10000));
    QCOMPARE(names(tabs), expected);
    if (!kindsWithErrors.isEmpty()) {
        const QPixmap icon = tabs.tabIcon(0).pixmap(32, 32);
        QCOMPARE(icon.size(), QSize(32, 32));
        // The triangle's yellow fill sits just above the exclamation dot.
        QCOMPARE(icon.toImage().pixelColor(12, 24), QColor(248, 212, 82));
        QCOMPARE(icon.toImage().pixelColor(0, 0).alpha(), 0);
    }
}

void tst_SupportTabs::pagesAreBuiltOnce()
{
    const SupportDataTable table = makeTable({});
    SupportTabs tabs(table, recordingTab);
    QSignalSpy loaded(&tabs, &SupportTabs::signalLoadFinished);
    tabs.load();
    QVERIFY(loaded.wait(10000));
    QWidget* firstPage = tabs.widget(0);

    // A later pass in which Corvanta found a problem only moves its page to the front.
    static_cast<RecordingData*>(findSupportData(*table, 4))->fakeErrors << QStringLiteral("x");
    tabs.load();
    QVERIFY(loaded.wait(10000));
    QCOMPARE(names(tabs), QStringLiteral("Corvanta!,Display,Fonts,Permissions,System"));
    QCOMPARE(tabs.widget(1), firstPage);
    QCOMPARE(static_cast<RecordingTab*>(firstPage)->refreshes, 2);
}

void tst_SupportTabs::actionLinksReachTheCollector_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QStringList>("received");
    QTest::addColumn<int>("refreshes");
    QTest::newRow("action") << "#deletePath/x" << QStringList{"deletePath/x"} << 1;
    QTest::newRow("action with encoded path")
        << "#deletePath/a%25b%27c" << QStringList{"deletePath/a%b'c"} << 1;
    QTest::newRow("empty") << "" << QStringList() << 0;
}

void tst_SupportTabs::actionLinksReachTheCollector()
{
    QFETCH(QString, link);
    QFETCH(QStringList, received);
    QFETCH(int, refreshes);
    RecordingData data(3, QStringLiteral("Permissions"), nullptr);
    RecordingTab tab(&data);
    UrlRecorder recorder;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &recorder, "open");
    tab.onLinkActivated(link);
    QTest::qWait(100);
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(data.links, received);
    QCOMPARE(tab.refreshes, refreshes);
    QVERIFY(recorder.opened.isEmpty());
}

void tst_SupportTabs::hostileLinkSurvivesTheLabel_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("quote") << "/home/o'brien/Corvanta";
    QTest::newRow("double quote") << "/tmp/say \"hi\"/x";
    QTest::newRow("ampersand and markup") << "/tmp/a&b<c>d/&amp;";
    QTest::newRow("percent") << "/tmp/100%/%41%2F";
    QTest::newRow("newline") << "/tmp/two\nlines";
    QTest::newRow("plain") << "/home/user/.local/share/Corvanta";
}

// Through the real label: rendered as rich text, then activated from the keyboard.
void tst_SupportTabs::hostileLinkSurvivesTheLabel()
{
    QFETCH(QString, path);
    RecordingData data(3, QStringLiteral("Permissions"), nullptr);
    data.fakeText = removeLink(QStringLiteral("deletePath") + path) + QStringLiteral(" Path: ")
                    + fileLink(path);
    data.load();
    RecordingTab tab(&data);
    tab.updateContent();
    tab.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tab));
    tab.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&tab));
    tab.label->setFocus();

    // The first Tab lands on "Remove".
    QTest::keyClick(tab.label, Qt::Key_Tab);
    QTest::keyClick(tab.label, Qt::Key_Return);
    QCOMPARE(data.links, QStringList{QStringLiteral("deletePath") + path});

    // The plain report shows the path as it is, without the action word.
    QCOMPARE(htmlToPlainText(data.fakeText), QStringLiteral(" Path: ") + path);
}

void tst_SupportTabs::plainLinkIsShownByTheFileManager()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    QVERIFY2(bus.isConnected(), "runs on a private session bus (dbus-run-session)");
    FileManager manager;
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                               QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));

    RecordingData data(3, QStringLiteral("Permissions"), nullptr);
    RecordingTab tab(&data);
    tab.onLinkActivated(QStringLiteral("file:///tmp/o%27brien/My Files/report.txt"));
    QTRY_COMPARE(manager.shown,
                 QStringList{QStringLiteral("file:///tmp/o'brien/My%20Files/report.txt")});
    QVERIFY(data.links.isEmpty());
    QCOMPARE(tab.refreshes, 0);

    bus.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
    bus.unregisterObject(QStringLiteral("/org/freedesktop/FileManager1"));
}

void tst_SupportTabs::withoutFileManagerTheFolderOpens()
{
    QVERIFY(!QDBusConnection::sessionBus().interface()->isServiceRegistered(
        QStringLiteral("org.freedesktop.FileManager1")));
    UrlRecorder recorder;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &recorder, "open");
    RecordingData data(3, QStringLiteral("Permissions"), nullptr);
    RecordingTab tab(&data);
    tab.onLinkActivated(QStringLiteral("/var/tmp/some folder/file.txt"));
    QTRY_COMPARE(recorder.opened,
                 QList<QUrl>{QUrl::fromLocalFile(QStringLiteral("/var/tmp/some folder"))});
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

QTEST_MAIN(tst_SupportTabs)
#include "tst_supporttabs.moc"
