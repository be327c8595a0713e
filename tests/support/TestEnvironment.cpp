#include "TestEnvironment.h"

#include <QDir>

namespace {

const char* const variables[] = {"HOME",           "XDG_DATA_HOME",  "XDG_CONFIG_HOME",
                                 "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"};

} // namespace

TestEnvironment::TestEnvironment()
    : m_saved(QProcessEnvironment::systemEnvironment())
{
    const QString root = m_dir.path();
    QDir().mkpath(root + QStringLiteral("/runtime"));
    QFile::setPermissions(root + QStringLiteral("/runtime"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("HOME", root.toUtf8());
    qputenv("XDG_DATA_HOME", (root + QStringLiteral("/.local/share")).toUtf8());
    qputenv("XDG_CONFIG_HOME", (root + QStringLiteral("/.config")).toUtf8());
    qputenv("XDG_CACHE_HOME", (root + QStringLiteral("/.cache")).toUtf8());
    qputenv("XDG_STATE_HOME", (root + QStringLiteral("/.local/state")).toUtf8());
    qputenv("XDG_RUNTIME_DIR", (root + QStringLiteral("/runtime")).toUtf8());
}

TestEnvironment::~TestEnvironment()
{
    for (const char* name : variables) {
        const QString value = m_saved.value(QString::fromLatin1(name));
        if (m_saved.contains(QString::fromLatin1(name)))
            qputenv(name, value.toUtf8());
        else
            qunsetenv(name);
    }
}

bool TestEnvironment::isValid() const
{
    return m_dir.isValid();
}

QString TestEnvironment::home() const
{
    return m_dir.path();
}

QString TestEnvironment::path(const QString& relative) const
{
    return m_dir.filePath(relative);
}

QProcessEnvironment TestEnvironment::processEnvironment() const
{
    return QProcessEnvironment::systemEnvironment();
}
