#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QStringList>

// A private X server for one end-to-end test, on the first free display number.
class XvfbServer
{
public:
    // Each size, such as "1920x1080", becomes one X screen of that size.
    explicit XvfbServer(const QStringList& screenSizes = {QStringLiteral("1920x1080")},
                        int dpi = 96);
    ~XvfbServer();

    bool isRunning() const;
    QString display() const;
    // The given environment with DISPLAY pointing here and the X platform chosen.
    QProcessEnvironment environment(QProcessEnvironment base) const;
    // Runs an X tool such as xdotool against this server; returns its trimmed standard output.
    QString run(const QString& program, const QStringList& arguments,
                int* exitCode = nullptr) const;

    struct Window
    {
        QString id;
        QRect geometry;
    };
    // Visible top-level windows whose title matches the pattern, with their places on screen.
    QList<Window> visibleWindows(const QString& titlePattern) const;
    // Waits up to the timeout for a visible window of that title and size; its id, or empty.
    QString waitForWindow(const QString& titlePattern, const QSize& size,
                          int timeout = 30000) const;
    // Starts the program on this display and waits for its 960x540 main window, then focuses it.
    // The window's id, or empty.
    QString startMainWindow(QProcess& program) const;
    // Presses keys one after another in the focused window.
    void keys(const QStringList& names) const;

private:
    QProcess m_server;
    QString m_display;
};
