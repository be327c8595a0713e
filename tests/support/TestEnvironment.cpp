#include "TestEnvironment.h"

#include "FileNames.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <fcntl.h>

using namespace Qt::StringLiterals;

namespace {

// Bytes as they are: Windows' C runtime would otherwise turn line ends into CR LF and back.
#ifdef O_BINARY
constexpr int binary = O_BINARY;
#else
constexpr int binary = 0;
#endif

const std::pair<const char*, const char*> folders[] = {{"HOME", ""},
                                                       {"XDG_DATA_HOME", "/.local/share"},
                                                       {"XDG_CONFIG_HOME", "/.config"},
                                                       {"XDG_CACHE_HOME", "/.cache"},
                                                       {"XDG_STATE_HOME", "/.local/state"},
                                                       {"XDG_RUNTIME_DIR", "/runtime"}};

#ifdef Q_OS_WIN
// Windows finds a user's folders here, whatever HOME says; they are redirected as an
// administrator would redirect them.
const std::pair<QString, QString> profileFolders[] = {{u"AppData"_s, u"/.local/share"_s},
                                                      {u"Local AppData"_s, u"/.cache"_s},
                                                      {u"Personal"_s, u"/Documents"_s},
                                                      {u"Desktop"_s, u"/Desktop"_s}};

QSettings& shellFolders()
{
    static QSettings key(u"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\"
                         "Explorer\\User Shell Folders"_s,
                         QSettings::NativeFormat);
    return key;
}
#endif

} // namespace

TestEnvironment::TestEnvironment()
    : m_saved(QProcessEnvironment::systemEnvironment())
{
    for (const auto& [name, folder] : folders)
        qputenv(name, (m_dir.path() + QLatin1String(folder)).toUtf8());
    QDir().mkpath(path(u"runtime"_s));
    QFile::setPermissions(path(u"runtime"_s),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
#ifdef Q_OS_WIN
    for (const auto& [name, folder] : profileFolders) {
        m_savedFolders.append(shellFolders().value(name).toString());
        QDir().mkpath(m_dir.path() + folder);
        shellFolders().setValue(name, QDir::toNativeSeparators(m_dir.path() + folder));
    }
    shellFolders().sync();
#endif
}

TestEnvironment::~TestEnvironment()
{
    for (const auto& [name, folder] : folders) {
        if (m_saved.contains(QString::fromLatin1(name)))
            qputenv(name, m_saved.value(QString::fromLatin1(name)).toUtf8());
        else
            qunsetenv(name);
    }
#ifdef Q_OS_WIN
    for (qsizetype i = 0; i < m_savedFolders.size(); ++i)
        shellFolders().setValue(profileFolders[i].first, m_savedFolders.at(i));
#endif
}
bool putFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    // By the name's own bytes, so that a name that is not UTF-8 can be made.
    const int fd =
        ::open(encodeFileName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | binary, 0666);
    QFile file;
    return fd >= 0 && file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
           && file.write(bytes) == bytes.size();
}

QByteArray fileBytes(const QString& path)
{
    const int fd = ::open(encodeFileName(path).constData(), O_RDONLY | binary);
    QFile file;
    return fd >= 0 && file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)
               ? file.readAll()
               : QByteArray("<unreadable>");
}
