#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringDecoder>
#include <QtGlobal>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What every harness shares. A property that does not hold prints its name and aborts, which
// libFuzzer reports as a crash and keeps the input that caused it.

inline void require(bool holds, const char* property)
{
    if (!holds) {
        std::fprintf(stderr, "Property does not hold: %s\n", property);
        std::abort();
    }
}

// The input cut at its first count - 1 line ends; the last part keeps the rest, line ends and all.
inline QList<QByteArray> inputFields(const uint8_t* data, size_t size, int count)
{
    const QByteArray input(reinterpret_cast<const char*>(data), qsizetype(size));
    QList<QByteArray> fields;
    qsizetype start = 0;
    while (fields.size() < count - 1) {
        const qsizetype end = input.indexOf('\n', start);
        if (end < 0)
            break;
        fields.append(input.mid(start, end - start));
        start = end + 1;
    }
    fields.append(input.mid(start));
    while (fields.size() < count)
        fields.append(QByteArray());
    return fields;
}

inline bool isUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return !decoder.hasError();
}

// The lines of a text, each with its line end, so that joining them gives the text back.
inline QList<QByteArray> linesOf(const QByteArray& text)
{
    QList<QByteArray> lines;
    qsizetype start = 0;
    while (start < text.size()) {
        const qsizetype end = text.indexOf('\n', start);
        const qsizetype next = end < 0 ? text.size() : end + 1;
        lines.append(text.mid(start, next - start));
        start = next;
    }
    return lines;
}

// Whether the lines of after are those of before with some taken out, the rest unchanged and in
// order; removed receives the indexes in before of those taken out.
inline bool isLinesRemoved(const QList<QByteArray>& before, const QList<QByteArray>& after,
                           QList<qsizetype>* removed)
{
    qsizetype kept = 0;
    for (qsizetype i = 0; i < before.size(); ++i) {
        if (kept < after.size() && before.at(i) == after.at(kept))
            ++kept;
        else
            removed->append(i);
    }
    return kept == after.size();
}

// Debug output of the code under test would drown libFuzzer's own.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type != QtDebugMsg && type != QtInfoMsg)
            std::fprintf(stderr, "%s\n", qPrintable(message));
    });
    return 0;
}
