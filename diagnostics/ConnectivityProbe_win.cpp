#include "ConnectivityProbe.h"

#include "win32/wininet.h"

bool probeConnectivity(const QUrl& url)
{
    return win32::urlAnswers(url.toString().toStdWString(), connectivityProbeAgent().toStdWString(),
                             static_cast<unsigned long>(connectivityProbeTimeout));
}

bool hasRouteOut()
{
    // Not asked on Windows: every request is tried there.
    return true;
}
