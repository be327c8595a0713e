#include "FuzzSupport.h"
#include "RegistryTools.h"

#include <QRegularExpression>

// environment.d: reading a variable, and setting or removing it with every other line kept.
// Input: a name and a value on the first two lines, then the file.

namespace {

bool isVariableName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return pattern.match(name).hasMatch();
}

bool isStorable(const QString& value)
{
    return value.size() <= maximumValueLength && !value.contains(QLatin1Char('\n'))
           && !value.contains(QLatin1Char('\r')) && !value.contains(QChar::Null);
}

void checkRemoval(const QByteArray& text, const QString& name)
{
    const QByteArray result = withoutEnvironmentValue(text, name);
    QList<qsizetype> removed;
    require(isLinesRemoved(linesOf(text), linesOf(result), &removed),
            "removing takes out whole lines only");
    require(isUtf8(text) || result == text, "text that is not UTF-8 stays as it is");
    if (isVariableName(name))
        require(environmentValue(result, name).isEmpty(), "a removed variable is gone");
    require(withoutEnvironmentValue(result, name) == result, "removing is idempotent");
}

void checkSetting(const QByteArray& text, const QString& name, const QString& value)
{
    const QByteArray result = withEnvironmentValue(text, name, value);
    const bool accepted = isUtf8(text) && isVariableName(name) && isStorable(value);
    require(result.isEmpty() != accepted, "exactly the good names and values are written");
    if (!accepted)
        return;
    require(environmentValue(result, name) == value, "a value set is read back");
    require(withEnvironmentValue(result, name, value) == result, "setting is idempotent");
    const QByteArray without = withoutEnvironmentValue(result, name);
    require(linesOf(result).size() == linesOf(without).size() + 1, "one line assigns the name");
    // Every other line stays; a last line without its end gains one.
    QByteArray others = withoutEnvironmentValue(text, name);
    if (others == text && !text.isEmpty() && !text.endsWith('\n'))
        others += '\n';
    require(without == others, "other lines stay as they were");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 3);
    const QString name = QString::fromUtf8(fields.at(0));
    const QString value = QString::fromUtf8(fields.at(1));
    const QByteArray& text = fields.at(2);

    const QString found = environmentValue(text, name);
    require(found.size() <= maximumValueLength, "a value is no longer than the limit");
    require(found.isEmpty() || isUtf8(text), "text that is not UTF-8 holds no values");

    checkRemoval(text, name);
    checkSetting(text, name, value);
    return 0;
}
