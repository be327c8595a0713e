#include "RecordingData.h"
#include "ReportFragments.h"

#include <QTest>

class tst_ReportFragments : public QObject
{
    Q_OBJECT

private slots:
    void errorsHtml_data();
    void errorsHtml();
    void lineBreaks_data();
    void lineBreaks();
    void appendField_data();
    void appendField();
    void appendIndented_data();
    void appendIndented();
    void links_data();
    void links();
    void plainText_data();
    void plainText();
    void words();
};

void tst_ReportFragments::errorsHtml_data()
{
    QTest::addColumn<QStringList>("errors");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << QStringList() << "";
    QTest::newRow("one") << QStringList{"a"} << "Errors:<br>1. a";
    QTest::newRow("three") << QStringList{"a", "b", "c"} << "Errors:<br>1. a<br>2. b<br>3. c";
    QTest::newRow("placeholders stay") << QStringList{"%1 and %2"} << "Errors:<br>1. %1 and %2";
}

void tst_ReportFragments::errorsHtml()
{
    QFETCH(QStringList, errors);
    QFETCH(QString, expected);
    RecordingData data(0, QStringLiteral("Display"), nullptr);
    data.fakeErrors = errors;
    QCOMPARE(::errorsHtml(data), expected);
}

void tst_ReportFragments::lineBreaks_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("expected");
    QTest::newRow("negative") << -1 << "";
    QTest::newRow("zero") << 0 << "";
    QTest::newRow("two") << 2 << "<br><br>";
}

void tst_ReportFragments::lineBreaks()
{
    QFETCH(int, count);
    QFETCH(QString, expected);
    QCOMPARE(::lineBreaks(count), expected);
}

void tst_ReportFragments::appendField_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("note");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("expected");
    QTest::newRow("text") << "OS:" << QVariant("Linux") << ""
                          << ""
                          << "OS:                 Linux";
    QTest::newRow("bool true") << "Writable:" << QVariant(true) << ""
                               << ""
                               << "Writable:           Yes";
    QTest::newRow("bool false") << "Writable:" << QVariant(false) << ""
                                << ""
                                << "Writable:           No";
    QTest::newRow("number with note and suffix") << "RAM:" << QVariant(8) << "low"
                                                 << "GB"
                                                 << "RAM:                8 - low GB";
    QTest::newRow("null value with note") << "Path:" << QVariant() << "missing"
                                          << ""
                                          << "Path:               missing";
    QTest::newRow("empty text is not null") << "Path:" << QVariant(QString()) << "missing"
                                            << ""
                                            << "Path:                - missing";
    QTest::newRow("long label is not cut") << "A label of more than twenty:" << QVariant(1) << ""
                                           << ""
                                           << "A label of more than twenty:1";
    QTest::newRow("errors as a label") << "Errors:<br>1. x" << QVariant() << ""
                                       << ""
                                       << "Errors:<br>1. x     ";
}

void tst_ReportFragments::appendField()
{
    QFETCH(QString, label);
    QFETCH(QVariant, value);
    QFETCH(QString, note);
    QFETCH(QString, suffix);
    QFETCH(QString, expected);
    QString output = QStringLiteral("before|");
    ::appendField(output, label, value, note, suffix);
    QCOMPARE(output, QStringLiteral("before|") + expected);
}

void tst_ReportFragments::appendIndented_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no width") << "name=" << QVariant("VGA-1") << 0 << "  name=VGA-1";
    QTest::newRow("width 20") << "family" << QVariant("Mono") << 20 << "  family              Mono";
    QTest::newRow("null value") << "family" << QVariant() << 8 << "  family  ";
}

void tst_ReportFragments::appendIndented()
{
    QFETCH(QString, label);
    QFETCH(QVariant, value);
    QFETCH(int, width);
    QFETCH(QString, expected);
    QString output;
    ::appendIndented(output, label, value, width);
    QCOMPARE(output, expected);
}

void tst_ReportFragments::links_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("expected");
    QTest::newRow("link") << link("text", "href", "") << "<a href='href' >text</a>";
    QTest::newRow("link with attributes")
        << link("t", "h", "class=x") << "<a href='h' class=x>t</a>";
    QTest::newRow("action") << actionLink("Clear", "clearTemp")
                            << "<a href='#clearTemp' >Clear</a>";
    QTest::newRow("file") << fileLink("/home/user/Corvanta")
                          << "<a href='file:///home/user/Corvanta' >/home/user/Corvanta</a>";
    QTest::newRow("remove") << removeLink("deletePath/tmp/x")
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
}

void tst_ReportFragments::links()
{
    QFETCH(QString, html);
    QFETCH(QString, expected);
    QCOMPARE(html, expected);
}

void tst_ReportFragments::plainText_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("expected");
    QTest::newRow("line breaks and remove link")
        << "a<br>b " + removeLink("deletePath/x") << "a\nb ";
    QTest::newRow("clear link") << "Temp: " + actionLink("Clear", "clearTemp") << "Temp: ";
    QTest::newRow("other link keeps its word") << actionLink("Check", "check") << "Check";
    QTest::newRow("upper-case break is a tag") << "a<BR>b"
                                               << "ab";
    QTest::newRow("hostile path is shown as it is")
        << fileLink("/t/a&b<c>\"d\"'e'%20&amp;") << "/t/a&b<c>\"d\"'e'%20&amp;";
    QTest::newRow("remove word kept outside links") << "Remove<br>Clear"
                                                    << "Remove\nClear";
}

void tst_ReportFragments::plainText()
{
    QFETCH(QString, html);
    QFETCH(QString, expected);
    QCOMPARE(htmlToPlainText(html), expected);
    QCOMPARE(preformatted(html), QStringLiteral("<pre>") + html + QStringLiteral("</pre>"));
}

void tst_ReportFragments::words()
{
    QCOMPARE(presenceText(true), QStringLiteral("Present"));
    QCOMPARE(presenceText(false), QStringLiteral("Not Present"));
    QCOMPARE(yesNo(true), QStringLiteral("Yes"));
    QCOMPARE(yesNo(false), QStringLiteral("No"));
    QCOMPARE(decodedLink(QStringLiteral("#p/100%2541%0A%27")), QStringLiteral("#p/100%41\n'"));
}

QTEST_GUILESS_MAIN(tst_ReportFragments)
#include "tst_reportfragments.moc"
