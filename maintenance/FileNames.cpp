#include "FileNames.h"

QString decodeFileName(const QByteArray& bytes)
{
    QString name;
    name.reserve(bytes.size());
    const auto byte = [&](qsizetype at) {
        return at < bytes.size() ? uchar(bytes.at(at)) : 0;
    };
    for (qsizetype i = 0; i < bytes.size();) {
        const uchar lead = byte(i);
        // The length of a well-formed sequence from this byte and the least value it may hold.
        const int length = lead < 0x80   ? 1
                           : lead < 0xc2 ? 0
                           : lead < 0xe0 ? 2
                           : lead < 0xf0 ? 3
                           : lead < 0xf5 ? 4
                                         : 0;
        char32_t value = length == 1 ? lead : lead & (0x7f >> length);
        bool wellFormed = length > 0;
        for (int k = 1; wellFormed && k < length; ++k) {
            wellFormed = (byte(i + k) & 0xc0) == 0x80;
            value = (value << 6) | (byte(i + k) & 0x3f);
        }
        const char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
        wellFormed = wellFormed && value >= least[length] && value <= 0x10ffff
                     && (value < 0xd800 || value > 0xdfff);
        if (!wellFormed) {
            name.append(QChar(ushort(0xdc00 + lead)));
            ++i;
            continue;
        }
        if (QChar::requiresSurrogates(value)) {
            name.append(QChar::highSurrogate(value));
            name.append(QChar::lowSurrogate(value));
        } else {
            name.append(QChar(ushort(value)));
        }
        i += length;
    }
    return name;
}

bool isRawFileNameByte(QStringView name, qsizetype index)
{
    const char16_t u = name.at(index).unicode();
    return u >= 0xdc80 && u <= 0xdcff && !(index > 0 && name.at(index - 1).isHighSurrogate());
}

QByteArray encodeFileName(const QString& name)
{
    QByteArray bytes;
    bytes.reserve(name.size());
    qsizetype start = 0;
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (!isRawFileNameByte(name, i))
            continue;
        bytes += QStringView(name).mid(start, i - start).toUtf8();
        bytes += char(name.at(i).unicode() - 0xdc00);
        start = i + 1;
    }
    bytes += QStringView(name).mid(start).toUtf8();
    return bytes;
}

QString displayFileName(const QString& name)
{
    QString shown = name;
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (isRawFileNameByte(name, i))
            shown[i] = QChar::ReplacementCharacter;
    }
    return shown;
}

QStringList mountPointsFromMountInfo(const QByteArray& text)
{
    // The fifth field, with blanks, tabs, line ends and backslashes written as octal escapes.
    QStringList points;
    for (const QByteArray& line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 5 || fields.at(4).isEmpty())
            continue;
        const QByteArray& field = fields.at(4);
        QByteArray point;
        const auto isOctal = [&](qsizetype at) {
            return at < field.size() && field.at(at) >= '0' && field.at(at) <= '7';
        };
        for (qsizetype i = 0; i < field.size(); ++i) {
            if (field.at(i) == '\\' && isOctal(i + 1) && isOctal(i + 2) && isOctal(i + 3)) {
                point.append(char(field.mid(i + 1, 3).toInt(nullptr, 8)));
                i += 3;
            } else {
                point.append(field.at(i));
            }
        }
        points.append(decodeFileName(point));
    }
    return points;
}
