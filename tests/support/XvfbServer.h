#pragma once

#include <QProcess>
#include <QProcessEnvironment>
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

private:
    QProcess m_server;
    QString m_display;
};
