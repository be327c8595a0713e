#include "SupportReportRun.h"

#include "SupportSystemData.h"

void loadAllSupportData(const SupportDataMap& table)
{
    // The network's questions go first, so their waits run beside the other collectors instead
    // of after them: on a silent network the report waits once, for at most 10 s.
    auto* system = dynamic_cast<SupportSystemData*>(findSupportData(table, SystemDataKind));
    if (system)
        system->startAhead();
    for (const auto& [kind, data] : table) {
        if (!data)
            continue;
        if (data->needsMainThreadWork())
            data->loadOnMainThread();
        data->load();
    }
    // The answers come later; a page shows them when they come, so the report waits for them.
    if (system)
        system->waitForNetwork();
}
