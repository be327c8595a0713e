#include "MessageLog.h"

#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex mutex;
QStringList collected;
QtMessageHandler previous = nullptr;

void collect(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    {
        QMutexLocker lock(&mutex);
        collected.append(message);
    }
    if (previous)
        previous(type, context, message);
}

} // namespace

MessageLog::MessageLog()
{
    QMutexLocker lock(&mutex);
    collected.clear();
    previous = qInstallMessageHandler(collect);
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(previous);
}

QStringList MessageLog::messages() const
{
    QMutexLocker lock(&mutex);
    return collected;
}
