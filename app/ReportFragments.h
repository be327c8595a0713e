#pragma once

#include <QString>
#include <QVariant>

class SupportData;

// The HTML pieces every collector builds its page from. The plain-text report strips the same
// markup again, so their exact output matters.

QString errorsHtml(const SupportData& data);
// The collector's errors as the first lines of its page, then two breaks; nothing without errors.
void appendErrors(QString& output, const SupportData& data);
QString lineBreaks(int count);
void appendField(QString& output, const QString& label, const QVariant& value,
                 const QString& note = QString(), const QString& suffix = QString());
void appendIndented(QString& output, const QString& label, const QVariant& value, int width);

QString link(const QString& text, const QString& href, const QString& attributes);
QString actionLink(const QString& text, const QString& action);
QString fileLink(const QString& path);
QString removeLink(const QString& action);
// Undoes the href encoding of the link helpers.
QString decodedLink(const QString& href);

QString preformatted(const QString& text);
QString htmlToPlainText(const QString& html);
QString presenceText(bool present);
QString yesNo(bool value);
