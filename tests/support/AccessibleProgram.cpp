#include "AccessibleProgram.h"

#include "XvfbServer.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace {

using Node = std::pair<QString, QDBusObjectPath>; // service, object path

QVariantList call(const QDBusConnection& bus, const Node& node, const QString& method,
                  const QVariantList& arguments = {})
{
    const qsizetype dot = method.lastIndexOf('.');
    QDBusMessage message = QDBusMessage::createMethodCall(node.first, node.second.path(),
                                                          method.left(dot), method.mid(dot + 1));
    message.setArguments(arguments);
    return bus.call(message).arguments();
}

QString accessibilityBusAddress()
{
    QProcess::execute(u"dbus-update-activation-environment"_s,
                      {"HOME=" + qEnvironmentVariable("HOME"),
                       "XDG_RUNTIME_DIR=" + qEnvironmentVariable("XDG_RUNTIME_DIR")});
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    return call(QDBusConnection::sessionBus(),
                {u"org.a11y.Bus"_s, QDBusObjectPath(u"/org/a11y/bus"_s)},
                u"org.a11y.Bus.GetAddress"_s)
        .value(0)
        .toString();
}

QVariant property(const QDBusConnection& bus, const Node& node, const QString& name)
{
    return call(bus, node, u"org.freedesktop.DBus.Properties.Get"_s,
                {u"org.a11y.atspi.Accessible"_s, name})
        .value(0)
        .value<QDBusVariant>()
        .variant();
}

QList<Node> children(const QDBusConnection& bus, const Node& node)
{
    QList<Node> list;
    call(bus, node, u"org.a11y.atspi.Accessible.GetChildren"_s).value(0).value<QDBusArgument>()
        >> list;
    return list;
}

void walk(const QDBusConnection& bus, const Node& node, QList<AccessibleProgram::Item>& found)
{
    const auto states =
        qdbus_cast<QList<uint>>(call(bus, node, u"org.a11y.atspi.Accessible.GetState"_s).value(0));
    if (states.isEmpty() || !(states.first() & (1u << 25))) // not showing
        return;
    QRect box;
    call(bus, node, u"org.a11y.atspi.Component.GetExtents"_s, {QVariant::fromValue(0u)})
            .value(0)
            .value<QDBusArgument>()
        >> box;
    const QString text =
        call(bus, node, u"org.a11y.atspi.Text.GetText"_s, {0, -1}).value(0).toString();
    const QVariantList selection = call(bus, node, u"org.a11y.atspi.Text.GetSelection"_s, {0});
    const int start = selection.value(0).toInt();
    found.append({call(bus, node, u"org.a11y.atspi.Accessible.GetRoleName"_s).value(0).toString(),
                  property(bus, node, u"Name"_s).toString(), box,
                  (states.first() & (1u << 8)) != 0, // enabled
                  text, text.mid(start, selection.value(1).toInt() - start)});
    for (const Node& child : children(bus, node))
        walk(bus, child, found);
}

} // namespace

AccessibleProgram::AccessibleProgram()
    : m_bus(QDBusConnection::connectToBus(accessibilityBusAddress(), u"accessibility"_s))
{}

AccessibleProgram::~AccessibleProgram()
{
    QDBusConnection::disconnectFromBus(u"accessibility"_s);
}

QList<AccessibleProgram::Item> AccessibleProgram::items()
{
    QList<Item> found;
    for (const Node& node :
         children(m_bus, {u"org.a11y.atspi.Registry"_s,
                          QDBusObjectPath(u"/org/a11y/atspi/accessible/root"_s)})) {
        if (property(m_bus, node, u"Name"_s).toString() == u"Corvanta"_s)
            walk(m_bus, node, found);
    }
    return found;
}

AccessibleProgram::Item AccessibleProgram::find(const QString& role, const QString& name)
{
    for (const Item& item : items()) {
        if (item.role == role && item.name.contains(name))
            return item;
    }
    return {};
}

bool AccessibleProgram::click(const XvfbServer& x, const QString& role, const QString& name)
{
    const Item item = find(role, name);
    const QPoint centre = item.rect.center();
    return item.enabled && centre.x() > 0
           && x.run(u"xdotool"_s, {u"mousemove"_s, QString::number(centre.x()),
                                   QString::number(centre.y()), u"click"_s, u"1"_s})
                  .isEmpty();
}
