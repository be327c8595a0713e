#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

// One low-level file descriptor of a named file. Every operation answers with a plain result and
// writes the reason of a failure, with the file name and the system's error text, to the debug
// log. Open flags are the C-runtime values of FileDirTools' OpenFlags; -1 means read only.
class FileHandle
{
public:
    explicit FileHandle(const QString& path, int flags = -1, bool createFirst = false);
    virtual ~FileHandle();
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    virtual bool open(const QString& path, int flags);
    virtual bool close();
    // The current offset, or -1.
    virtual qint64 position();
    // Both succeed only when exactly length bytes were read; readExact also logs how many came.
    virtual bool readExact(void* buffer, qint64 length);
    virtual bool read(void* buffer, qint64 length);
    virtual bool seekToStart();
    virtual bool seekToEnd();
    // Seeking past the end is allowed; only a negative resulting offset fails.
    virtual bool seek(qint64 offset, bool fromCurrent = false);
    virtual bool write(const void* data, qint64 length);
    virtual bool write(const char* data, qint64 length);

    // Replaces text with length bytes read as UTF-8 in pieces of at most chunk bytes. A length of
    // -1 reads to the end of the file but stops at the first zero byte and leaves the position
    // just past it.
    bool readText(QString& text, qint64 length, qint64 chunk);
    bool readText(QString& text, qint64 length);
    bool write(const QByteArray& data);
    // Measured once and kept until the next write; -1 when unknown.
    qint64 size();
    int handle() const;
    bool isOpen() const;
    bool isClosed() const;

private:
    // Logs the invalid-handle text when closed.
    bool checkOpen() const;

    struct Private;
    std::unique_ptr<Private> d;
};
