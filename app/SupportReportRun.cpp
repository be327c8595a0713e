#include "SupportReportRun.h"

#include "SupportSystemData.h"

void loadAllSupportData(const SupportDataMap& table)
{
    for (const auto& [kind, data] : table) {
        if (!data)
            continue;
        if (data->needsMainThreadWork())
            data->loadOnMainThread();
        data->load();
    }
    // The external address and the connectivity probe answer later; a page shows them when they
    // come, so the report waits for them.
    if (auto* system = dynamic_cast<SupportSystemData*>(findSupportData(table, SystemDataKind)))
        system->waitForNetwork();
}
