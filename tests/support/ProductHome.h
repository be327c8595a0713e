#pragma once

#include "BaseSettings.h"
#include "TestEnvironment.h"

#include <QMap>

// A private home with the product set up as a user has it: data folder, identifier, preferences,
// cache and its design type's association (on Windows in the user's registry, which the home's
// end removes again); the machine's association folders are private too.
// One home serves a whole test executable; prepare() puts its files back between tests.
class ProductHome
{
public:
    ProductHome();
    ~ProductHome();

    bool isValid() const { return m_valid; }
    QString path(const QString& relative) const { return m_environment.path(relative); }
    QString dataFolder() const { return path(QStringLiteral(".local/share/Corvanta")); }
    QString preferences() const { return BaseSettings::fileName(QStringLiteral("Corvanta")); }
    QString userMimeapps() const { return path(QStringLiteral(".config/mimeapps.list")); }

    // Empties the home, trash included, and writes the product's files again.
    bool prepare();

    static const QByteArray mimeapps;               // the user's, with the product's entry
    static const QByteArray mimeappsWithoutProduct; // the same after its removal
    static const QByteArray preferencesText;
    static const QByteArray repairedPreferences;

private:
    TestEnvironment m_environment;
    QByteArray m_savedConfigDirs;
    QByteArray m_savedDataDirs;
    bool m_valid = false;
};

// Every entry below the folder but the paths without and what is below them, links not followed:
// files with their bytes, folders as "<dir>", links as "-> target".
QMap<QString, QByteArray> treeSnapshot(const QString& folder, const QStringList& without = {});
// The trash's folder, with files/ and info/.
QString trashFolder();
// What trash-list shows, one "date time path" line per item.
QString trashList();
// Answers trash-restore's question for the one item trashed from the folder.
bool trashRestore(const QString& folder);
