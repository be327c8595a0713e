#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Pure conversions of file names and mount tables, kept apart from the file-system calls so that
// they can be tested and fuzzed on their own.

// A file name's bytes as text, and back. A byte that is not part of UTF-8 becomes a lone surrogate
// (U+DC80 to U+DCFF), so that a name that is not UTF-8 comes back to the same bytes and can be
// removed like any other.
QString decodeFileName(const QByteArray& bytes);
QByteArray encodeFileName(const QString& name);
// Whether the character at the index stands for such a byte.
bool isRawFileNameByte(QStringView name, qsizetype index);
// The name as the desktop shows it: each byte that is not UTF-8 as the replacement character.
QString displayFileName(const QString& name);

// The mount points in the text of /proc/self/mountinfo, in its order.
QStringList mountPointsFromMountInfo(const QByteArray& text);
