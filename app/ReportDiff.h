#pragma once

#include "ReportDocument.h"

#include <QString>

// What differs between an earlier report and a later one, section by section: fields that
// changed (old and new value), appeared or vanished, lines the page shows outside its fields, and
// errors that appeared or went away. The generation time is not a difference, nor is a line
// that only moved. Empty when the two agree.
QString reportDifferences(const ReportDocument& earlier, const ReportDocument& later);
