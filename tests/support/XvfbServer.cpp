#include "XvfbServer.h"

#include <QMap>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

XvfbServer::XvfbServer(const QStringList& screenSizes)
{
    // Xvfb takes the first free display number and writes it once clients can connect.
    QStringList arguments = u"-displayfd 1 -nolisten tcp -noreset -dpi 96"_s.split(' ');
    for (int i = 0; i < screenSizes.size(); ++i)
        arguments << u"-screen"_s << QString::number(i) << screenSizes.at(i) + u"x24"_s;
    m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_server.start(u"Xvfb"_s, arguments);
    while (!m_server.canReadLine() && m_server.waitForReadyRead(10000)) {
    }
    if (m_server.canReadLine())
        m_display = ':' + QString::fromLatin1(m_server.readLine().trimmed());
}

XvfbServer::~XvfbServer()
{
    m_program.terminate();
    m_program.waitForFinished(10000);
    m_server.kill();
    m_server.waitForFinished(3000);
}

QProcessEnvironment XvfbServer::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, m_display);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    return environment;
}

QString XvfbServer::run(const QString& program, const QStringList& arguments) const
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    process.waitForFinished(15000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QList<XvfbServer::Window> XvfbServer::visibleWindows(const QString& titlePattern) const
{
    QList<Window> windows;
    const QString ids =
        run(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, titlePattern});
    for (const QString& id : ids.split('\n', Qt::SkipEmptyParts)) {
        QMap<QString, int> values; // X=, Y=, WIDTH=, HEIGHT= lines
        const QString shell = run(u"xdotool"_s, {u"getwindowgeometry"_s, u"--shell"_s, id});
        for (const QString& line : shell.split('\n'))
            values.insert(line.section('=', 0, 0), line.section('=', 1).toInt());
        windows.append(
            {id, QRect(values[u"X"_s], values[u"Y"_s], values[u"WIDTH"_s], values[u"HEIGHT"_s])});
    }
    return windows;
}

QString XvfbServer::startMainWindow()
{
    m_program.setProcessEnvironment(environment());
    m_program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_program.start(QStringLiteral(CORVANTA_SUPPORT_BINARY), {});
    QString id;
    const auto shown = [&] {
        for (const Window& window : visibleWindows(u"^Corvanta Support$"_s)) {
            if (window.geometry.size() == QSize(960, 540))
                id = window.id;
        }
        return !id.isEmpty();
    };
    if (QTest::qWaitFor(shown, 30000))
        run(u"xdotool"_s, {u"windowfocus"_s, u"--sync"_s, id});
    return id;
}

void XvfbServer::keys(const QStringList& names, const QString& menuWindow) const
{
    if (!menuWindow.isEmpty()) {
        run(u"xdotool"_s,
            {u"mousemove"_s, u"--window"_s, menuWindow, u"15"_s, u"10"_s, u"click"_s, u"1"_s});
        QThread::msleep(300);
    }
    for (const QString& name : names) {
        run(u"xdotool"_s, {u"key"_s, name});
        QThread::msleep(100);
    }
}

QString XvfbServer::clipboard() const
{
    return run(u"xclip"_s, {u"-o"_s, u"-selection"_s, u"clipboard"_s});
}
