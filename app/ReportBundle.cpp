#include "ReportBundle.h"

#include "FileDirTools.h"
#include "ReportExport.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFile>

namespace {

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush())
        return true;
    qDebug().noquote() << QStringLiteral("Failed to write %1: %2").arg(path, file.errorString());
    return false;
}

// The checksum lines of the named files as they now stand on disk.
QByteArray checksums(const QDir& folder, const QStringList& names)
{
    QByteArray sums;
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        QCryptographicHash hash(QCryptographicHash::Sha256);
        if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
            return {};
        sums += hash.result().toHex() + "  " + name.toUtf8() + '\n';
    }
    return sums;
}

} // namespace

bool saveReportBundle(const QString& parent, const QDateTime& now, const QString& text,
                      const QImage& picture, const QByteArray& json, QString* folder)
{
    *folder = parent + QLatin1Char('/') + reportFolderName(now);
    const QDir dir(*folder);
    QDir().mkpath(*folder);
    bool written = writeTextFile(dir.filePath(QStringLiteral("report.txt")), text);
    QStringList names{QStringLiteral("report.txt")};

    // With no pictures there is nothing to save; the text file alone is the report.
    const QString picturePath = dir.filePath(QStringLiteral("report.png"));
    if (picture.isNull()) {
        qDebug() << "No pictures for" << picturePath;
    } else {
        written = picture.save(picturePath, "PNG", -1) && written;
        names << QStringLiteral("report.png");
    }
    if (json.isEmpty())
        return written;

    written = writeFile(dir.filePath(QStringLiteral("report.json")), json) && written;
    names << QStringLiteral("report.json");
    names.sort();
    const QByteArray sums = written ? checksums(dir, names) : QByteArray();
    return !sums.isEmpty() && writeFile(dir.filePath(QStringLiteral("SHA256SUMS")), sums);
}
