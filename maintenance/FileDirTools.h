#pragma once

#include <QString>

// Shows the path selected in the desktop's file manager. An empty path does nothing.
void revealInExplorer(const QString& path);

// Writes text as UTF-8; when the file cannot be opened it only logs why.
bool writeTextFile(const QString& path, const QString& text);
