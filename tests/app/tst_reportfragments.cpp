#include "RecordingData.h"
#include "ReportFragments.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_ReportFragments : public QObject
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
        QTest::newRow("line breaks")
            << lineBreaks(-1) + lineBreaks(0) + lineBreaks(2) << "<br><br>";
        QTest::newRow("field text") << field("OS:", "Linux") << "before|OS:                 Linux";
        QTest::newRow("field true") << field("Writable:", true) << "before|Writable:           Yes";
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
        QTest::newRow("action") << actionLink("Clear", "clearTemp")
                                << "<a href='#clearTemp' >Clear</a>";
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
        QTest::newRow("words")
            << QStringList{presenceText(true), presenceText(false), yesNo(true), yesNo(false)}.join(
                   '|')
            << "Present|Not Present|Yes|No";
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
};

QTEST_GUILESS_MAIN(tst_ReportFragments)
#include "tst_reportfragments.moc"
