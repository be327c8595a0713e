#include "PrivateNamespace.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <vector>

const char insideVariable[] = "CORVANTA_PRIVATE_NAMESPACE";

bool enterPrivateNamespace(int argc, char** argv, const char* flags)
{
    if (qEnvironmentVariableIsSet(insideVariable))
        return true;
    char self[PATH_MAX] = {};
    if (::readlink("/proc/self/exe", self, sizeof self - 1) < 0) {
        std::perror("readlink");
        return false;
    }
    qputenv(insideVariable, "1");
    std::vector<char*> arguments{const_cast<char*>("unshare"), const_cast<char*>(flags),
                                 const_cast<char*>("--"), self};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    arguments.push_back(nullptr);
    ::execvp("unshare", arguments.data());
    std::perror("unshare");
    return false;
}

bool bringLoopbackUp()
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    ifreq request{};
    std::strncpy(request.ifr_name, "lo", IFNAMSIZ - 1);
    bool up = ::ioctl(fd, SIOCGIFFLAGS, &request) == 0;
    request.ifr_flags |= IFF_UP;
    up = up && ::ioctl(fd, SIOCSIFFLAGS, &request) == 0;
    ::close(fd);
    return up;
}

bool addInterface(const QString& name, const QStringList& addresses)
{
    const auto ip = [](const QStringList& arguments) {
        return QProcess::execute(QStringLiteral("ip"), arguments) == 0;
    };
    // Quietly: a kernel without the dummy driver says so, and the bridge follows.
    QProcess dummy;
    dummy.setStandardErrorFile(QProcess::nullDevice());
    dummy.start(QStringLiteral("ip"), {QStringLiteral("link"), QStringLiteral("add"), name,
                                       QStringLiteral("type"), QStringLiteral("dummy")});
    const bool added = dummy.waitForFinished() && dummy.exitStatus() == QProcess::NormalExit
                       && dummy.exitCode() == 0;
    if (!added
        && !ip({QStringLiteral("link"), QStringLiteral("add"), name, QStringLiteral("type"),
                QStringLiteral("bridge")}))
        return false;
    if (!ip({QStringLiteral("link"), QStringLiteral("set"), name, QStringLiteral("addrgenmode"),
             QStringLiteral("none")}))
        return false;
    for (const QString& address : addresses) {
        QStringList arguments{QStringLiteral("address"), QStringLiteral("add"), address,
                              QStringLiteral("dev"), name};
        if (address.contains(QLatin1Char(':')))
            arguments << QStringLiteral("nodad");
        if (!ip(arguments))
            return false;
    }
    return ip({QStringLiteral("link"), QStringLiteral("set"), name, QStringLiteral("up")});
}

bool bindFile(const QString& file, const QString& target)
{
    return ::mount(QFile::encodeName(file).constData(), QFile::encodeName(target).constData(),
                   nullptr, MS_BIND, nullptr)
           == 0;
}

bool bindReadOnly(const QString& folder)
{
    const QByteArray path = QFile::encodeName(folder);
    return ::mount(path.constData(), path.constData(), nullptr, MS_BIND, nullptr) == 0
           && ::mount(nullptr, path.constData(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr)
                  == 0;
}

QString tinyFileSystem()
{
    return qEnvironmentVariable("CORVANTA_TINY_FS");
}

bool fillTinyFileSystem()
{
    QFile filler(tinyFileSystem() + QStringLiteral("/filler"));
    if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    while (filler.write(QByteArray(512, 'x')) == 512) {
    }
    return true;
}

int runWithTinyFileSystem(const QString& testFunction)
{
    return QProcess::execute(QStringLiteral("unshare"),
                             {QStringLiteral("-rm"), QStringLiteral("sh"), QStringLiteral("-c"),
                              QStringLiteral("mount -t tmpfs -o size=8k tmpfs /mnt && "
                                             "CORVANTA_TINY_FS=/mnt exec \"$0\" \"$1\""),
                              QCoreApplication::applicationFilePath(), testFunction});
}
