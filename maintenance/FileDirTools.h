#pragma once

#include <QString>

// Shows the path selected in the desktop's file manager. An empty path does nothing.
void revealInExplorer(const QString& path);
