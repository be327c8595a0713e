#include "FuzzSupport.h"
#include "SystemProfileParsers.h"

#include <QRegularExpression>

// os-release values and the kernel's major.minor. Input: a key and a value on the first two lines,
// then the file.

using namespace SystemProfileParsers;

namespace {

// What the parser would trim, split or take for a comment cannot be a key.
bool isPlainKey(const QString& key)
{
    return !key.isEmpty() && key == key.trimmed() && !key.contains(QLatin1Char('='))
           && !key.startsWith(QLatin1Char('#'));
}

// The value in double quotes, with the shell's special characters escaped.
QString quoted(QString value)
{
    static const QRegularExpression special(QStringLiteral("([\\\\\"'$`])"));
    return QLatin1Char('"') + value.replace(special, QStringLiteral("\\\\1")) + QLatin1Char('"');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 3);
    const QString key = QString::fromUtf8(fields.at(0));
    const QString value = QString::fromUtf8(fields.at(1));
    const QString text = QString::fromUtf8(fields.at(2));

    require(!osReleaseValue(text, key).contains(QLatin1Char('\n')), "a value is one line");
    if (isPlainKey(key)) {
        // The last assignment wins, so one added at the end is read back, however it is quoted.
        const QString assignment = QStringLiteral("%1\n%2=%3\n").arg(text, key, quoted(value));
        require(osReleaseValue(assignment, key) == value, "a quoted value is read back");
        if (!value.isEmpty() && value == value.simplified() && !value.contains(QLatin1Char(' '))
            && !value.contains(QLatin1Char('"')) && !value.contains(QLatin1Char('\''))) {
            const QString bare = QStringLiteral("%1\n%2=%3\n").arg(text, key, value);
            require(osReleaseValue(bare, key) == value, "a bare value is read back");
        }
    }

    static const QRegularExpression majorMinor(QStringLiteral("^\\d+\\.\\d+$"));
    const QString kernel = kernelMajorMinor(text);
    require(kernel.isEmpty()
                || (majorMinor.match(kernel).hasMatch() && text.trimmed().startsWith(kernel)),
            "a kernel version is the release's leading major.minor");
    return 0;
}
