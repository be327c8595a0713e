#include "ProductHome.h"
#include "XvfbServer.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Environment = QMap<QString, QString>;

// The program's widgets as the desktop's accessibility bus shows them to assistive tools, so the
// test finds a button or a page tab by its name and clicks where it is on the screen.
class AccessibleProgram
{
public:
    struct Item
    {
        QString role;
        QString name;
        QRect rect;
        bool enabled = false;
    };

    AccessibleProgram()
        : m_bus(QDBusConnection::connectToBus(address(), u"accessibility"_s))
    {}
    ~AccessibleProgram() { QDBusConnection::disconnectFromBus(u"accessibility"_s); }

    // Everything showing in the program's windows, or nothing until it has registered.
    QList<Item> items()
    {
        QList<Item> found;
        const QString registry = u"org.a11y.atspi.Registry"_s;
        const QString root = u"/org/a11y/atspi/accessible/root"_s;
        for (int i = 0, count = property(registry, root, u"ChildCount"_s).toInt(); i < count; ++i) {
            const auto [service, path] = child(registry, root, i);
            if (property(service, path, u"Name"_s).toString() == u"Corvanta"_s)
                walk(service, path, found);
        }
        return found;
    }

    Item find(const QString& role, const QString& name)
    {
        for (const Item& item : items()) {
            if (item.role == role && item.name.contains(name))
                return item;
        }
        return {};
    }

private:
    static QString address()
    {
        const QDBusMessage reply =
            QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
                u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s));
        return reply.arguments().value(0).toString();
    }

    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        return m_bus.call(message);
    }

    QVariant property(const QString& service, const QString& path, const QString& name)
    {
        const QDBusMessage reply = call(service, path, u"org.freedesktop.DBus.Properties"_s,
                                        u"Get"_s, {u"org.a11y.atspi.Accessible"_s, name});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }

    std::pair<QString, QString> child(const QString& service, const QString& path, int index)
    {
        const QDBusMessage reply =
            call(service, path, u"org.a11y.atspi.Accessible"_s, u"GetChildAtIndex"_s, {index});
        const QDBusArgument argument = reply.arguments().value(0).value<QDBusArgument>();
        QString childService;
        QDBusObjectPath childPath;
        argument.beginStructure();
        argument >> childService >> childPath;
        argument.endStructure();
        return {childService, childPath.path()};
    }

    void walk(const QString& service, const QString& path, QList<Item>& found)
    {
        const QString accessible = u"org.a11y.atspi.Accessible"_s;
        const QDBusMessage state = call(service, path, accessible, u"GetState"_s);
        const auto states = qdbus_cast<QList<uint>>(state.arguments().value(0));
        constexpr uint enabled = 1u << 8, showing = 1u << 25;
        if (states.isEmpty() || !(states.first() & showing))
            return;
        const QDBusMessage extents = call(service, path, u"org.a11y.atspi.Component"_s,
                                          u"GetExtents"_s, {QVariant::fromValue(0u)});
        const QDBusArgument box = extents.arguments().value(0).value<QDBusArgument>();
        int x = 0, y = 0, width = 0, height = 0;
        box.beginStructure();
        box >> x >> y >> width >> height;
        box.endStructure();
        found.append(
            {call(service, path, accessible, u"GetRoleName"_s).arguments().value(0).toString(),
             property(service, path, u"Name"_s).toString(), QRect(x, y, width, height),
             (states.first() & enabled) != 0});
        for (int i = 0, count = property(service, path, u"ChildCount"_s).toInt(); i < count; ++i) {
            const auto [childService, childPath] = child(service, path, i);
            walk(childService, childPath, found);
        }
    }

    QDBusConnection m_bus;
};

} // namespace

// The Corvanta page's four buttons pressed from the real window, one after another, with the
// files, the trash and the page checked after each.
class tst_Installation : public QObject
{
    Q_OBJECT

private slots:
    void buttonsFromTheWindow()
    {
        ProductHome home;
        QVERIFY(home.isValid() && home.prepare());
        // The accessibility bus is started on demand by this session's bus: in this home too.
        qDBusRegisterMetaType<Environment>();
        QDBusMessage update = QDBusMessage::createMethodCall(
            u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
            u"UpdateActivationEnvironment"_s);
        update << QVariant::fromValue(Environment{{u"HOME"_s, home.path(QString())},
                                                  {u"XDG_RUNTIME_DIR"_s, home.path(u"runtime"_s)}});
        QCOMPARE(QDBusConnection::sessionBus().call(update).type(), QDBusMessage::ReplyMessage);
        qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        QVERIFY2(!x.startMainWindow().isEmpty(), "the main window never appeared");
        AccessibleProgram program;
        const auto click = [&](const QString& role, const QString& name) {
            const QPoint centre = program.find(role, name).rect.center();
            return centre.x() > 0
                   && x.run(u"xdotool"_s, {u"mousemove"_s, QString::number(centre.x()),
                                           QString::number(centre.y()), u"click"_s, u"1"_s})
                          .isEmpty();
        };
        QVERIFY2(QTest::qWaitFor([&] { return click(u"page tab"_s, u"Corvanta"_s); }, 20000),
                 "no Corvanta page tab");
        // The page's text, its links' words included, and the enabled buttons in the order of the
        // row, each by the start of its name.
        const auto page = [&] {
            QString enabled;
            for (const auto& item : program.items()) {
                if (item.role == u"push button"_s && item.enabled)
                    enabled += item.name.left(8) + ' ';
            }
            return program.find(u"label"_s, u"Application Data:"_s).name + '|' + enabled;
        };
        const auto waitFor = [&](const std::function<bool()>& done) {
            return QTest::qWaitFor(done, 20000);
        };
        const QString data = home.dataFolder();
        const QString before = page();
        QVERIFY2(before.contains(u"(User):\n.cvd      Remove\n"_s)
                     && before.endsWith(u"|Remove A Repair P Remove P Remove A "_s),
                 qPrintable(before));

        QVERIFY(click(u"push button"_s, u"Remove All Associations"_s));
        QVERIFY(waitFor(
            [&] { return fileBytes(home.userMimeapps()) == ProductHome::mimeappsWithoutProduct; }));
        QVERIFY(
            waitFor([&] { return page().endsWith(u"(User):\n\n|Repair P Remove P Remove A "_s); }));

        QVERIFY(click(u"push button"_s, u"Repair Preferences"_s));
        QVERIFY(waitFor(
            [&] { return fileBytes(home.preferences()) == ProductHome::repairedPreferences; }));

        QVERIFY(click(u"push button"_s, u"Remove Preferences"_s));
        QVERIFY(waitFor([&] { return !QFileInfo::exists(home.preferences()); }));
        QVERIFY(waitFor([&] { return page().endsWith(u"|Repair P Remove A "_s); }));
        QVERIFY(trashList().contains(' ' + home.preferences() + '\n'));

        QVERIFY(click(u"push button"_s, u"Remove All Application Data"_s));
        QVERIFY(waitFor([&] { return !QFileInfo::exists(data); }));
        QVERIFY(waitFor([&] { return page().endsWith(u"|Repair P "_s); }));
        QVERIFY(
            page().contains(u"\nApplication Data:   "_s + data + u" - Does Not Exist Remove\n"_s));
        const QString listed = trashList();
        QVERIFY2(listed.contains(' ' + data + '\n')
                     && listed.contains(' ' + home.path(u".cache/Corvanta"_s) + '\n'),
                 qPrintable(listed));
        QCOMPARE(listed.count(home.path(QString())), 3);
    }
};

QTEST_GUILESS_MAIN(tst_Installation)
#include "tst_installation.moc"
