#include "SupportRegistry.h"

#include "SupportCorvantaData.h"
#include "SupportCorvantaTab.h"
#include "SupportDisplayData.h"
#include "SupportDisplayTab.h"
#include "SupportFontsData.h"
#include "SupportFontsTab.h"
#include "SupportPermissionsData.h"
#include "SupportPermissionsTab.h"
#include "SupportSystemData.h"
#include "SupportSystemTab.h"

SupportDataTable createSupportDataTable()
{
    auto table = SupportDataTable::create();
    auto add = [&table](std::unique_ptr<SupportData> data) {
        const int kind = data->type();
        table->emplace(kind, std::move(data));
    };
    add(std::make_unique<SupportDisplayData>());
    add(std::make_unique<SupportFontsData>());
    add(std::make_unique<SupportPermissionsData>());
    add(std::make_unique<SupportCorvantaData>());
    add(std::make_unique<SupportSystemData>());
    return table;
}

SupportTab* createSupportTab(SupportData* data)
{
    switch (data->type()) {
    case DisplayDataKind:
        return new SupportDisplayTab(data);
    case FontsDataKind:
        return new SupportFontsTab(data);
    case PermissionsDataKind:
        return new SupportPermissionsTab(data);
    case CorvantaDataKind:
        return new SupportCorvantaTab(data);
    case SystemDataKind:
        return new SupportSystemTab(static_cast<SupportSystemData*>(data));
    default:
        return nullptr;
    }
}
