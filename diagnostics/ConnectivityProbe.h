#pragma once

#include <QString>
#include <QUrl>

#include <functional>

class QObject;

// Whether the URL answers with at least one byte. Blocks the calling thread, for at most
// connectivityProbeTimeout milliseconds, so a dead network cannot hold up loading; never call it
// on the GUI thread. Where it can, it gives up early when its thread is asked to end.
bool probeConnectivity(const QUrl& url);

constexpr int connectivityProbeTimeout = 10000;

// The agent the product's web site knows the tool by, misspelt as it has always been sent.
QString connectivityProbeAgent();

// Calls answer, on context's thread, with whether a request for the URL could go anywhere: false
// only when no proxy carries it and its host name does not resolve. Such a request fails anyway,
// and readying TLS for it would cost more than the rest of the System page on a machine without
// a network. Answers at once for an address; otherwise the answer comes through context's event
// loop, and none comes once context is gone. The proxy question can read the desktop's settings,
// so the GUI thread has it asked on a thread of its own.
void whenReachable(const QUrl& url, QObject* context, const std::function<void(bool)>& answer);

// Whether the routing table has a way off the machine, for IPv4 or IPv6. Asks only the table:
// nothing is sent.
bool hasRouteOut();
