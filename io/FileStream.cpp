#include "FileStream.h"

#include "FileDirTools.h"

#include <QDebug>

#include <cerrno>
#include <cstdio>
#include <cstring>

struct FileStream::Private
{
    QString fileName;
    FILE* stream = nullptr;
};

FileStream::FileStream(const QString& path, const char* mode)
    : d(std::make_unique<Private>())
{
    d->fileName = path;
    d->stream = fopenChecked(path, mode);
    if (!d->stream)
        qDebug().noquote() << QStringLiteral("Failed to open file stream: %1").arg(path);
}

FileStream::~FileStream()
{
    close();
}

bool FileStream::close()
{
    if (!d->stream)
        return false;
    // fclose lets go of the stream even when it fails, so it is never closed twice.
    const bool closed = std::fclose(d->stream) == 0;
    const int error = errno;
    d->stream = nullptr;
    if (!closed) {
        qDebug().noquote() << QStringLiteral("Failed to close \"%1\". %2 (errno=%3)")
                                  .arg(d->fileName, QString::fromLocal8Bit(std::strerror(error)),
                                       QString::number(error));
    }
    return closed;
}

bool FileStream::isOpen() const
{
    return d->stream != nullptr;
}
