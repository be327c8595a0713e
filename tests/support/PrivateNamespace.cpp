#include "PrivateNamespace.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include <unistd.h>

#include <climits>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

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
    return QProcess::execute(u"ip"_s, {u"link"_s, u"set"_s, u"lo"_s, u"up"_s}) == 0;
}

bool addInterface(const QString& name, const QStringList& addresses)
{
    const auto ip = [&name](const QString& arguments) {
        return QProcess::execute(u"ip"_s, arguments.arg(name).split(' ')) == 0;
    };
    // Quietly: a kernel without the dummy driver says so, and the bridge follows.
    QProcess dummy;
    dummy.setStandardErrorFile(QProcess::nullDevice());
    dummy.start(u"ip"_s, u"link add %1 type dummy"_s.arg(name).split(' '));
    const bool added = dummy.waitForFinished() && dummy.exitStatus() == QProcess::NormalExit
                       && dummy.exitCode() == 0;
    if (!(added || ip(u"link add %1 type bridge"_s)) || !ip(u"link set %1 addrgenmode none"_s))
        return false;
    for (const QString& address : addresses) {
        if (!ip(u"address add "_s + address + u" dev %1"_s
                + (address.contains(':') ? u" nodad"_s : QString())))
            return false;
    }
    return ip(u"link set %1 up"_s);
}

bool bindFile(const QString& file, const QString& target)
{
    return QProcess::execute(u"mount"_s, {u"--bind"_s, file, target}) == 0;
}

bool bindReadOnly(const QString& folder)
{
    return bindFile(folder, folder)
           && QProcess::execute(u"mount"_s, {u"-o"_s, u"remount,bind,ro"_s, folder}) == 0;
}

QString tinyFileSystem()
{
    return qEnvironmentVariable("CORVANTA_TINY_FS");
}

bool fillTinyFileSystem()
{
    QFile filler(tinyFileSystem() + u"/filler"_s);
    if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    while (filler.write(QByteArray(512, 'x')) == 512) {
    }
    return true;
}

int runWithTinyFileSystem(const QString& testFunction)
{
    return QProcess::execute(u"unshare"_s, {u"-rm"_s, u"sh"_s, u"-c"_s,
                                            u"mount -t tmpfs -o size=8k tmpfs /mnt && "
                                            "CORVANTA_TINY_FS=/mnt exec \"$0\" \"$1\""_s,
                                            QCoreApplication::applicationFilePath(), testFunction});
}
