#pragma once

#include <QString>

// The operating system's own text for an error code; empty when it has none.
QString systemErrorText(uint code);
