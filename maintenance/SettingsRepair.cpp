#include "SettingsRepair.h"

#include <QDebug>
#include <QFile>
#include <QSaveFile>

namespace {

const QString dateTimeLead = QStringLiteral("=@DateTime(");

} // namespace

QString repairedSettingsText(const QString& text)
{
    QString result = text;
    // A lead at position 0 has no key before it and is left alone, together with the rest.
    qsizetype position = result.indexOf(dateTimeLead);
    while (position > 0) {
        const qsizetype bodyStart = position + dateTimeLead.size();
        const qsizetype close = result.indexOf(QLatin1Char(')'), bodyStart);
        if (close < 0)
            break;
        result.remove(bodyStart, close - bodyStart);
        position = result.indexOf(dateTimeLead, position + 1);
    }
    return result;
}

bool repairSettingsFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QString text = QString::fromUtf8(file.readAll());
    file.close();
    const QString repaired = repairedSettingsText(text);
    if (repaired == text)
        return true;
    const QByteArray bytes = repaired.toUtf8();
    // Unbuffered: Qt 6.4's QSaveFile commits even when the write that close() flushes fails,
    // which on a full disk would replace the preferences with an empty file.
    QSaveFile output(path);
    if (!output.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        || output.write(bytes) != bytes.size() || !output.commit()) {
        qDebug().noquote() << QStringLiteral("Failed to repair preferences %1: %2")
                                  .arg(path, output.errorString());
        return false;
    }
    return true;
}
