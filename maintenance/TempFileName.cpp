#include "TempFileName.h"
#include "FileDirTools.h"
#include "FileDirTools_p.h"

#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex counterMutex;
quint32 counter = 0;

quint32 nextNumber()
{
    QMutexLocker lock(&counterMutex);
    return counter++;
}

} // namespace

struct TempFileName::Private
{
    bool generated = false;
    QString path;
};

TempFileName::TempFileName()
    : d(std::make_unique<Private>())
{}

TempFileName::~TempFileName() = default;

QString TempFileName::uniqueTempFileName()
{
    if (d->generated)
        return d->path;
    const QString folder = tempFolder();
    makePath(folder);
    const quint32 number = nextNumber();
    d->path = QStringLiteral("%1/%2%3").arg(
        folder, QStringLiteral("%1_%2").arg(FileDirPlatform::processId()).arg(number),
        QStringLiteral(".tmp"));
    d->generated = true;
    return d->path;
}
