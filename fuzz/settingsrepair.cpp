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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString repaired = repairedSettingsText(text);
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
