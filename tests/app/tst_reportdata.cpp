#include "RecordingData.h"
#include "ReportDiff.h"
#include "ReportDocument.h"
#include "ReportRedactor.h"
#include "TestEnvironment.h"

#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

using Render = std::function<void(QString&)>;

// A section as a collector renders it: straight into its text, with the fragment helpers.
ReportDocument::Section section(int kind, const Render& render, const QStringList& errors = {})
{
    RecordingData data(kind);
    data.fakeErrors = errors;
    appendErrors(*data.text(), data);
    render(*data.text());
    ReportDocument::Section section{kind, data.name(), errors, renderedFields(data.text()),
                                    htmlToPlainText(*data.text())};
    return section;
}

ReportDocument document(const QList<ReportDocument::Section>& sections,
                        const QDateTime& generated = QDateTime(QDate(2026, 3, 2), QTime(9, 0)))
{
    return {generated, u"Corvanta Support"_s, u"1.0.5"_s, sections};
}

QString shown(const QList<ReportField>& fields)
{
    QStringList list;
    for (const ReportField& field : fields)
        list << field.label + '|' + (field.value.isNull() ? u"-"_s : field.value) + '|'
                    + field.note;
    return list.join('\n');
}

// A page with a heading, a list under it and a path with its state.
Render page(const QStringList& items, const QString& pathNote, const QString& extra = {})
{
    return [=](QString& text) {
        appendField(text, u"Host Name:"_s, u"alpha"_s);
        text += lineBreaks(2);
        appendField(text, u"MAC Interfaces:"_s, QVariant());
        text += lineBreaks(1);
        for (const QString& item : items) {
            appendIndented(text, QString(), item, 0);
            text += lineBreaks(1);
        }
        appendField(text, u"Application Data:"_s, fileLink(u"/data/Corvanta"_s), pathNote,
                    removeLink(u"deleteAppData"_s));
        text += lineBreaks(1) + extra;
    };
}

} // namespace

class tst_ReportData : public QObject
{
    Q_OBJECT

private slots:
    // The fields are what the helpers laid out last on the collector's own text, in plain text.
    void fields_data()
    {
        QTest::addColumn<Render>("render");
        QTest::addColumn<QString>("fields");
        QTest::newRow("value, note, links and spacing") << Render([](QString& text) {
            appendField(text, u"Path:"_s, fileLink(u"/a&b"_s), u"Not Writable"_s,
                        removeLink(u"deletePath/a&b"_s));
            text += lineBreaks(1);
            appendField(text, u"Writable:"_s, true);
            text += lineBreaks(1);
            appendField(text, u"Heading:"_s, QVariant(), u"only a note"_s);
            text += lineBreaks(1);
            appendIndented(text, u"ascent:"_s, 15, 20);
            appendIndented(text, QString(), QString(), 0);
        }) << u"Path:|/a&b|Not Writable\nWritable:|Yes|\nHeading:|-|only a note\n  ascent:|15|"_s;
        QTest::newRow("rendered again, shorter") << Render([](QString& text) {
            for (const QString& label : {u"A:"_s, u"B:"_s, u"C:"_s})
                appendField(text, label, 1);
            text.clear();
            appendField(text, u"A:"_s, 2);
        }) << u"A:|2|"_s;
        QTest::newRow("written over without the helpers") << Render([](QString& text) {
            appendField(text, u"A:"_s, 1);
            text = u"A:                 9"_s;
        }) << QString();
    }

    void fields()
    {
        QFETCH(Render, render);
        QFETCH(QString, fields);
        const ReportDocument::Section rendered = section(0, render, {u"an error"_s});
        QCOMPARE(shown(rendered.fields), fields);
        // Each field is found on its own line; the errors block is not page text.
        const auto lines = rendered.lines();
        QVERIFY(std::none_of(lines.begin(), lines.end(),
                             [](const auto& line) { return line.second.contains(u"error"_s); }));
        const qsizetype onFields = std::count_if(lines.begin(), lines.end(),
                                                 [](const auto& line) { return line.first >= 0; });
        QCOMPARE(onFields, rendered.fields.size());
    }

    // Changes are told by field, lines outside the fields by themselves; nothing else counts.
    void differences_data()
    {
        QTest::addColumn<QList<ReportDocument::Section>>("earlier");
        QTest::addColumn<QList<ReportDocument::Section>>("later");
        QTest::addColumn<QString>("expected");
        const auto system = [](const Render& render, const QStringList& errors = {}) {
            return QList<ReportDocument::Section>{section(5, render, errors)};
        };
        const QStringList macs{u"02-00-00-00-00-01"_s, u"02-00-00-00-00-02"_s};
        const auto same = system(page(macs, QString()));
        QTest::newRow("the same") << same << same << QString();
        QTest::newRow("order only")
            << same << system(page({macs[1], macs[0]}, QString())) << QString();
        QTest::newRow("note gone, item replaced, line added")
            << system(page(macs, u"Does Not Exist"_s))
            << system(page({macs[0], u"02-00-00-00-00-03"_s}, QString(), u"free text"_s))
            << u"System:\n"
               "  changed   MAC Interfaces: \"02-00-00-00-00-02\" -> \"02-00-00-00-00-03\"\n"
               "  changed   Application Data: \"/data/Corvanta - Does Not Exist\" -> "
               "\"/data/Corvanta\"\n"
               "  appeared  \"free text\"\n"_s;
        QTest::newRow("field and errors") << system(page(macs, QString()), {u"Insufficient RAM."_s})
                                          << system(
                                                 [&](QString& text) {
                                                     page(macs, QString())(text);
                                                     appendField(text, u"Speed:"_s, u"2.1 Ghz"_s);
                                                 },
                                                 {u"Failed to find file systems."_s})
                                          << u"System:\n  appeared  Speed: \"2.1 Ghz\"\n"
                                             "  error appeared: Failed to find file systems.\n"
                                             "  error gone: Insufficient RAM.\n"_s;
        QTest::newRow("sections")
            << QList<ReportDocument::Section>{section(0, page(macs, {}))}
            << QList<ReportDocument::Section>{section(1, page(macs, {}))}
            << u"Display:\n  the section vanished\nFonts:\n  the section appeared\n"_s;
    }

    void differences()
    {
        QFETCH(QList<ReportDocument::Section>, earlier);
        QFETCH(QList<ReportDocument::Section>, later);
        QFETCH(QString, expected);
        // The time of the report is not a difference.
        QCOMPARE(
            reportDifferences(document(earlier), document(later, QDateTime::currentDateTime())),
            expected);
    }

    // Every spelling of a value gets the value's placeholder, numbered in the report's order.
    void redaction_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("MAC addresses")
            << u"02-FC-00-00-00-01 02:fc:00:00:00:01 id-02-fc-00-00-00-07 00-00-00-00-00-00-00-E0"_s
            << u"mac-1 mac-1 id-mac-2 mac-3"_s;
        QTest::newRow("IPv6 forms")
            << u"fd00::1234, FD00:0:0:0:0:0:0:1234. [fd00:0000:0000:0000:0000:0000:0000:1234%lo]:80"_s
            << u"ip-1, ip-1. [ip-1]:80"_s;
        QTest::newRow("IPv4 and mapped")
            << u"203.0.113.7 ::ffff:203.0.113.7 10.9.8.7"_s << u"ip-2 ip-2 ip-3"_s;
        QTest::newRow("host, short and full")
            << u"Build-Host.example.org BUILD-HOST"_s << u"host-1 host-1"_s;
        QTest::newRow("user, home folder")
            << u"Ann's ~HOME/Documents"_s << u"user-1's ~/Documents"_s;
        QTest::newRow("identifier")
            << u"0f8fad5b-d9cb-469f-a165-70867728950e 0F8FAD5BD9CB469FA16570867728950E"_s
            << u"uuid-1 uuid-1"_s;
        QTest::newRow("not addresses")
            << u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1"_s
            << u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1"_s;
    }

    void redaction()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        TestEnvironment home;
        const auto fieldsPage = [](QString& page) {
            appendField(page, u"Host Name:"_s, u"Build-Host.example.org"_s);
            appendField(page, u"User Name:"_s, u"ann"_s);
            appendField(page, u"UUID:"_s, u"0F8FAD5B-D9CB-469F-A165-70867728950E"_s);
            page += u"<br>fd00::1234 203.0.113.7"_s;
        };
        const ReportDocument report = document({section(5, fieldsPage)});
        ReportRedactor redactor(report);
        text.replace(u"~HOME"_s, home.home());
        QCOMPARE(redactor.redact(text), expected);
        // The document itself, the same way.
        const ReportDocument redacted = redactor.redact(report);
        QCOMPARE(shown(redacted.sections[0].fields),
                 u"Host Name:|host-1|\nUser Name:|user-1|\nUUID:|uuid-1|"_s);
    }
};

QTEST_MAIN(tst_ReportData)
#include "tst_reportdata.moc"
