#include "XvfbServer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QMap>
#include <QThread>

XvfbServer::XvfbServer(const QStringList& screenSizes, int dpi)
{
    for (int number = 90; number < 190 && m_display.isEmpty(); ++number) {
        if (QFile::exists(QStringLiteral("/tmp/.X%1-lock").arg(number))
            || QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(number)))
            continue;
        QStringList arguments{
            QStringLiteral(":%1").arg(number), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
            QStringLiteral("-noreset"),        QStringLiteral("-dpi"),      QString::number(dpi)};
        for (int i = 0; i < screenSizes.size(); ++i)
            arguments << QStringLiteral("-screen") << QString::number(i)
                      << screenSizes.at(i) + QStringLiteral("x24");
        m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_server.start(QStringLiteral("Xvfb"), arguments);
        if (!m_server.waitForStarted(5000))
            return;
        // Ready once a client can talk to it; gone at once when another server took the number.
        const QString candidate = QStringLiteral(":%1").arg(number);
        for (int wait = 0; wait < 100 && m_server.state() == QProcess::Running; ++wait) {
            QProcess probe;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(QStringLiteral("DISPLAY"), candidate);
            probe.setProcessEnvironment(environment);
            probe.start(QStringLiteral("xdotool"), {QStringLiteral("getdisplaygeometry")});
            if (probe.waitForFinished(5000) && probe.exitStatus() == QProcess::NormalExit
                && probe.exitCode() == 0) {
                m_display = candidate;
                break;
            }
            QThread::msleep(50);
        }
        if (m_display.isEmpty()) {
            m_server.kill();
            m_server.waitForFinished(2000);
        }
    }
}

XvfbServer::~XvfbServer()
{
    m_server.terminate();
    if (!m_server.waitForFinished(3000))
        m_server.kill();
    m_server.waitForFinished(3000);
}

bool XvfbServer::isRunning() const
{
    return !m_display.isEmpty() && m_server.state() == QProcess::Running;
}

QString XvfbServer::display() const
{
    return m_display;
}

QProcessEnvironment XvfbServer::environment(QProcessEnvironment base) const
{
    base.insert(QStringLiteral("DISPLAY"), m_display);
    base.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    base.remove(QStringLiteral("WAYLAND_DISPLAY"));
    return base;
}

QString XvfbServer::run(const QString& program, const QStringList& arguments, int* exitCode) const
{
    QProcess process;
    process.setProcessEnvironment(environment(QProcessEnvironment::systemEnvironment()));
    process.start(program, arguments);
    process.waitForFinished(15000);
    if (exitCode)
        *exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QList<XvfbServer::Window> XvfbServer::visibleWindows(const QString& titlePattern) const
{
    QList<Window> windows;
    const QStringList ids =
        run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                        QStringLiteral("--name"), titlePattern})
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& id : ids) {
        QMap<QString, int> values;
        const QStringList lines =
            run(QStringLiteral("xdotool"),
                {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), id})
                .split(QLatin1Char('\n'));
        for (const QString& line : lines) {
            const int equals = line.indexOf(QLatin1Char('='));
            if (equals > 0)
                values.insert(line.left(equals), line.mid(equals + 1).toInt());
        }
        windows.append(
            {id,
             QRect(values.value(QStringLiteral("X")), values.value(QStringLiteral("Y")),
                   values.value(QStringLiteral("WIDTH")), values.value(QStringLiteral("HEIGHT")))});
    }
    return windows;
}

QString XvfbServer::waitForWindow(const QString& titlePattern, const QSize& size, int timeout) const
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeout) {
        const QList<Window> windows = visibleWindows(titlePattern);
        for (const Window& window : windows) {
            if (window.geometry.size() == size)
                return window.id;
        }
        QThread::msleep(20);
    }
    return {};
}

QString XvfbServer::startMainWindow(QProcess& program) const
{
    program.setProcessEnvironment(environment(QProcessEnvironment::systemEnvironment()));
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral(CORVANTA_SUPPORT_BINARY), {});
    const QString window = waitForWindow(QStringLiteral("^Corvanta Support$"), QSize(960, 540));
    if (!window.isEmpty())
        run(QStringLiteral("xdotool"),
            {QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    return window;
}

void XvfbServer::keys(const QStringList& names) const
{
    for (const QString& name : names) {
        run(QStringLiteral("xdotool"), {QStringLiteral("key"), name});
        QThread::msleep(100);
    }
}
