#include "FileNames.h"
#include "FuzzSupport.h"
#include "ReportFragments.h"

// The href encoding of the link helpers: whatever a path or action holds, the href stays inside its
// quotes and decodes to exactly what went in. Input: any bytes, read as a file name, so that bytes
// that are not UTF-8 come back as themselves.

namespace {

// The href of a link's markup, up to the quote that ends it.
QString hrefOf(const QString& markup)
{
    const QString start = QStringLiteral("<a href='");
    require(markup.startsWith(start), "a link starts with its href");
    const qsizetype end = markup.indexOf(QLatin1Char('\''), start.size());
    require(end > 0, "an href is closed");
    return markup.mid(start.size(), end - start.size());
}

void checkRoundTrip(const QString& text)
{
    const QString file = hrefOf(fileLink(text));
    for (const QChar c : file)
        require(c != u'"' && c != u'<' && c != u'>' && c != u'&' && c >= u' ' && c != u'\x7f',
                "an href holds no markup or control character");
    require(decodedLink(file) == QLatin1String("file://") + text, "a file path comes back");
    require(decodedLink(hrefOf(removeLink(text))) == QLatin1Char('#') + text,
            "a remove action comes back");
    require(decodedLink(hrefOf(actionLink(text, text))) == QLatin1Char('#') + text,
            "an action comes back");
    require(decodedLink(hrefOf(link(text, text, text))) == text, "an href comes back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    checkRoundTrip(
        decodeFileName(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size))));
    return 0;
}
