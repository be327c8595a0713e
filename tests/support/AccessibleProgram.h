#pragma once

#include <QDBusConnection>
#include <QRect>

class XvfbServer;

// The program's widgets as the desktop's accessibility bus shows them to assistive tools, in the
// order of its widget tree: a test finds a button or a page tab by its name and clicks where it is
// on the screen, whatever the focus and the order of the pages.
// Make it before starting the program: the session bus starts the accessibility bus in the test's
// home, and Qt programs started afterwards register there.
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
