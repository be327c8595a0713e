#include "FuzzSupport.h"
#include "SystemProfileParsers.h"

#include <limits>

// /proc/meminfo's MemTotal and the memory block size of sysfs. Input: a number on the first line,
// then the file.

using namespace SystemProfileParsers;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 2);
    bool isNumber = false;
    const quint64 number = fields.at(0).trimmed().toULongLong(&isNumber);
    const QString text = QString::fromUtf8(fields.at(1));

    require(memTotalBytes(text) % 1024 == 0, "a total is whole kilobytes");
    if (isNumber) {
        const QString meminfo = QStringLiteral("MemTotal:       %1 kB\n").arg(number) + text;
        const bool fits = number <= std::numeric_limits<quint64>::max() / 1024;
        require(memTotalBytes(meminfo) == (fits ? number * 1024 : 0),
                "the first MemTotal line is read, or 0 when its bytes do not fit");
        const QString hex = QStringLiteral(" %1\n").arg(number, 0, 16);
        require(hexBytes(hex) == number, "a hexadecimal block size is read back");
    }
    hexBytes(text);
    return 0;
}
