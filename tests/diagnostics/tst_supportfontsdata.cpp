#include "ReportExport.h"
#include "SupportFontsData.h"
#include "TestEnvironment.h"

#include <QFontInfo>
#include <QLabel>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using FontSlots = SupportFontsData::FontSlots;

QSharedPointer<QFont> font(const QString& family, int weight = 400)
{
    auto result = QSharedPointer<QFont>::create(family);
    result->setWeight(QFont::Weight(weight));
    return result;
}

// Stand-ins for the four fonts, from the DejaVu families every test machine has.
FontSlots standIns(const QList<int>& missing = {})
{
    FontSlots fontSlots{{{font(u"DejaVu Sans Mono"_s), u"DejaVu Sans Mono"_s},
                         {font(u"DejaVu Serif"_s), u"Sequence-Regular"_s},
                         {font(u"DejaVu Sans"_s), u"System"_s},
                         {font(u"DejaVu Sans Condensed"_s), u"Verdana"_s}}};
    for (int index : missing)
        fontSlots[size_t(index)].font.reset();
    return fontSlots;
}

// The property lines of one font's block, between its name line and the blank line ending it.
QStringList block(const QString& text, const QString& name)
{
    const QStringList lines = text.split(u"<br>"_s);
    const qsizetype start = lines.indexOf(name.leftJustified(20));
    if (start < 0)
        return {u"<no block>"_s};
    return lines.mid(start + 1, lines.indexOf(QString(), start) - start - 1);
}

} // namespace

class tst_SupportFontsData : public QObject
{
    Q_OBJECT

public:
    // Only the DejaVu fonts are installed for this test, so "Consolas" and "Verdana" are surely
    // missing, whatever the machine has.
    static void initMain()
    {
        static TestEnvironment fontHome;
        const QString config = fontHome.path(u"fonts.conf"_s);
        putFile(config, "<?xml version=\"1.0\"?>\n<fontconfig>\n"
                        "<dir>/usr/share/fonts/truetype/dejavu</dir>\n<cachedir>"
                            + fontHome.path(u"cache"_s).toUtf8() + "</cachedir>\n</fontconfig>\n");
        qputenv("FONTCONFIG_FILE", config.toUtf8());
    }

private slots:
    void load_data()
    {
        QTest::addColumn<QStringList>("families");
        QTest::addColumn<QString>("fixed");
        QTest::addColumn<QStringList>("errors");
        const QString verdana = u"Verdana font not found."_s;
        QTest::newRow("first installed one")
            << QStringList{"Consolas", "DejaVu Serif", "DejaVu Sans Mono"} << "DejaVu Serif"
            << QStringList{verdana};
        QTest::newRow("list order decides") << QStringList{"DejaVu Sans Mono", "DejaVu Serif"}
                                            << "DejaVu Sans Mono" << QStringList{verdana};
        QTest::newRow("none installed") << QStringList{"Consolas", "Courier New"} << ""
                                        << QStringList{"Fixed font not found.", verdana};
    }

    void load()
    {
        QFETCH(QStringList, families);
        QFETCH(QString, fixed);
        QFETCH(QStringList, errors);
        SupportFontsData fonts(families);
        fonts.load();
        QStringList found;
        for (int i = 0; i < 4; ++i) {
            const SupportFontsData::FontSlot fontSlot = fonts.slot(i);
            found << fontSlot.name + u'='
                         + (fontSlot.font ? QFontInfo(*fontSlot.font).family() : "");
        }
        QCOMPARE(found, (QStringList{fixed + u'=' + fixed, "Sequence-Regular=Sequence",
                                     "System=" + QFontInfo(QFont()).family(), "Verdana="}));
        QCOMPARE(fonts.errors(), errors);
        QVERIFY(fonts.text()->startsWith(u"Errors:<br>1. "_s + errors.first()));
    }

    void embeddedFont_data()
    {
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("value");
        const QString number = u"\\d+"_s;
        const QList<std::pair<QString, QString>> expected = {
            {"ascent", number},     {"avg char width", number},
            {"bold", "No"},         {"cap height", number},
            {"descent", number},    {"exactMatch", "Yes"},
            {"family", "Sequence"}, {"fixedPitch", "Yes"},
            {"italic", "No"},       {"max width", number},
            {"pixelSize", number},  {"pointSize", number},
            {"pointSizeF", number}, {"style", "0"},
            {"styleHint", number},  {"styleName", "Regular"},
            {"weight", "400"}};
        for (int i = 0; i < expected.size(); ++i) {
            const auto& [key, value] = expected.at(i);
            QTest::newRow(qPrintable(key))
                << i
                << QRegularExpression::escape(u"  "_s + (key + u':').leftJustified(20)) + value;
        }
    }

    void embeddedFont()
    {
        QFETCH(int, line);
        QFETCH(QString, value);
        SupportFontsData fonts{QStringList()};
        fonts.load();
        const QStringList lines = block(*fonts.text(), u"Sequence-Regular"_s);
        QCOMPARE(lines.size(), 17);
        QVERIFY2(QRegularExpression(QRegularExpression::anchoredPattern(value))
                     .match(lines.at(line))
                     .hasMatch(),
                 qPrintable(lines.at(line)));
    }

    void bold_data()
    {
        QTest::addColumn<int>("weight");
        QTest::addColumn<QString>("bold");
        QTest::newRow("normal") << 400 << "No";
        QTest::newRow("just above normal") << 401 << "Yes";
    }

    void bold()
    {
        QFETCH(int, weight);
        QFETCH(QString, bold);
        FontSlots fontSlots = standIns();
        fontSlots[0].font = font(u"DejaVu Sans Mono"_s, weight);
        SupportFontsData fonts;
        fonts.setSlots(fontSlots);
        fonts.render();
        QCOMPARE(block(*fonts.text(), u"DejaVu Sans Mono"_s).value(2),
                 u"  bold:"_s + QString(15, u' ') + bold);
    }

    void missingFonts_data()
    {
        QTest::addColumn<QList<int>>("missing");
        QTest::addColumn<QStringList>("errors");
        QTest::newRow("none") << QList<int>() << QStringList();
        QTest::newRow("fixed") << QList<int>{0} << QStringList{"Fixed font not found."};
        QTest::newRow("Verdana") << QList<int>{3} << QStringList{"Verdana font not found."};
        QTest::newRow("all that can be")
            << QList<int>{3, 1, 0}
            << QStringList{"Fixed font not found.",
                           "Embedded Sequence-Regular font failed to load.",
                           "Verdana font not found."};
    }

    // A missing font gives its error, only its name line in the text, and no picture.
    void missingFonts()
    {
        QFETCH(QList<int>, missing);
        QFETCH(QStringList, errors);
        const FontSlots fontSlots = standIns(missing);
        auto table = SupportDataTable::create();
        auto* fonts = new SupportFontsData;
        table->emplace(fonts->type(), fonts);
        fonts->setSlots(fontSlots);
        fonts->render();
        QCOMPARE(fonts->errors(), errors);

        QSize expected(0, 0);
        for (size_t i = 0; i < fontSlots.size(); ++i) {
            const SupportFontsData::FontSlot& fontSlot = fontSlots[i];
            QCOMPARE(block(*fonts->text(), fontSlot.name).size(),
                     missing.contains(int(i)) ? 0 : 17);
            if (!fontSlot.font)
                continue;
            QLabel sample(fontSlot.name + u": "_s + SupportFontsData::sampleText());
            sample.setFont(*fontSlot.font);
            sample.resize(sample.sizeHint());
            const QSize size = renderWidget(&sample).size();
            expected =
                QSize(std::max(expected.width(), size.width()), expected.height() + size.height());
        }
        TestEnvironment home;
        const QString folder = saveReportTo(*table, home.home());
        QCOMPARE(QImage(folder + u"/report.png"_s).size(), expected);
    }
};

QTEST_MAIN(tst_SupportFontsData)
#include "tst_supportfontsdata.moc"
