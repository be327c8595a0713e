#pragma once

#include <QSettings>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

// The tool's own settings: a user INI file under the organization's name, whose keys can be put
// under a stack of groups, plus a shared group "common".
class BaseSettings
{
public:
    // An empty name opens the running application's own file.
    explicit BaseSettings(const QString& applicationName = QString());
    virtual ~BaseSettings();

    // The user's INI file of the application; an empty name gives the running application's.
    static QString fileName(const QString& applicationName);
    // A missing key is never looked up in the system-wide or organization-wide files.
    static QSharedPointer<QSettings> openSettings(const QString& applicationName);

    void pushGroup(const QString& name);
    QString fullKey(const QString& key) const;
    bool contains(const QString& key) const;
    QVariant value(const QString& key, const QVariant& defaultValue = QVariant()) const;
    virtual void setValue(const QString& key, const QVariant& value);
    // The key in the group "common", whatever groups are pushed.
    static QString commonKey(const QString& key);
    // Enters the pushed groups on the store itself.
    void beginGroups();
    // Removes the group at the "/"-separated path with everything below it.
    void removeGroup(const QString& path);

    QSharedPointer<QSettings> settings() const;

private:
    Q_DISABLE_COPY(BaseSettings)
    struct Private;
    std::unique_ptr<Private> d;
};
