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
        QTest::newRow("three errors")
            << errors({"a", "b", "c"}) << "Errors:<br>1. a<br>2. b<br>3. c";
        QTest::newRow("placeholders stay in errors")
            << errors({"%1 and %2"}) << "Errors:<br>1. %1 and %2";
        QTest::newRow("no line breaks") << lineBreaks(-1) + lineBreaks(0) << "";
        QTest::newRow("two line breaks") << lineBreaks(2) << "<br><br>";
        QTest::newRow("field text") << field("OS:", "Linux") << "before|OS:                 Linux";
        QTest::newRow("field true") << field("Writable:", true) << "before|Writable:           Yes";
        QTest::newRow("field false")
            << field("Writable:", false) << "before|Writable:           No";
        QTest::newRow("field with note and suffix")
            << field("RAM:", 8, "low", "GB") << "before|RAM:                8 - low GB";
        QTest::newRow("field null with note")
            << field("Path:", QVariant(), "missing") << "before|Path:               missing";
        QTest::newRow("field empty text is not null")
            << field("Path:", QString(), "missing") << "before|Path:                - missing";
        QTest::newRow("field long label is not cut")
            << field("A label of more than twenty:", 1) << "before|A label of more than twenty:1";
        QTest::newRow("field errors as label")
            << field("Errors:<br>1. x", QVariant()) << "before|Errors:<br>1. x     ";
        QTest::newRow("indented no width") << indented("name=", "VGA-1", 0) << "  name=VGA-1";
        QTest::newRow("indented width 20")
            << indented("family", "Mono", 20) << "  family              Mono";
        QTest::newRow("indented null") << indented("family", QVariant(), 8) << "  family  ";
        QTest::newRow("link") << link("text", "href", "") << "<a href='href' >text</a>";
        QTest::newRow("link with attributes")
            << link("t", "h", "class=x") << "<a href='h' class=x>t</a>";
        QTest::newRow("action") << actionLink("Clear", "clearTemp")
                                << "<a href='#clearTemp' >Clear</a>";
        QTest::newRow("file") << fileLink("/home/user/Corvanta")
                              << "<a href='file:///home/user/Corvanta' >/home/user/Corvanta</a>";
        QTest::newRow("remove")
            << removeLink("deletePath/tmp/x")
            << "<a href='#deletePath/tmp/x' style=\"color: #bb0000\";>Remove</a>";
        QTest::newRow("spaces and letters stay")
            << fileLink("/home/Zoë Ünal/My Files")
            << "<a href='file:///home/Zoë Ünal/My Files' >/home/Zoë Ünal/My Files</a>";
        QTest::newRow("quote") << fileLink("/home/o'brien")
                               << "<a href='file:///home/o%27brien' >/home/o'brien</a>";
        QTest::newRow("markup and entities")
            << fileLink("/t/a&b<c>\"d\"")
            << "<a href='file:///t/a%26b%3Cc%3E%22d%22' >/t/a&amp;b&lt;c&gt;&quot;d&quot;</a>";
        QTest::newRow("percent") << actionLink("x", "p/100%41") << "<a href='#p/100%2541' >x</a>";
        QTest::newRow("control characters")
            << actionLink("x", "p/a\nb\tc") << "<a href='#p/a%0Ab%09c' >x</a>";
        QTest::newRow("decoded link") << decodedLink(u"#p/100%2541%0A%27"_s) << "#p/100%41\n'";
        QTest::newRow("words")
            << QStringList{presenceText(true), presenceText(false), yesNo(true), yesNo(false)}.join(
                   '|')
            << "Present|Not Present|Yes|No";
        // The plain report: tags and action links gone, other links keep their words.
        QTest::newRow("plain: line breaks and remove link")
            << htmlToPlainText("a<br>b " + removeLink("deletePath/x")) << "a\nb ";
        QTest::newRow("plain: clear link")
            << htmlToPlainText("Temp: " + actionLink("Clear", "clearTemp")) << "Temp: ";
        QTest::newRow("plain: other link")
            << htmlToPlainText(actionLink("Check", "check")) << "Check";
        QTest::newRow("plain: upper-case break is a tag") << htmlToPlainText(u"a<BR>b"_s) << "ab";
        QTest::newRow("plain: hostile path is shown as it is")
            << htmlToPlainText(fileLink("/t/a&b<c>\"d\"'e'%20&amp;"))
            << "/t/a&b<c>\"d\"'e'%20&amp;";
        QTest::newRow("plain: remove word kept outside links")
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
