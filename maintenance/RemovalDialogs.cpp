#include "RemovalDialogs.h"

#include "FileDirTools.h"
#include "FileNames.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>

namespace {

// Texts name paths; a byte of a name that is not UTF-8 shows as the desktop shows it.
void tell(const QString& text)
{
    QMessageBox::warning(QApplication::activeWindow(),
                         QCoreApplication::translate("RemovalDialogs", "Not Removed"),
                         displayFileName(text));
}

// A linked folder's data is not where the link was.
QString linkNote(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isSymLink() || !info.isDir())
        return {};
    return QCoreApplication::translate(
               "RemovalDialogs",
               "\"%1\" was a link: only the link was removed. Its data is still in \"%2\".")
        .arg(path, info.symLinkTarget());
}

} // namespace

bool trashForUser(const QStringList& paths)
{
    QStringList existing;
    QStringList notes;
    for (const QString& path : paths) {
        if (!entryExists(path))
            continue;
        existing.append(path);
        notes.append(linkNote(path));
    }
    QString refusals;
    const QStringList failed = moveAllToRecycleBin(existing, &refusals);
    for (qsizetype i = existing.size() - 1; i >= 0; --i) {
        if (notes.at(i).isEmpty() || failed.contains(existing.at(i)))
            notes.removeAt(i);
    }
    if (!notes.isEmpty())
        QMessageBox::information(QApplication::activeWindow(),
                                 QCoreApplication::translate("RemovalDialogs", "Link Removed"),
                                 displayFileName(notes.join(QLatin1Char('\n'))));
    if (!failed.isEmpty())
        tell(refusals);
    return failed.isEmpty();
}

void trashOrDeleteForUser(const QString& path)
{
    if (!entryExists(path))
        return;
    const QString note = linkNote(path);
    QString refusal;
    if (moveToRecycleBin(path, &refusal)) {
        if (!note.isEmpty())
            QMessageBox::information(QApplication::activeWindow(),
                                     QCoreApplication::translate("RemovalDialogs", "Link Removed"),
                                     displayFileName(note));
        return;
    }
    const QMessageBox::StandardButton answer = QMessageBox::question(
        QApplication::activeWindow(),
        QCoreApplication::translate("RemovalDialogs", "Delete for Good?"),
        QCoreApplication::translate("RemovalDialogs",
                                    "%1\n\nDelete \"%2\" for good instead? This cannot be undone.")
            .arg(displayFileName(refusal), displayFileName(path)),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;
    QString failure;
    if (!removePermanently(path, &failure))
        tell(failure);
    else if (!note.isEmpty())
        QMessageBox::information(QApplication::activeWindow(),
                                 QCoreApplication::translate("RemovalDialogs", "Link Removed"),
                                 displayFileName(note));
}
