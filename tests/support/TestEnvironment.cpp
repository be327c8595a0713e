#include "TestEnvironment.h"

#include "FileNames.h"

#include <QDir>
#include <QFileInfo>

#include <fcntl.h>

using namespace Qt::StringLiterals;

namespace {

const std::pair<const char*, const char*> folders[] = {{"HOME", ""},
                                                       {"XDG_DATA_HOME", "/.local/share"},
                                                       {"XDG_CONFIG_HOME", "/.config"},
                                                       {"XDG_CACHE_HOME", "/.cache"},
                                                       {"XDG_STATE_HOME", "/.local/state"},
                                                       {"XDG_RUNTIME_DIR", "/runtime"}};

} // namespace

TestEnvironment::TestEnvironment()
    : m_saved(QProcessEnvironment::systemEnvironment())
{
    for (const auto& [name, folder] : folders)
        qputenv(name, (m_dir.path() + QLatin1String(folder)).toUtf8());
    QDir().mkpath(path(u"runtime"_s));
    QFile::setPermissions(path(u"runtime"_s),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TestEnvironment::~TestEnvironment()
{
    for (const auto& [name, folder] : folders) {
        if (m_saved.contains(QString::fromLatin1(name)))
            qputenv(name, m_saved.value(QString::fromLatin1(name)).toUtf8());
        else
            qunsetenv(name);
    }
}

bool putFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    // By the name's own bytes, so that a name that is not UTF-8 can be made.
    const int fd = ::creat(encodeFileName(path).constData(), 0666);
    QFile file;
    return fd >= 0 && file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
           && file.write(bytes) == bytes.size();
}

QByteArray fileBytes(const QString& path)
{
    const int fd = ::open(encodeFileName(path).constData(), O_RDONLY);
    QFile file;
    return fd >= 0 && file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)
               ? file.readAll()
               : QByteArray("<unreadable>");
}
