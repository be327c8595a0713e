#pragma once

#include <QString>
#include <QUrl>

// Whether the URL answers with at least one byte. Blocks the calling thread, for at most
// connectivityProbeTimeout milliseconds, so a dead network cannot hold up loading; never call it
// on the GUI thread. Where it can, it gives up early when its thread is asked to end.
bool probeConnectivity(const QUrl& url);

constexpr int connectivityProbeTimeout = 10000;

// The agent the product's web site knows the tool by, misspelt as it has always been sent.
QString connectivityProbeAgent();
