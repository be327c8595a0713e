#include "BaseSettings.h"

#include "FileDirTools.h"

#include <QCoreApplication>
#include <QStandardPaths>

struct BaseSettings::Private
{
    QStringList groups;
    QString prefix;
    QSharedPointer<QSettings> settings;
};

BaseSettings::BaseSettings(const QString& applicationName)
    : d(std::make_unique<Private>())
{
    d->settings = openSettings(applicationName);
}

BaseSettings::~BaseSettings() = default;

QString BaseSettings::fileName(const QString& applicationName)
{
    // Where QSettings keeps a user's INI file, worked out without reading anything.
    QString folder;
#ifdef Q_OS_WIN
    standardFolderPath(0, folder);
#else
    folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
#endif
    const QString organization = QCoreApplication::organizationName();
    return QStringLiteral("%1/%2/%3.ini")
        .arg(folder, organization.isEmpty() ? QStringLiteral("Unknown Organization") : organization,
             applicationName.isEmpty() ? QCoreApplication::applicationName() : applicationName);
}

QSharedPointer<QSettings> BaseSettings::openSettings(const QString& applicationName)
{
    // QSettings reads its file as it is made. Made from the one file, so that no other is read;
    // a file that is not safe to read is left alone, and the settings are then kept nowhere.
    const QString path = fileName(applicationName);
    auto settings = QSharedPointer<QSettings>::create(isSafeToRead(path) ? path : QString(),
                                                      QSettings::IniFormat);
    settings->setFallbacksEnabled(false);
    return settings;
}

void BaseSettings::pushGroup(const QString& name)
{
    d->groups.append(name);
    d->prefix = d->groups.join(QLatin1Char('/'));
}

QString BaseSettings::fullKey(const QString& key) const
{
    return d->prefix.isEmpty() ? key : d->prefix + QLatin1Char('/') + key;
}

bool BaseSettings::contains(const QString& key) const
{
    return d->settings->contains(fullKey(key));
}

QVariant BaseSettings::value(const QString& key, const QVariant& defaultValue) const
{
    return contains(key) ? d->settings->value(fullKey(key), defaultValue) : defaultValue;
}

void BaseSettings::setValue(const QString& key, const QVariant& value)
{
    d->settings->setValue(fullKey(key), value);
}

QString BaseSettings::commonKey(const QString& key)
{
    return QStringLiteral("common/") + key;
}

void BaseSettings::beginGroups()
{
    for (const QString& group : std::as_const(d->groups))
        d->settings->beginGroup(group);
}

void BaseSettings::removeGroup(const QString& path)
{
    QStringList parents = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (parents.isEmpty())
        return;
    const QString last = parents.takeLast();
    for (const QString& group : std::as_const(parents))
        d->settings->beginGroup(group);
    // Removing a group's name removes its keys and child groups with it.
    d->settings->remove(last);
    for (qsizetype index = 0; index < parents.size(); ++index)
        d->settings->endGroup();
}

QSharedPointer<QSettings> BaseSettings::settings() const
{
    return d->settings;
}
