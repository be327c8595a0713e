#pragma once

#include <QString>

#include <memory>

// A unique name in the tool's temporary folder, "<pid>_<counter>.tmp". The name is made on the
// first request and then kept, so one holder always answers the same path. No file is created.
class TempFileName
{
public:
    TempFileName();
    ~TempFileName();
    TempFileName(const TempFileName&) = delete;
    TempFileName& operator=(const TempFileName&) = delete;

    // Safe to call from several threads on different holders.
    QString uniqueTempFileName();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
