#pragma once

#include <QString>

// Repairs the product's preferences file by emptying every stored date and time, the values that
// a damaged clock or a newer version can leave unreadable. Everything else is kept.

// The text with the body of every "=@DateTime(...)" value emptied, except for an occurrence at the
// very start of the text, which stops the repair. A value without its ")" ends the repair there.
// emptied, when given, gets the number of values that had a body. Linear in the text's length.
QString repairedSettingsText(const QString& text, int* emptied = nullptr);

// Reads the file as UTF-8 and writes the repaired text back. The file is replaced in one step, so
// a failed write leaves the old file as it was. False when the file cannot be read or written,
// errorText then saying why; a file that needs no repair is not written.
bool repairSettingsFile(const QString& path, int* emptied = nullptr, QString* errorText = nullptr);
