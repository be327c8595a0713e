#include "ReportBundle.h"

#include "FileDirTools.h"
#include "ReportExport.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QScopeGuard>

#include <cerrno>
#include <cstring>

namespace {

QString systemReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

// Unbuffered, so a full disk is told by the write itself, and with the system's reason: Qt's
// own text for a short write is "Unknown error".
bool writeFile(const QString& path, const QByteArray& bytes, QString* problem)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        *problem = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    errno = 0;
    if (file.write(bytes) != bytes.size()) {
        *problem = QStringLiteral("%1: %2").arg(path, systemReason());
        return false;
    }
    return true;
}

} // namespace

bool saveReportBundle(const QString& parent, const QDateTime& now, const QString& text,
                      const QImage& picture, QString* folder)
{
    *folder = parent + QLatin1Char('/') + reportFolderName(now);
    const QDir dir(*folder);
    QDir().mkpath(*folder);
    const bool written = writeTextFile(dir.filePath(QStringLiteral("report.txt")), text);

    // With no pictures there is nothing to save; the text file alone is the report.
    const QString picturePath = dir.filePath(QStringLiteral("report.png"));
    if (picture.isNull()) {
        qDebug() << "No pictures for" << picturePath;
        return written;
    }
    return picture.save(picturePath, "PNG", -1) && written;
}

bool saveCompleteReportBundle(const QString& parent, const QDateTime& now, const QString& text,
                              const QImage& picture, const QByteArray& json, QString* folder,
                              QString* problem)
{
    // Hidden and named after this process, so two programs saving at once never share it.
    const QString name = parent + QLatin1Char('/') + reportFolderName(now);
    const QString temporary = QStringLiteral("%1/.%2.%3.partial")
                                  .arg(parent, reportFolderName(now),
                                       QString::number(QCoreApplication::applicationPid()));
    // A folder that is not there yet is made, as Save Report makes it, and goes again on failure.
    const bool madeParent = !QFileInfo::exists(parent) && QDir().mkpath(parent);
    if (!QDir().mkdir(temporary)) {
        *problem = QStringLiteral("%1: %2").arg(parent, systemReason());
        if (madeParent)
            QDir().rmdir(parent);
        return false;
    }
    auto removeTemporary = qScopeGuard([&temporary, &parent, madeParent] {
        QDir(temporary).removeRecursively();
        if (madeParent)
            QDir().rmdir(parent);
    });
    const QDir dir(temporary);
    QMap<QString, QByteArray> files{{QStringLiteral("report.txt"), text.toUtf8()},
                                    {QStringLiteral("report.json"), json}};
    if (!picture.isNull()) {
        QBuffer png(&files[QStringLiteral("report.png")]);
        if (!png.open(QIODevice::WriteOnly) || !picture.save(&png, "PNG", -1)) {
            *problem = QStringLiteral("%1/report.png: the picture could not be encoded").arg(name);
            return false;
        }
    }
    QByteArray sums;
    // A failure names the file where the user will look for it.
    const auto failed = [&] {
        problem->replace(temporary, name);
        return false;
    };
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        if (!writeFile(dir.filePath(it.key()), it.value(), problem))
            return failed();
        sums += QCryptographicHash::hash(it.value(), QCryptographicHash::Sha256).toHex() + "  "
                + it.key().toUtf8() + '\n';
    }
    if (!writeFile(dir.filePath(QStringLiteral("SHA256SUMS")), sums, problem))
        return failed();
    for (int copy = 1; copy < 100; ++copy) {
        *folder = copy == 1 ? name : QStringLiteral("%1 (%2)").arg(name, QString::number(copy));
        // The rename never replaces a folder that is already there.
        if (QFileInfo::exists(*folder))
            continue;
        if (QDir().rename(temporary, *folder)) {
            removeTemporary.dismiss();
            return true;
        }
        const QString reason = systemReason();
        // Taken between the look and the rename: the next name.
        if (!QFileInfo::exists(*folder)) {
            *problem = QStringLiteral("%1: %2").arg(*folder, reason);
            return false;
        }
    }
    *problem = QStringLiteral("%1: %2").arg(name, QString::fromLocal8Bit(std::strerror(EEXIST)));
    return false;
}
