#include "ProductHome.h"
#include "XvfbServer.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Node = std::pair<QString, QString>; // service, object path

QVariant call(const QDBusConnection& bus, const Node& node, const QString& method,
              const QVariantList& arguments = {})
{
    const qsizetype dot = method.lastIndexOf('.');
    QDBusMessage message = QDBusMessage::createMethodCall(node.first, node.second, method.left(dot),
                                                          method.mid(dot + 1));
    message.setArguments(arguments);
    return bus.call(message).arguments().value(0);
}

// The program's widgets as the desktop's accessibility bus shows them to assistive tools, in the
// order of its widget tree: the test finds a button or a page tab by its name, and clicks where it
// is on the screen.
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
        : m_bus(QDBusConnection::connectToBus(call(QDBusConnection::sessionBus(),
                                                   {u"org.a11y.Bus"_s, u"/org/a11y/bus"_s},
                                                   u"org.a11y.Bus.GetAddress"_s)
                                                  .toString(),
                                              u"accessibility"_s))
    {}
    ~AccessibleProgram() { QDBusConnection::disconnectFromBus(u"accessibility"_s); }

    // Nothing until the program registered.
    QList<Item> items()
    {
        QList<Item> found;
        for (const Node& node :
             children({u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/accessible/root"_s})) {
            if (property(node, u"Name"_s).toString() == u"Corvanta"_s)
                walk(node, found);
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
    QVariant property(const Node& node, const QString& name)
    {
        return call(m_bus, node, u"org.freedesktop.DBus.Properties.Get"_s,
                    {u"org.a11y.atspi.Accessible"_s, name})
            .value<QDBusVariant>()
            .variant();
    }

    QList<Node> children(const Node& node)
    {
        QList<Node> result;
        for (int i = 0, count = property(node, u"ChildCount"_s).toInt(); i < count; ++i) {
            const auto child =
                call(m_bus, node, u"org.a11y.atspi.Accessible.GetChildAtIndex"_s, {i})
                    .value<QDBusArgument>();
            Node next;
            QDBusObjectPath path;
            child.beginStructure();
            child >> next.first >> path;
            child.endStructure();
            next.second = path.path();
            result.append(next);
        }
        return result;
    }

    void walk(const Node& node, QList<Item>& found)
    {
        const auto states =
            qdbus_cast<QList<uint>>(call(m_bus, node, u"org.a11y.atspi.Accessible.GetState"_s));
        if (states.isEmpty() || !(states.first() & (1u << 25))) // not showing
            return;
        const auto box =
            call(m_bus, node, u"org.a11y.atspi.Component.GetExtents"_s, {QVariant::fromValue(0u)})
                .value<QDBusArgument>();
        int x = 0, y = 0, width = 0, height = 0;
        box.beginStructure();
        box >> x >> y >> width >> height;
        box.endStructure();
        found.append({call(m_bus, node, u"org.a11y.atspi.Accessible.GetRoleName"_s).toString(),
                      property(node, u"Name"_s).toString(), QRect(x, y, width, height),
                      (states.first() & (1u << 8)) != 0});
        for (const Node& child : children(node))
            walk(child, found);
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
        QCOMPARE(QProcess::execute(u"dbus-update-activation-environment"_s,
                                   {"HOME=" + home.path(QString()),
                                    "XDG_RUNTIME_DIR=" + home.path(u"runtime"_s)}),
                 0);
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
        const QString before = page();
        QVERIFY2(before.contains(u"(User):\n.cvd      Remove\n"_s)
                     && before.endsWith(u"|Remove A Repair P Remove P Remove A "_s),
                 qPrintable(before));

        QVERIFY(click(u"push button"_s, u"Remove All Associations"_s));
        QTRY_VERIFY_WITH_TIMEOUT(
            fileBytes(home.userMimeapps()) == ProductHome::mimeappsWithoutProduct, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"(User):\n\n|Repair P Remove P Remove A "_s),
                                 20000);

        QVERIFY(click(u"push button"_s, u"Repair Preferences"_s));
        QTRY_VERIFY_WITH_TIMEOUT(fileBytes(home.preferences()) == ProductHome::repairedPreferences,
                                 20000);

        QVERIFY(click(u"push button"_s, u"Remove Preferences"_s));
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"|Repair P Remove A "_s), 20000);
        QVERIFY(!QFileInfo::exists(home.preferences()));
        QVERIFY(trashList().contains(' ' + home.preferences() + '\n'));

        QVERIFY(click(u"push button"_s, u"Remove All Application Data"_s));
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"|Repair P "_s), 20000);
        QVERIFY(page().contains("\nApplication Data:   " + home.dataFolder()
                                + " - Does Not Exist Remove\n"));
        const QString listed = trashList();
        QCOMPARE(listed.count(home.path(QString())), 3);
        QVERIFY2(listed.contains(' ' + home.dataFolder() + '\n')
                     && listed.contains(' ' + home.path(u".cache/Corvanta"_s) + '\n'),
                 qPrintable(listed));
    }
};

QTEST_GUILESS_MAIN(tst_Installation)
#include "tst_installation.moc"
