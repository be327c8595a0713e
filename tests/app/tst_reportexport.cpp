#include "RecordingData.h"
#include "ReportDiff.h"
#include "ReportDocument.h"
#include "ReportExport.h"
#include "ReportFragments.h"
#include "ReportRedactor.h"
#include "TestEnvironment.h"

#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

using Render = std::function<void(QString&)>;
using Sections = QList<ReportDocument::Section>;

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

// Collectors with a field, a file link and both action links.
SupportDataTable makeTable()
{
    const SupportDataTable table = RecordingData::table({0, 3, 5});
    for (const auto& [kind, data] : *table) {
        auto* recording = static_cast<RecordingData*>(data.get());
        appendField(recording->fakeText, data->name() + ':', kind);
        recording->fakeText += lineBreaks(1) + "Temp: " + actionLink("Clear", "clearTemp") + ' '
                               + fileLink("/tmp/a&b") + ' ' + removeLink("deletePath/tmp/a&b");
        data->load();
    }
    return table;
}

QImage filled(int width, int height, const QColor& colour)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

} // namespace

// The report: its fragments, text, folder, picture, e-mail and the report as data.
class tst_ReportExport : public QObject
{
    Q_OBJECT

private slots:
    void fragments_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("expected");
        const auto field = [](const QString& label, const QVariant& value, const QString& note = {},
                              const QString& suffix = {}) {
            QString output = u"before|"_s;
            appendField(output, label, value, note, suffix);
            return output;
        };
        const auto errors = [](const QStringList& list) {
            RecordingData data(0);
            data.fakeErrors = list;
            return errorsHtml(data);
        };
        QTest::newRow("errors, placeholders kept")
            << errors({"%1 and %2", "b"}) << "Errors:<br>1. %1 and %2<br>2. b";
        QTest::newRow("field with note and suffix")
            << field("RAM:", 8, "low", "GB") << "before|RAM:                8 - low GB";
        QTest::newRow("field null with note")
            << field("Path:", QVariant(), "missing") << "before|Path:               missing";
        QTest::newRow("field empty text is not null")
            << field("Path:", QString(), "missing") << "before|Path:                - missing";
        QTest::newRow("field long label is not cut")
            << field("A label of more than twenty:", 1) << "before|A label of more than twenty:1";
    }

    void fragments()
    {
        QFETCH(QString, html);
        QTEST(html, "expected");
    }

    // The start time is taken once; a folder per second of the time given.
    void textAndFolder()
    {
        const QDateTime start = reportStartTime();
        QVERIFY(start.isValid() && start <= QDateTime::currentDateTime());
        QTest::qWait(1100);
        QCOMPARE(reportStartTime(), start);
        const SupportDataTable table = makeTable();
        const QString rule = QString(50, '=');
        const QString entry = u"Temp:  /tmp/a&b \n\n"_s;
        QCOMPARE(reportText(*table), "Generated: " + start.toString(Qt::TextDate) + "\n\n" + rule
                                         + "\nDisplay\n\nDisplay:            0\n" + entry + rule
                                         + "\nPermissions\n\nPermissions:        3\n" + entry + rule
                                         + "\nSystem\n\nSystem:             5\n" + entry);

        TestEnvironment home;
        const QString parent = home.path(u"reports"_s);
        const QDateTime first(QDate(2024, 3, 20), QTime(15, 12, 7, 100), Qt::UTC);
        const QString folder = saveReportTo(*table, parent, first);
        QCOMPARE(folder, parent + "/Corvanta Support Report 2024-03-20T151207Z");
        // Later in the same second: the same folder, its report overwritten.
        findSupportData(*table, 0)->text()->append(u"<br>later"_s);
        QCOMPARE(saveReportTo(*table, parent, first.addMSecs(800)), folder);
        QCOMPARE(QString::fromUtf8(fileBytes(folder + "/report.txt")), reportText(*table));
        QCOMPARE(saveReportTo(*table, parent, first.addSecs(1)),
                 parent + "/Corvanta Support Report 2024-03-20T151208Z");
        // Local times are named by their UTC time.
        QCOMPARE(reportFolderName(first.toOffsetFromUtc(3600)),
                 u"Corvanta Support Report 2024-03-20T151207Z"_s);

        // The parent is a plain file, so nothing can be created below it, even by root.
        QVERIFY(putFile(home.path(u"file"_s), "x"));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^Failed to open writable text file"));
        QVERIFY(!QFile::exists(saveReportTo(*table, home.path(u"file"_s)) + "/report.txt"));
    }

    void emailCarriesTheReportWhole()
    {
        const QString report = u"/home/a&b/#1\nbody=x&subject=y\n1+1 %41 100%\nGrüße\r\nΩ"_s;
        const QUrl url(QString::fromLatin1(emailUrl(report).toEncoded()), QUrl::StrictMode);
        QVERIFY(url.isValid());
        const QUrlQuery query(url);
        QCOMPARE(query.queryItems().size(), 2);
        QCOMPARE(query.queryItemValue(u"subject"_s, QUrl::FullyDecoded),
                 u"Corvanta Support Report"_s);
        QCOMPARE(query.queryItemValue(u"body"_s, QUrl::FullyDecoded), report);
    }

    // Stacked in kind order, transparent beside narrower pictures; without any there is none.
    void pictureIsTheStackOfImages()
    {
        TestEnvironment home;
        const SupportDataTable table = RecordingData::table({0, 1, 2});
        const QString none = saveReportTo(*table, home.path(u"none"_s));
        QVERIFY(QFile::exists(none + "/report.txt") && !QFile::exists(none + "/report.png"));
        RecordingData::in(table, 0)->fakeImage = filled(30, 20, Qt::red);
        RecordingData::in(table, 1)->fakeImage = filled(120, 40, Qt::green);
        RecordingData::in(table, 2)->fakeImage = filled(50, 10, Qt::blue);
        const QImage saved(saveReportTo(*table, home.path(u"three"_s)) + "/report.png");
        QCOMPARE(saved.size(), QSize(120, 70));
        QCOMPARE(saved.pixelColor(29, 19), QColor(Qt::red));
        QCOMPARE(saved.pixelColor(30, 0).alpha(), 0);
        QCOMPARE(saved.pixelColor(119, 59), QColor(Qt::green));
        QCOMPARE(saved.pixelColor(0, 60), QColor(Qt::blue));
        QCOMPARE(saved.pixelColor(50, 69).alpha(), 0);
    }

    // The fields the helpers last laid out; text written over them leaves them out.
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

    // Every spelling of a value gets its placeholder; look-alikes stay.
    void redaction()
    {
        TestEnvironment home;
        const ReportDocument report = document({section(5, [](QString& page) {
            appendField(page, u"Host Name:"_s, u"Build-Host.example.org"_s);
            appendField(page, u"User Name:"_s, u"ann"_s);
            appendField(page, u"UUID:"_s, u"0f8fad5b-d9cb-469f-a165-70867728950e"_s);
            page += u"<br>fd00::1234 203.0.113.7"_s;
        })});
        ReportRedactor redactor(report);
        for (const auto& [text, expected] :
             {std::pair{u"02-FC-00-00-00-01 02:fc:00:00:00:01 id-02-fc-00-00-00-07 "
                        "00-00-00-00-00-00-00-E0"_s,
                        u"mac-1 mac-1 id-mac-2 mac-3"_s},
              {u"FD00:0:0:0:0:0:0:1234. [fd00:0000:0000:0000:0000:0000:0000:1234%lo]:80 "
               "::ffff:203.0.113.7 10.9.8.7"_s,
               u"ip-1. [ip-1]:80 ip-2 ip-3"_s},
              {u"BUILD-HOST Ann's "_s + home.home()
                   + u"/Documents 0F8FAD5BD9CB469FA16570867728950E"_s,
               u"host-1 user-1's ~/Documents uuid-1"_s},
              {u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1"_s,
               u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1"_s}})
            QCOMPARE(redactor.redact(text), expected);
        const ReportDocument redacted = redactor.redact(report);
        QCOMPARE(redacted.sections[0].fields[0].value, u"host-1"_s);
        QVERIFY(redacted.sections[0].text.endsWith(u"\nip-1 ip-2"_s));
    }
};

QTEST_MAIN(tst_ReportExport)
#include "tst_reportexport.moc"
