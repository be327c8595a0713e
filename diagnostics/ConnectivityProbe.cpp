#include "ConnectivityProbe.h"

QString connectivityProbeAgent()
{
    return QStringLiteral("Corvannta Support");
}
