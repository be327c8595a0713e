#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QString>

// The saved report: the folder "Corvanta Support Report <UTC time>" under parent, holding
// report.txt, and report.png when a collector gives a picture, as "Save Report..." writes it.
// Given the JSON as well, it is the report program's bundle: report.json too, and SHA256SUMS,
// which "sha256sum -c" accepts in that folder. Names the folder in folder; false when something
// could not be written.
bool saveReportBundle(const QString& parent, const QDateTime& now, const QString& text,
                      const QImage& picture, const QByteArray& json, QString* folder);
