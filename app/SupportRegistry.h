#pragma once

#include "SupportData.h"

class SupportTab;

// Every collector of the program, and the page that shows each. A new collector is added here.
SupportDataTable createSupportDataTable();
SupportTab* createSupportTab(SupportData* data);
