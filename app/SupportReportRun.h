#pragma once

#include "SupportData.h"

// Loads every collector in ascending kind on the calling thread, with no window and no dialog,
// the way the loading pass and the pages leave them, network answers included (at most 10 s).
void loadAllSupportData(const SupportDataMap& table);
