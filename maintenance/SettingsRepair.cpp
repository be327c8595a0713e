#include "SettingsRepair.h"

#include <QDebug>
#include <QFile>
#include <QSaveFile>

namespace {

const QString dateTimeLead = QStringLiteral("=@DateTime(");

} // namespace

QString repairedSettingsText(const QString& text, int* emptied)
{
    // Built in one pass: removing each body in place made a large file take minutes.
    QString result;
    result.reserve(text.size());
    int count = 0;
    qsizetype copied = 0;
    // A lead at position 0 has no key before it and is left alone, together with the rest.
    qsizetype position = text.indexOf(dateTimeLead);
    while (position > 0) {
        const qsizetype bodyStart = position + dateTimeLead.size();
        const qsizetype close = text.indexOf(QLatin1Char(')'), bodyStart);
        if (close < 0)
            break;
        result += QStringView(text).mid(copied, bodyStart - copied);
        copied = close;
        if (close > bodyStart)
            ++count;
        // The next lead cannot begin inside the emptied value or at its ")".
        position = text.indexOf(dateTimeLead, close + 1);
    }
    result += QStringView(text).mid(copied);
    if (emptied)
        *emptied = count;
    return result;
}

bool repairSettingsFile(const QString& path, int* emptied, QString* errorText)
{
    const auto failed = [&](const QString& reason) {
        qDebug().noquote()
            << QStringLiteral("Failed to repair preferences %1: %2").arg(path, reason);
        if (errorText)
            *errorText = reason;
        return false;
    };
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failed(file.errorString());
    const QString text = QString::fromUtf8(file.readAll());
    file.close();
    const QString repaired = repairedSettingsText(text, emptied);
    if (repaired == text)
        return true;
    const QByteArray bytes = repaired.toUtf8();
    // Unbuffered: Qt 6.4's QSaveFile commits even when the write that close() flushes fails,
    // which on a full disk would replace the preferences with an empty file.
    QSaveFile output(path);
    if (!output.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        || output.write(bytes) != bytes.size() || !output.commit())
        return failed(output.errorString());
    return true;
}
