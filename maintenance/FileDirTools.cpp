#include "FileDirTools.h"

#include <QDebug>
#include <QFile>
#include <QTextStream>

bool writeTextFile(const QString& path, const QString& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        qDebug() << QStringLiteral("Failed to open writable text file: %1").arg(path);
        return false;
    }
    QTextStream stream(&file);
    stream.setEncoding(QStringConverter::Utf8);
    stream << text;
    stream.flush();
    return stream.status() == QTextStream::Ok;
}
