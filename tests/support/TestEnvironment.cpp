#include "TestEnvironment.h"

#include <QDir>
#include <QFileInfo>

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
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}
