#include "FuzzSupport.h"
#include "RegistryTools.h"

// Desktop entries: key-file values and the program of an Exec line. Input: a group, a key and a
// value on the first three lines, then the key file.

namespace {

// A key that reads back as written: what the parser would trim, split or take for a comment or a
// group header is not one.
bool isPlainKey(const QString& key)
{
    return !key.isEmpty() && key == key.trimmed() && !key.contains(QLatin1Char('='))
           && !key.startsWith(QLatin1Char('#')) && !key.startsWith(QLatin1Char('['));
}

void checkExecProgram(const QString& exec, const QString& program)
{
    const QString found = execProgram(exec);
    require(exec.contains(found), "the program is part of the Exec line");
    // "env" is passed over, to the program it runs.
    if (program.isEmpty() || program.contains(QLatin1Char('"')) || isEnvProgram(program))
        return;
    require(execProgram(QStringLiteral("\"%1\" %2").arg(program, exec)) == program,
            "a quoted program comes back without its quotes and arguments");
    if (program == program.trimmed() && !program.contains(QLatin1Char(' '))) {
        require(execProgram(program + QLatin1Char(' ') + exec) == program,
                "a program without blanks comes back without its arguments");
        if (!program.contains(QLatin1Char('=')))
            require(execProgram(QStringLiteral("env A=1 _b=2 %1 %2").arg(program, exec)) == program,
                    "env and its assignments are passed over");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 4);
    const QString group = QString::fromUtf8(fields.at(0));
    const QString key = QString::fromUtf8(fields.at(1));
    const QString value = QString::fromUtf8(fields.at(2)).trimmed();
    const QByteArray& text = fields.at(3);

    const QString found = keyFileValue(text, group, key);
    require(found.size() <= maximumValueLength, "a value is no longer than the limit");
    require(found == found.trimmed(), "a value is trimmed");
    require(found.isEmpty() || (isUtf8(text) && QString::fromUtf8(text).contains(found)),
            "a value comes from the text");

    // Under a group of its own at the end, the entry is read back whatever came before it. (Lines
    // before the first header are in the group without a name, so that one is never new.)
    const QString header = QLatin1Char('[') + group + QLatin1Char(']');
    if (isUtf8(text) && !group.isEmpty() && !QString::fromUtf8(text).contains(header)
        && isPlainKey(key) && value.size() <= maximumValueLength) {
        const QString entry = QStringLiteral("\n%1\n%2=%3\n").arg(header, key, value);
        require(keyFileValue(text + entry.toUtf8(), group, key) == value,
                "an entry added in a group of its own is read back");
    }

    checkExecProgram(QString::fromUtf8(text), value);
    return 0;
}
