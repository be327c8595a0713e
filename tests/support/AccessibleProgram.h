#pragma once

#include <QDBusConnection>
#include <QRect>

class XvfbServer;

// The program's widgets as assistive tools see them, in tree order, found by name and clicked.
// Make it before starting the program, so the program registers on this accessibility bus.
class AccessibleProgram
{
public:
    struct Item
    {
        QString role;
        QString name;
        QRect rect;
        bool enabled = false;
        // Through the accessible Text interface: the whole text, and its selection.
        QString text;
        QString selected;
    };

    AccessibleProgram();
    ~AccessibleProgram();

    // The showing widgets; nothing until the program registered.
    QList<Item> items();
    // The first showing item of the role whose name contains the text.
    Item find(const QString& role, const QString& name);
    // Clicks the middle of that item when it is there and enabled.
    bool click(const XvfbServer& x, const QString& role, const QString& name);

private:
    QDBusConnection m_bus;
};
