#include "FileDirTools.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace {

void openContainingFolder(const QString& path)
{
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(path).absolutePath());
    if (!QDesktopServices::openUrl(folder))
        qDebug() << "Failed to open folder" << folder.toLocalFile();
}

} // namespace

void revealInExplorer(const QString& path)
{
    if (path.isEmpty())
        return;
    QString local = path;
    if (local.startsWith(QStringLiteral("file://")))
        local.remove(0, 7);

    // The file manager's own interface selects the item; without one, open its folder instead.
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(local).toString(QUrl::FullyEncoded)} << QString();
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
    auto finish = [watcher, local] {
        if (watcher->isError()) {
            qDebug() << "File manager could not show" << local << watcher->error().message();
            openContainingFolder(local);
        }
        watcher->deleteLater();
    };
    if (watcher->isFinished())
        finish();
    else
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, finish);
}
