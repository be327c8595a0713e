#include "FuzzSupport.h"
#include "ReportFragments.h"

// The plain report's text taken from a page: markup removed, entities and links decoded. Input:
// any text, used as a page and as the text put into one.

namespace {

// Text as a page holds it: escaped, its line ends as breaks.
QString pageText(const QString& text)
{
    return text.toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br>"));
}

// The action words of links vanish from the plain text, also when they stand alone between tags.
bool isActionWord(const QString& text)
{
    return text == QLatin1String("Clear") || text == QLatin1String("Remove");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));

    htmlToPlainText(text);
    decodedLink(text);

    const QString plain = isActionWord(text) ? QString() : text;
    require(htmlToPlainText(pageText(text)) == plain, "escaped text comes back");
    require(htmlToPlainText(preformatted(pageText(text))) == plain, "preformatted text comes back");
    const QString withLink = pageText(text) + link(text, text, QString()) + pageText(text);
    require(htmlToPlainText(withLink) == plain + plain + plain,
            "a link between texts shows its text");
    require(htmlToPlainText(fileLink(text)) == plain, "a file link shows its path");
    require(htmlToPlainText(removeLink(text)).isEmpty(), "a remove link leaves nothing");
    return 0;
}
