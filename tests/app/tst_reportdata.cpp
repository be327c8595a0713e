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
using Sections = QList<ReportDocument::Section>;

// A section as a collector renders it: straight into its text, with the fragment helpers.
ReportDocument::Section section(int kind, const Render& render, const QStringList& errors = {})
{
    RecordingData data(kind);
    data.fakeErrors = errors;
    appendErrors(*data.text(), data);
    render(*data.text());
    return {kind, data.name(), errors, renderedFields(data.text()), htmlToPlainText(*data.text())};
}

ReportDocument document(const Sections& sections, const QDateTime& generated = {})
{
    return {generated, u"Corvanta Support"_s, u"1.0.5"_s, sections};
}

// A heading with a list under it, a path with its state and what follows without the helpers.
Render page(const QStringList& items, const QString& pathNote, const QString& extra = {})
{
    return [=](QString& text) {
        appendField(text, u"MAC Interfaces:"_s, QVariant());
        text += lineBreaks(1);
        for (const QString& item : items) {
            appendIndented(text, QString(), item, 0);
            text += lineBreaks(1);
        }
        appendField(text, u"Application Data:"_s, fileLink(u"/d&a"_s), pathNote,
                    removeLink(u"deleteAppData"_s));
        text += lineBreaks(1) + extra;
    };
}

} // namespace

class tst_ReportData : public QObject
{
    Q_OBJECT

private slots:
    // The fields are what the helpers last laid out on the collector's own text, as plain text,
    // each on its line; text written over them leaves them out.
    void fields_data()
    {
        QTest::addColumn<Render>("render");
        QTest::addColumn<QString>("fields");
        QTest::newRow("a page") << page({u"02-00"_s}, u"Not Writable"_s, u"free<br>"_s)
                                << u"MAC Interfaces:|-|\n  |02-00|\nApplication Data:|/d&a|Not "
                                   "Writable"_s;
        QTest::newRow("rendered again, shorter") << Render([](QString& text) {
            page({u"1"_s, u"2"_s}, {})(text);
            text.clear();
            appendField(text, u"A:"_s, true);
        }) << u"A:|Yes|"_s;
        QTest::newRow("written over") << Render([](QString& text) {
            appendField(text, u"A:"_s, 1);
            text = u"A:                 9"_s;
        }) << QString();
    }

    void fields()
    {
        QFETCH(Render, render);
        QFETCH(QString, fields);
        const ReportDocument::Section rendered = section(0, render, {u"an error"_s});
        QStringList shown;
        for (const ReportField& field : rendered.fields)
            shown << field.label + '|' + (field.value.isNull() ? u"-"_s : field.value) + '|'
                         + field.note;
        QCOMPARE(shown.join('\n'), fields);
        // The errors block is no page line; every field has one of its own.
        QStringList onFields;
        for (const auto& [index, line] : rendered.lines()) {
            QVERIFY(!line.contains(u"error"_s));
            if (index >= 0)
                onFields << rendered.fields.at(index).label;
        }
        QCOMPARE(onFields.size(), rendered.fields.size());
    }

    // Changes are told by field, other lines by themselves; the time and the order are no change.
    void differences_data()
    {
        QTest::addColumn<Sections>("earlier");
        QTest::addColumn<Sections>("later");
        QTest::addColumn<QString>("expected");
        const QStringList macs{u"02-01"_s, u"02-02"_s};
        QTest::newRow("order only")
            << Sections{section(5, page(macs, {}))}
            << Sections{section(5, page({macs[1], macs[0]}, {}))} << QString();
        QTest::newRow("changed and appeared")
            << Sections{section(5, page(macs, u"Does Not Exist"_s))}
            << Sections{section(5, page({macs[0], u"02-03"_s}, {}, u"free"_s), {u"Full."_s})}
            << u"System:\n"
               "  changed   MAC Interfaces: \"02-02\" -> \"02-03\"\n"
               "  changed   Application Data: \"/d&a - Does Not Exist\" -> \"/d&a\"\n"
               "  appeared  \"free\"\n"
               "  error appeared: Full.\n"_s;
        QTest::newRow("sections") << Sections{section(0, page(macs, {}), {u"Gone."_s})}
                                  << Sections{section(1, page(macs, {}))}
                                  << u"Display:\n  the section vanished\n"
                                     "Fonts:\n  the section appeared\n"_s;
    }

    void differences()
    {
        QFETCH(Sections, earlier);
        QFETCH(Sections, later);
        QFETCH(QString, expected);
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
        QTest::newRow("addresses")
            << u"FD00:0:0:0:0:0:0:1234. [fd00:0000:0000:0000:0000:0000:0000:1234%lo]:80 "
               "::ffff:203.0.113.7 10.9.8.7"_s
            << u"ip-1. [ip-1]:80 ip-2 ip-3"_s;
        QTest::newRow("names")
            << u"BUILD-HOST Ann's ~HOME/Documents 0F8FAD5BD9CB469FA16570867728950E"_s
            << u"host-1 user-1's ~/Documents uuid-1"_s;
        QTest::newRow("no names")
            << u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1"_s
            << u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1"_s;
    }

    void redaction()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        TestEnvironment home;
        const ReportDocument report = document({section(5, [](QString& page) {
            appendField(page, u"Host Name:"_s, u"Build-Host.example.org"_s);
            appendField(page, u"User Name:"_s, u"ann"_s);
            appendField(page, u"UUID:"_s, u"0f8fad5b-d9cb-469f-a165-70867728950e"_s);
            page += u"<br>fd00::1234 203.0.113.7"_s;
        })});
        ReportRedactor redactor(report);
        QCOMPARE(redactor.redact(text.replace(u"~HOME"_s, home.home())), expected);
        const ReportDocument redacted = redactor.redact(report);
        QCOMPARE(redacted.sections[0].fields[0].value, u"host-1"_s);
        QVERIFY(redacted.sections[0].text.endsWith(u"\nip-1 ip-2"_s));
    }
};

QTEST_MAIN(tst_ReportData)
#include "tst_reportdata.moc"
