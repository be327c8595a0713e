#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QString>

// The saved report: the folder "Corvanta Support Report <UTC time>" under parent, holding
// report.txt, and report.png when a collector gives a picture, as "Save Report..." writes it; a
// second save in the same second writes into the same folder. Names the folder in folder; false
// when something could not be written.
bool saveReportBundle(const QString& parent, const QDateTime& now, const QString& text,
                      const QImage& picture, QString* folder);

// The report program's bundle, whole or not at all: report.txt, report.png when there is a
// picture, report.json and SHA256SUMS, which "sha256sum -c" accepts in that folder. It is written
// into a hidden folder beside its place and renamed at the end; a folder of that second already
// there gives the next " (2)", " (3)". On failure nothing is left, and problem names the file and
// the system's reason.
bool saveCompleteReportBundle(const QString& parent, const QDateTime& now, const QString& text,
                              const QImage& picture, const QByteArray& json, QString* folder,
                              QString* problem);
