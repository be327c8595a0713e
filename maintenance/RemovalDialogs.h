#pragma once

#include <QString>
#include <QStringList>

// Removals that the user asked for, with what the user must be told or asked: nothing is deleted
// for good without a question naming it, and nothing is refused without a reason. GUI thread only.

// Puts the paths that exist into the trash. An item the trash refuses stays where it is, and one
// message box says why. A link goes itself; the message says where its data still is. True when
// every path is gone.
bool trashForUser(const QStringList& paths);

// The same for one path; where the trash refuses it, asks first, naming the path, whether to
// delete it for good instead.
void trashOrDeleteForUser(const QString& path);
