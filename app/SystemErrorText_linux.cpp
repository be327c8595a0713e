#include "SystemErrorText.h"

#include <climits>
#include <cstring>

QString systemErrorText(uint code)
{
    if (code > INT_MAX)
        return {};
    // Unlike strerror, this gives no "Unknown error N" filler for codes the C library lacks.
    const char* description = strerrordesc_np(static_cast<int>(code));
    return description ? QString::fromLocal8Bit(description) : QString();
}
