#include "ReportDiff.h"
#include "FuzzSupport.h"
#include "ReportJson.h"

// The report reader and the comparison of two reports. Input: the earlier report's JSON on the
// first line, the later one's in the rest.

namespace {

bool read(const QByteArray& json, ReportDocument* document)
{
    QString reason;
    const bool accepted = readReportJson(json, document, &reason);
    require(accepted || (!reason.isEmpty() && !reason.contains(QLatin1Char('\n'))),
            "a refusal says why in one line");
    return accepted;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 2);
    ReportDocument earlier;
    ReportDocument later;
    const bool earlierRead = read(fields.at(0), &earlier);
    const bool laterRead = read(fields.at(1), &later);

    if (earlierRead) {
        // What was read is written back as it was read.
        ReportDocument again;
        require(read(reportJson(earlier), &again), "a report read is written readable");
        require(reportJson(again) == reportJson(earlier), "a report reads back the same");
        require(reportDifferences(earlier, earlier).isEmpty(), "nothing differs from itself");
    }
    if (earlierRead && laterRead) {
        // The same lines on both sides, whichever side is earlier.
        require(reportDifferences(earlier, later).isEmpty()
                    == reportDifferences(later, earlier).isEmpty(),
                "agreeing is mutual");
    }
    return 0;
}
