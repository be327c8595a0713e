#pragma once

#include <QString>

#include <memory>

// Holds one C stream of a named file, opened with the checked fopen of FileDirTools, and closes it
// when it goes away. Failures are logged with the file name.
class FileStream
{
public:
    FileStream(const QString& path, const char* mode);
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    bool close();
    bool isOpen() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
