#pragma once

#include <functional>

class QObject;

// Calls answer, through context's event loop, with whether the desktop has a program for
// "mailto:" links. Where it has none, opening such a link starts the desktop's opener, which
// then fails on its own, unseen. None comes once context is gone.
void whenMailHandlerKnown(QObject* context, const std::function<void(bool)>& answer);
