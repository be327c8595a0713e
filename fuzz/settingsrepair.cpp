#include "SettingsRepair.h"
#include "FuzzSupport.h"

// The preferences repair only empties date-time values: it deletes and never adds or reorders,
// makes no new value, keeps every closing bracket, and a repaired text needs no further repair.

namespace {

bool isSubsequence(const QString& shorter, const QString& longer)
{
    qsizetype at = 0;
    for (const QChar c : longer) {
        if (at < shorter.size() && shorter.at(at) == c)
            ++at;
    }
    return at == shorter.size();
}

// Each body removed in place, as the repair was first written.
QString repairedInPlace(const QString& text)
{
    const QString lead = QStringLiteral("=@DateTime(");
    QString result = text;
    qsizetype position = result.indexOf(lead);
    while (position > 0) {
        const qsizetype bodyStart = position + lead.size();
        const qsizetype close = result.indexOf(QLatin1Char(')'), bodyStart);
        if (close < 0)
            break;
        result.remove(bodyStart, close - bodyStart);
        position = result.indexOf(lead, position + 1);
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    int emptied = 0;
    const QString repaired = repairedSettingsText(text, &emptied);
    require(repaired == repairedInPlace(text), "one pass empties what removing in place does");
    require((emptied == 0) == (repaired == text), "the count says whether anything changed");
    require(isSubsequence(repaired, text), "only deletes");
    const QString lead = QStringLiteral("=@DateTime(");
    // A lead inside an unclosed value's body goes with that body.
    require(repaired.count(lead) <= text.count(lead), "no lead is made");
    require(repaired.count(QLatin1Char(')')) == text.count(QLatin1Char(')')),
            "every value keeps its closing bracket");
    if (text.indexOf(lead, 1) < 0 || text.startsWith(lead))
        require(repaired == text, "a text with nothing to repair stays");
    require(repairedSettingsText(repaired) == repaired, "a repaired text needs no repair");
    return 0;
}
