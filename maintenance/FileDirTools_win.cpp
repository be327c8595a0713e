#include "FileDirTools.h"

#include <QDir>
#include <QProcess>

void revealInExplorer(const QString& path)
{
    if (path.isEmpty())
        return;
    QProcess::startDetached(QStringLiteral("explorer.exe"),
                            {QStringLiteral("/select,"), QDir::toNativeSeparators(path)},
                            QString());
}
