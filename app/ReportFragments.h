#pragma once

#include <QList>
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
// "Remove <path> <state>": the removal link with its action, the path's link and its state, as
// a field with the path as its label and the state as its value.
void appendPathState(QString& output, const QString& action, const QString& path,
                     QLatin1String state);

QString link(const QString& text, const QString& href, const QString& attributes);
QString actionLink(const QString& text, const QString& action);
QString fileLink(const QString& path);
QString removeLink(const QString& action);
// Undoes the href encoding of the link helpers.
QString decodedLink(const QString& href);

// One line of a page as appendField or appendIndented laid it out, in plain text. An indented
// line's label keeps its two leading blanks; the value is null when the line has none.
struct ReportField
{
    QString label;
    QString value;
    QString note;

    bool operator==(const ReportField& other) const;
};

// The helpers note each field they add to a watched page, so the report can be given as data
// exactly as the page shows it, without gathering anything again. Collectors watch their text
// and render into it.
void watchFields(const QString* page);
void forgetFields(const QString* page);
// The page's fields in page order, as the helpers laid them out; the errors block is not one.
QList<ReportField> renderedFields(const QString* page);

QString preformatted(const QString& text);
QString htmlToPlainText(const QString& html);
QString presenceText(bool present);
QString yesNo(bool value);
