#include "MailHandler.h"

#include <QObject>
#include <QTimer>

void whenMailHandlerKnown(QObject* context, const std::function<void(bool)>& answer)
{
    // ShellExecute fails by itself without a handler, and QDesktopServices says so.
    QTimer::singleShot(0, context, [answer] { answer(true); });
}
