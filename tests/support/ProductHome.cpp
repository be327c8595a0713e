#include "ProductHome.h"

#include "FileDirTools.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>

using namespace Qt::StringLiterals;

// The product's id leaves the added association's line; the other stays.
const QByteArray ProductHome::mimeappsWithoutProduct =
    "# kept comment\r\n"
    "[Added Associations]\n"
    "application/x-corvanta-design=org.other.desktop;\n"
    "\n"
    "[Default Applications]\n"
    "application/x-corvanta-other=other.desktop;\n";
const QByteArray ProductHome::mimeapps = QByteArray(ProductHome::mimeappsWithoutProduct)
                                             .replace("=org.other", "=Corvanta.desktop;org.other")
                                         + "application/x-corvanta-design=Corvanta.desktop;\n";
const QByteArray ProductHome::preferencesText =
    "[General]\nlastCheck=@DateTime(\0\0\0\x10\0\0\0\0\0\0%\x8a\xa0\x4)\nname=Ada\xc3\xa9\n"_ba;
const QByteArray ProductHome::repairedPreferences =
    "[General]\nlastCheck=@DateTime()\nname=Ada\xc3\xa9\n";

ProductHome::ProductHome()
    : m_savedConfigDirs(qgetenv("XDG_CONFIG_DIRS"))
    , m_savedDataDirs(qgetenv("XDG_DATA_DIRS"))
{
    // The product's preferences are found under the organization's name, as the program sets it.
    QCoreApplication::setOrganizationName(u"Kelvanmoor"_s);
    qputenv("XDG_CONFIG_DIRS", path(u"system-config"_s).toUtf8());
    qputenv("XDG_DATA_DIRS", path(u"system-data"_s).toUtf8());
    // The design types and their extensions, read by every later MIME look-up of this process.
    const QByteArray types =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
        "<mime-type type=\"application/x-corvanta-design\"><glob pattern=\"*.cvd\"/></mime-type>\n"
        "<mime-type type=\"application/x-corvanta-other\"><glob pattern=\"*.cvo\"/></mime-type>\n"
        "</mime-info>\n";
    m_valid = m_environment.isValid()
              && putFile(path(u".local/share/mime/packages/corvanta-test.xml"_s), types)
              && QProcess::execute(u"update-mime-database"_s, {path(u".local/share/mime"_s)}) == 0;
}

ProductHome::~ProductHome()
{
    qputenv("XDG_CONFIG_DIRS", m_savedConfigDirs);
    qputenv("XDG_DATA_DIRS", m_savedDataDirs);
}

bool ProductHome::prepare()
{
    for (const QString& folder : {u".local/share/Corvanta"_s, u".local/share/Trash"_s, u".config"_s,
                                  u".cache"_s, u"system-config"_s, u"system-data"_s})
        removePermanently(path(folder)); // names that are not UTF-8 included
    return QDir().mkpath(dataFolder() + u"/temp"_s)
           && putFile(dataFolder() + u"/userUUID.txt"_s, "6f1c2d3e-0000-4000-8000-0123456789ab")
           && putFile(dataFolder() + u"/temp/session.tmp"_s, "temporary")
           && putFile(path(u".cache/Corvanta/plasmids.json"_s), "[]")
           && putFile(preferences(), preferencesText) && putFile(userMimeapps(), mimeapps);
}

QMap<QString, QByteArray> treeSnapshot(const QString& folder)
{
    QMap<QString, QByteArray> tree;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo entry = it.nextFileInfo();
        tree.insert(entry.filePath(), entry.isSymLink() ? "-> " + entry.symLinkTarget().toUtf8()
                                      : entry.isDir()   ? "<dir>"
                                                        : fileBytes(entry.filePath()));
    }
    return tree;
}

QString trashList()
{
    QProcess list;
    list.start(u"trash-list"_s, {});
    list.waitForFinished(30000);
    return QString::fromUtf8(list.readAllStandardOutput());
}

bool trashRestore(const QString& folder)
{
    QProcess restore;
    restore.setWorkingDirectory(folder);
    restore.start(u"trash-restore"_s, {folder});
    restore.write("0\n");
    restore.closeWriteChannel();
    return restore.waitForFinished(30000) && restore.exitCode() == 0;
}
