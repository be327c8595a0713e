#pragma once

#include <QProcess>
#include <QRect>
#include <QStringList>

// A private X server for one end-to-end test, on the first free display number.
class XvfbServer
{
public:
    // Each size, such as "1920x1080", becomes one X screen of that size.
    explicit XvfbServer(const QStringList& screenSizes = {QStringLiteral("1920x1080")});
    ~XvfbServer();

    bool isRunning() const { return !m_display.isEmpty() && m_server.state() == QProcess::Running; }
    // The system environment with DISPLAY pointing here and the X platform chosen.
    QProcessEnvironment environment() const;
    // Runs an X tool such as xdotool against this server; returns its trimmed standard output.
    QString run(const QString& program, const QStringList& arguments) const;

    struct Window
    {
        QString id;
        QRect geometry;
    };
    // Visible top-level windows whose title matches the pattern, with their places on screen.
    QList<Window> visibleWindows(const QString& titlePattern) const;
    // Starts the program here, ended with the server; focuses its main window and returns its id.
    QString startMainWindow();
    QProcess& program() { return m_program; }
    // Presses keys in the focused window, or in the File menu of the given one.
    void keys(const QStringList& names, const QString& menuWindow = {}) const;
    QString clipboard() const;

private:
    QProcess m_server;
    QString m_display;
    QProcess m_program;
};
