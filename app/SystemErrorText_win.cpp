#include "SystemErrorText.h"

#include "win32/errortext.h"

QString systemErrorText(uint code)
{
    return QString::fromStdWString(win32::systemErrorMessage(code));
}
