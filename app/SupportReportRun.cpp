#include "SupportReportRun.h"

void loadAllSupportData(const SupportDataMap& table)
{
    for (const auto& [kind, data] : table) {
        if (!data)
            continue;
        if (data->needsMainThreadWork())
            data->loadOnMainThread();
        data->load();
    }
}
