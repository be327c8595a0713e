#pragma once

#include "SupportData.h"

#include <QDateTime>
#include <QImage>
#include <QList>
#include <QString>
#include <QUrl>

class QWidget;

// The three ways to hand the report to support, all built from one plain-text report.

QString supportEmailAddress();

QString reportText(const SupportDataMap& table);
void copyReport(const SupportDataMap& table);
// Asks for a folder, then writes "report.txt" and "report.png" into a new dated folder in it.
// Returns what was done, for the status bar: the folder written, or why nothing was.
QString saveReport(const SupportDataMap& table);
// The same into the chosen parent folder; empty when none was chosen.
QString saveReportIn(const SupportDataMap& table, const QString& parent);
// Writes the report into the dated folder for the given time under parent; returns that folder.
QString saveReportTo(const SupportDataMap& table, const QString& parent,
                     const QDateTime& now = QDateTime::currentDateTimeUtc());
QString reportFolderName(const QDateTime& now);
// Every collector's picture, one below the other, in ascending kind.
QImage reportPicture(const SupportDataMap& table);
// Opens the mail program with the report, or says how to send it without one; window is the
// parent of that message.
void emailReport(const SupportDataMap& table, QWidget* window);
// The "mailto:" URL for the support desk with the report as its body.
QUrl emailUrl(const QString& report);

QImage renderWidget(QWidget* widget);
QImage stackImages(const QList<QImage>& images);
QString desktopFolder();
