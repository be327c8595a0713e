#include "RegistryTools.h"

#include "win32/registry.h"

#include <QDebug>

namespace {

QStringList toStringList(const std::vector<std::wstring>& texts)
{
    QStringList list;
    for (const std::wstring& text : texts)
        list.append(QString::fromStdWString(text));
    return list;
}

} // namespace

QString readStringValue(const RegistryKey& key, const QString& subKey, const QString& valueName)
{
    return QString::fromStdWString(win32::readStringValue(
        static_cast<HKEY>(key), subKey.toStdWString(), valueName.toStdWString()));
}

QStringList productAssociations(const QString& productName, bool machine)
{
    return toStringList(win32::productAssociations(productName.toStdWString(), machine));
}

bool removeProductAssociation(const QString& extension, const QString& productName, bool machine)
{
    return win32::removeProductAssociation(extension.toStdWString(), productName.toStdWString(),
                                           machine);
}

QList<UninstallEntry> uninstallEntries(const QString& nameContains)
{
    QList<UninstallEntry> entries;
    for (const win32::UninstallEntry& entry : win32::uninstallEntries()) {
        const QString displayName = QString::fromStdWString(entry.displayName);
        const QString displayIcon = QString::fromStdWString(entry.displayIcon);
        if (displayName.contains(nameContains, Qt::CaseInsensitive)
            && !isSupportToolEntry(displayName, displayIcon)) {
            entries.append({QString::fromStdWString(entry.installLocation), displayIcon,
                            displayName, QString::fromStdWString(entry.displayVersion)});
        }
    }
    return entries;
}

QString currentUserSid()
{
    return QString::fromStdWString(
        win32::currentUserSid([](const char* message) { qDebug() << message; }));
}

QString environmentVariable(const QString& name)
{
    return QString::fromStdWString(
        win32::environmentVariable(currentUserSid().toStdWString(), name.toStdWString()));
}

bool setEnvironmentVariable(const QString& name, const QString& value)
{
    return win32::setEnvironmentVariable(currentUserSid().toStdWString(), name.toStdWString(),
                                         value.toStdWString());
}

bool removeEnvironmentVariable(const QString& name)
{
    return win32::removeEnvironmentVariable(currentUserSid().toStdWString(), name.toStdWString());
}
