#include "FileHandle.h"

#include "FileDirTools.h"

#include <QDebug>
#include <QStringDecoder>
#include <QVarLengthArray>

#include <cerrno>
#include <cstdio>
#include <cstring>

// The C runtime's names on Windows, POSIX elsewhere.
#ifdef Q_OS_WIN
#include <io.h>
#define CRT_LSEEK _lseeki64
#define CRT_READ _read
#define CRT_WRITE _write
using CrtCount = unsigned;
#else
#include <unistd.h>
#define CRT_LSEEK ::lseek
#define CRT_READ ::read
#define CRT_WRITE ::write
using CrtCount = size_t;
#endif

namespace {

const qint64 defaultChunk = 0x100000;

qint64 seekDescriptor(int fd, qint64 offset, int origin)
{
    return CRT_LSEEK(fd, offset, origin);
}

qint64 readDescriptor(int fd, void* buffer, qint64 length)
{
    return CRT_READ(fd, buffer, CrtCount(length));
}

qint64 writeDescriptor(int fd, const void* data, qint64 length)
{
    return CRT_WRITE(fd, data, CrtCount(length));
}

// Decodes each piece on its own, as QString::fromUtf8 does, but straight into the text's storage:
// no temporary string inside the benchmark's timed reads.
void appendUtf8(QString& text, const char* bytes, qint64 count)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const qsizetype start = text.size();
    text.resize(start + count);
    const QChar* end = decoder.appendToBuffer(text.data() + start, QByteArrayView(bytes, count));
    text.truncate(end - text.constData());
}

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

} // namespace

struct FileHandle::Private
{
    int fd = -1;
    QString fileName;
    qint64 cachedSize = -1;
};

FileHandle::FileHandle(const QString& path, int flags, bool createFirst)
    : d(std::make_unique<Private>())
{
    if (createFirst && !createEmptyFile(path))
        return;
    open(path, flags);
}

FileHandle::~FileHandle()
{
    close();
}

bool FileHandle::open(const QString& path, int flags)
{
    close();
    if (flags == -1)
        flags = OpenReadOnly;
    const int fd = openChecked(path, flags);
    if (fd < 0) {
        const int error = errno;
        qDebug().noquote() << QStringLiteral("FileHandle failed to open \"%1\". %2 (errno=%3)")
                                  .arg(path, errorText(error), QString::number(error));
        return false;
    }
    d->fd = fd;
    d->fileName = path;
    // A size measured for an earlier file does not hold for this one.
    d->cachedSize = -1;
    return true;
}

bool FileHandle::close()
{
    if (d->fd < 0)
        return true;
    if (closeDescriptor(d->fd) != 0) {
        const int error = errno;
        qDebug().noquote() << QStringLiteral("Failed to close \"%1\". %2 (errno=%3)")
                                  .arg(d->fileName, errorText(error), QString::number(error));
        return false;
    }
    d->fd = -1;
    return true;
}

qint64 FileHandle::position()
{
    return seekDescriptor(d->fd, 0, SEEK_CUR);
}

bool FileHandle::readExact(void* buffer, qint64 length)
{
    if (!checkOpen())
        return false;
    errno = 0; // a short read sets none
    const qint64 count = readDescriptor(d->fd, buffer, length);
    if (count == length)
        return true;
    const int error = errno;
    qDebug().noquote() << QStringLiteral(
                              "Failed to read %1 bytes from \"%2\". Read only %3. %4 (errno=%5)")
                              .arg(QString::number(length), d->fileName, QString::number(count),
                                   errorText(error), QString::number(error));
    return false;
}

bool FileHandle::read(void* buffer, qint64 length)
{
    if (!checkOpen())
        return false;
    errno = 0; // a short read sets none
    if (readDescriptor(d->fd, buffer, length) == length)
        return true;
    const int error = errno;
    qDebug().noquote() << QStringLiteral("Failed to read %1 bytes from \"%2\". %3 (errno=%4)")
                              .arg(QString::number(length), d->fileName, errorText(error),
                                   QString::number(error));
    return false;
}

bool FileHandle::seekToStart()
{
    return checkOpen() && seekDescriptor(d->fd, 0, SEEK_SET) != -1;
}

bool FileHandle::seekToEnd()
{
    return checkOpen() && seekDescriptor(d->fd, 0, SEEK_END) != -1;
}

bool FileHandle::seek(qint64 offset, bool fromCurrent)
{
    if (!checkOpen())
        return false;
    if (seekDescriptor(d->fd, offset, fromCurrent ? SEEK_CUR : SEEK_SET) != -1)
        return true;
    qDebug().noquote() << QStringLiteral("Illegal file cursor seek with %1 for \"%2\"")
                              .arg(QString::number(offset), d->fileName);
    return false;
}

bool FileHandle::write(const void* data, qint64 length)
{
    if (!checkOpen())
        return false;
    if (writeDescriptor(d->fd, data, length) == length) {
        d->cachedSize = -1;
        return true;
    }
    const int error = errno;
    qDebug().noquote() << QStringLiteral("Failed to write %1 bytes to \"%2\". %3 (errno=%4)")
                              .arg(QString::number(length), d->fileName, errorText(error),
                                   QString::number(error));
    return false;
}

bool FileHandle::write(const char* data, qint64 length)
{
    return write(static_cast<const void*>(data), length);
}

bool FileHandle::readText(QString& text, qint64 length, qint64 chunk)
{
    if (!checkOpen())
        return false;
    if (chunk < 1) {
        qDebug().noquote() << QStringLiteral("Invalid buffer length %1.").arg(chunk);
        return false;
    }
    if (length != -1) {
        // No larger than needed, and off the heap for the benchmark's short timed reads.
        QVarLengthArray<char, 4096> buffer(qMin(chunk, qMax(length, qint64(1))));
        text.clear();
        text.reserve(length);
        for (qint64 remaining = length; remaining > 0;) {
            const qint64 count = qMin(chunk, remaining);
            if (!read(buffer.data(), count))
                return false;
            appendUtf8(text, buffer.constData(), count);
            remaining -= count;
        }
        return true;
    }
    QByteArray buffer(chunk + 1, '\0');
    qint64 remaining = size() - position();
    text.clear();
    while (remaining > 0) {
        const qint64 count = qMin(chunk, remaining);
        if (!read(buffer.data(), count))
            return false;
        buffer[count] = '\0';
        const qint64 appended = qstrnlen(buffer.constData(), size_t(count));
        appendUtf8(text, buffer.constData(), appended);
        remaining -= count;
        if (appended < count) {
            // A failed seek logs its own reason; the text read so far stands.
            seek(appended - count + 1, true);
            return true;
        }
    }
    return true;
}

bool FileHandle::readText(QString& text, qint64 length)
{
    return readText(text, length, defaultChunk);
}

bool FileHandle::write(const QByteArray& data)
{
    return write(data.constData(), data.size());
}

qint64 FileHandle::size()
{
    if (d->fd >= 0 && d->cachedSize < 0) {
        const qint64 offset = position();
        d->cachedSize = seekDescriptor(d->fd, 0, SEEK_END);
        seekDescriptor(d->fd, offset, SEEK_SET);
    }
    return d->cachedSize;
}

int FileHandle::handle() const
{
    return d->fd;
}

bool FileHandle::isOpen() const
{
    return d->fd >= 0;
}

bool FileHandle::isClosed() const
{
    return d->fd < 0;
}

bool FileHandle::checkOpen() const
{
    if (d->fd >= 0)
        return true;
    qDebug().noquote() << QStringLiteral("Invalid file handle for \"%1\"").arg(d->fileName);
    return false;
}
