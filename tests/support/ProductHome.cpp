#include "ProductHome.h"

#include "FileDirTools.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QSettings>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

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
#ifdef Q_OS_WIN
    m_valid = m_environment.isValid();
#else
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
#endif
}

ProductHome::~ProductHome()
{
#ifdef Q_OS_WIN
    QSettings(u"HKEY_CURRENT_USER\\Software\\Classes"_s, QSettings::NativeFormat).remove(u".cvd"_s);
#endif
    qputenv("XDG_CONFIG_DIRS", m_savedConfigDirs);
    qputenv("XDG_DATA_DIRS", m_savedDataDirs);
}

bool ProductHome::prepare()
{
    for (const QString& folder :
         {dataFolder(), trashFolder() + u"/files"_s, trashFolder() + u"/info"_s,
          QFileInfo(preferences()).absolutePath(), path(u".config"_s), path(u".cache"_s),
          path(u"system-config"_s), path(u"system-data"_s)})
        removePermanently(folder); // names that are not UTF-8 included
    // The trash's folders stay: Wine makes them only once per process.
    const bool written =
        QDir().mkpath(trashFolder() + u"/files"_s) && QDir().mkpath(trashFolder() + u"/info"_s)
        && putFile(dataFolder() + u"/userUUID.txt"_s, "6f1c2d3e-0000-4000-8000-0123456789ab")
        && putFile(dataFolder() + u"/temp/session.tmp"_s, "temporary")
        && putFile(path(u".cache/Corvanta/plasmids.json"_s), "[]")
        && putFile(preferences(), preferencesText);
#ifdef Q_OS_WIN
    QSettings classes(u"HKEY_CURRENT_USER\\Software\\Classes"_s, QSettings::NativeFormat);
    classes.setValue(u".cvd/Default"_s, u"Corvanta.cvd"_s);
    return written && classes.status() == QSettings::NoError;
#else
    return written && putFile(userMimeapps(), mimeapps);
#endif
}

QMap<QString, QByteArray> treeSnapshot(const QString& folder, const QStringList& without)
{
    QMap<QString, QByteArray> tree;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo entry = it.nextFileInfo();
        const QString path = entry.filePath();
        if (std::any_of(without.cbegin(), without.cend(), [&](const QString& left) {
                return path == left || path.startsWith(left + '/');
            }))
            continue;
        tree.insert(path, entry.isSymLink() ? "-> " + entry.symLinkTarget().toUtf8()
                          : entry.isDir()   ? "<dir>"
                                            : fileBytes(path));
    }
    return tree;
}

QString trashFolder()
{
    // Under Wine the Recycle Bin is the trash of the Unix home that Wine was started in.
    return qEnvironmentVariable("CORVANTA_TEST_TRASH",
                                qEnvironmentVariable("XDG_DATA_HOME") + u"/Trash"_s);
}

QString trashList()
{
#ifdef Q_OS_WIN
    // Wine's Recycle Bin keeps freedesktop records of Unix paths, which Wine names as Windows does.
    using DosName = WCHAR*(CDECL*)(LPCSTR);
    const auto dosName = reinterpret_cast<DosName>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"kernel32"), "wine_get_dos_file_name")));
    QString listed;
    for (const QFileInfo& info : QDir(trashFolder() + u"/info"_s).entryInfoList(QDir::Files)) {
        QMap<QByteArray, QByteArray> record;
        for (const QByteArray& line : fileBytes(info.filePath()).split('\n'))
            record.insert(line.left(line.indexOf('=')), line.mid(line.indexOf('=') + 1));
        WCHAR* path = dosName(QByteArray::fromPercentEncoding(record.value("Path")));
        listed += QString::fromUtf8(record.value("DeletionDate").replace('T', ' ')) + ' '
                  + QDir::fromNativeSeparators(QString::fromWCharArray(path)) + '\n';
        HeapFree(GetProcessHeap(), 0, path);
    }
    return listed;
#else
    QProcess list;
    list.start(u"trash-list"_s, {});
    list.waitForFinished(30000);
    return QString::fromUtf8(list.readAllStandardOutput());
#endif
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
