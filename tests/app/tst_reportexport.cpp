#include "RecordingData.h"
#include "ReportExport.h"
#include "ReportFragments.h"
#include "TestEnvironment.h"

#include <QDir>
#include <QLabel>
#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace {

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

// The report: the page fragments it is built from, its text, folder and picture, and the e-mail
// hand-off.
class tst_ReportExport : public QObject
{
    Q_OBJECT

private slots:
    // Every helper that builds text, called with its arguments, against the text it must give.
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
        const auto indented = [](const QString& label, const QVariant& value, int width) {
            QString output;
            appendIndented(output, label, value, width);
            return output;
        };
        QTest::newRow("no errors") << errors({}) << "";
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
        QTest::newRow("indented") << indented("family", "Mono", 20) + indented("x", QVariant(), 3)
                                  << "  family              Mono  x  ";
        QTest::newRow("link with attributes")
            << link("t", "h", "class=x") << "<a href='h' class=x>t</a>";
        QTest::newRow("remove")
            << removeLink("deletePath/tmp/x")
            << "<a href='#deletePath/tmp/x' style=\"color: #bb0000\";>Remove</a>";
        // Blanks and letters stay as they are; markup and quotes are encoded in the href and
        // escaped in the text.
        QTest::newRow("file") << fileLink("/home/Zoë o'brien/a&b<c>\"d\"")
                              << "<a href='file:///home/Zoë o%27brien/a%26b%3Cc%3E%22d%22' >"
                                 "/home/Zoë o'brien/a&amp;b&lt;c&gt;&quot;d&quot;</a>";
        QTest::newRow("percent and control characters")
            << actionLink("x", "p/100%41\nb\tc") << "<a href='#p/100%2541%0Ab%09c' >x</a>";
        // The plain report: tags and action links gone, other links keep their words.
        QTest::newRow("plain") << htmlToPlainText("a<br>b " + removeLink("deletePath/x")
                                                  + " Temp: " + actionLink("Clear", "clearTemp")
                                                  + actionLink("Check", "check"))
                               << "a\nb  Temp: Check";
        QTest::newRow("plain: upper-case break is a tag") << htmlToPlainText(u"a<BR>b"_s) << "ab";
        QTest::newRow("plain: action words kept outside links")
            << htmlToPlainText(u"Remove<br>Clear"_s) << "Remove\nClear";
    }

    void fragments()
    {
        QFETCH(QString, html);
        QFETCH(QString, expected);
        QCOMPARE(html, expected);
    }

    void layout()
    {
        // The start time is taken once and kept.
        const QDateTime start = reportStartTime();
        QVERIFY(start.isValid() && start <= QDateTime::currentDateTime());
        QTest::qWait(1100);
        QCOMPARE(reportStartTime(), start);

        const QString rule = QString(50, '=');
        const QString entry = u"Temp:  /tmp/a&b \n\n"_s;
        QCOMPARE(reportText(*makeTable()),
                 "Generated: " + start.toString(Qt::TextDate) + "\n\n" + rule
                     + "\nDisplay\n\nDisplay:            0\n" + entry + rule
                     + "\nPermissions\n\nPermissions:        3\n" + entry + rule
                     + "\nSystem\n\nSystem:             5\n" + entry);
    }

    void folderPerSecond()
    {
        TestEnvironment home;
        const SupportDataTable table = makeTable();
        const QString parent = home.path(u"reports"_s);
        const QDateTime first(QDate(2024, 3, 20), QTime(15, 12, 7, 100), Qt::UTC);
        const QString folder = saveReportTo(*table, parent, first);
        QCOMPARE(folder, parent + "/Corvanta Support Report 2024-03-20T151207Z");
        // Later in the same second: the same folder, its report overwritten.
        findSupportData(*table, 0)->text()->append(u"<br>later"_s);
        QCOMPARE(saveReportTo(*table, parent, first.addMSecs(800)), folder);
        QCOMPARE(QString::fromUtf8(fileBytes(folder + "/report.txt")), reportText(*table));
        // A second later: a folder of its own.
        QVERIFY(saveReportTo(*table, parent, first.addSecs(1)) != folder);
        QCOMPARE(QDir(parent).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);
        // Local times are named by their UTC time.
        QCOMPARE(reportFolderName(first.toOffsetFromUtc(3600)),
                 u"Corvanta Support Report 2024-03-20T151207Z"_s);
    }

    void emailCarriesTheReportWhole_data()
    {
        QTest::addColumn<QString>("report");
        QTest::newRow("ampersand and hash") << u"/home/a&b/#1\nbody=x\n"_s;
        QTest::newRow("plus and percent") << u"1+1 %41 100%\n"_s;
        QTest::newRow("non-ASCII, CRLF") << u"Grüße\r\nΩ"_s;
    }

    // Read back from the encoded URL, as the mail program gets it.
    void emailCarriesTheReportWhole()
    {
        QFETCH(QString, report);
        const QUrl url(QString::fromLatin1(emailUrl(report).toEncoded()), QUrl::StrictMode);
        QVERIFY(url.isValid());
        QCOMPARE(url.scheme(), u"mailto"_s);
        QCOMPARE(url.path(), supportEmailAddress());
        const QUrlQuery query(url);
        QCOMPARE(query.queryItems().size(), 2);
        QCOMPARE(query.queryItemValue(u"subject"_s, QUrl::FullyDecoded),
                 u"Corvanta Support Report"_s);
        QCOMPARE(query.queryItemValue(u"body"_s, QUrl::FullyDecoded), report);
    }

    // The collectors' pictures stacked in kind order, the widest setting the width, transparent
    // beside narrower ones; without any there is no picture.
    void pictureIsTheStackOfImages()
    {
        TestEnvironment home;
        const SupportDataTable table = RecordingData::table({0, 1, 2});
        const QString none = saveReportTo(*table, home.path(u"none"_s));
        QVERIFY(QFile::exists(none + "/report.txt") && !QFile::exists(none + "/report.png"));
        QLabel label(u"sample"_s);
        label.setStyleSheet(u"background: #00ff00"_s);
        label.resize(120, 40);
        RecordingData::in(table, 0)->fakeImage = filled(30, 20, Qt::red);
        RecordingData::in(table, 1)->fakeImage = renderWidget(&label);
        RecordingData::in(table, 2)->fakeImage = filled(50, 10, Qt::blue);
        const QImage saved(saveReportTo(*table, home.path(u"three"_s)) + "/report.png");
        QCOMPARE(saved.size(), QSize(120, 70));
        QCOMPARE(saved.pixelColor(29, 19), QColor(Qt::red));
        QCOMPARE(saved.pixelColor(30, 0).alpha(), 0);
        QCOMPARE(saved.pixelColor(119, 59), QColor(Qt::green));
        QCOMPARE(saved.pixelColor(0, 60), QColor(Qt::blue));
        QCOMPARE(saved.pixelColor(50, 69).alpha(), 0);
    }

    void unwritableFolderIsSurvived()
    {
        TestEnvironment home;
        // The parent is a plain file, so nothing can be created below it, even by root.
        QVERIFY(putFile(home.path(u"file"_s), "x"));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^Failed to open writable text file"));
        const QString folder = saveReportTo(*makeTable(), home.path(u"file"_s));
        QVERIFY(!QFile::exists(folder + "/report.txt"));
    }
};

QTEST_MAIN(tst_ReportExport)
#include "tst_reportexport.moc"
