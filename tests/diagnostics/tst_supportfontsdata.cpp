#include "ReportExport.h"
#include "SupportFontsData.h"
#include "SupportFontsTab.h"
#include "TestEnvironment.h"

#include <QFontInfo>
#include <QGridLayout>
#include <QLabel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Stand-ins for the four fonts, from the DejaVu families every test machine has; the fixed one
// just above normal weight, the others at normal weight.
SupportFontsData::FontSlots standIns(const QList<int>& missing)
{
    const QStringList families = {"DejaVu Sans Mono", "DejaVu Serif", "DejaVu Sans", "DejaVu Sans"};
    const QStringList names = {"DejaVu Sans Mono", "Sequence-Regular", "System", "Verdana"};
    SupportFontsData::FontSlots fontSlots;
    for (int i = 0; i < 4; ++i) {
        fontSlots[size_t(i)].name = names.at(i);
        if (!missing.contains(i))
            fontSlots[size_t(i)].font = QSharedPointer<QFont>::create(families.at(i));
    }
    if (fontSlots[0].font)
        fontSlots[0].font->setWeight(QFont::Weight(401));
    return fontSlots;
}

// The property lines of one font's block, between its name line and the blank line ending it.
QStringList block(const QString& text, const QString& name)
{
    const QStringList lines = text.split(u"<br>"_s);
    const qsizetype start = lines.indexOf(name.leftJustified(20));
    return start < 0 ? QStringList{u"<none>"_s}
                     : lines.mid(start + 1, lines.indexOf(QString(), start) - start - 1);
}

} // namespace

class tst_SupportFontsData : public QObject
{
    Q_OBJECT

public:
    // Only the DejaVu fonts exist for this test: "Consolas" and "Verdana" are surely missing.
    static void initMain()
    {
        static TestEnvironment fonts;
        const QString config = fonts.path(u"fonts.conf"_s);
        putFile(config, "<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>"
                            + fonts.path(u"cache"_s).toUtf8() + "</cachedir></fontconfig>");
        qputenv("FONTCONFIG_FILE", config.toUtf8());
    }

private slots:
    void load_data()
    {
        QTest::addColumn<QStringList>("families");
        QTest::addColumn<QString>("fixed");
        QTest::newRow("first installed one")
            << QStringList{"Consolas", "DejaVu Serif", "DejaVu Sans Mono"} << "DejaVu Serif";
        QTest::newRow("none installed") << QStringList{"Consolas", "Courier New"} << "";
    }

    void load()
    {
        QFETCH(QStringList, families);
        QFETCH(QString, fixed);
        SupportFontsData fonts(families);
        fonts.load();
        const QSharedPointer<QFont> font = fonts.slot(0).font;
        QCOMPARE(fonts.slot(0).name + u'=' + (font ? QFontInfo(*font).family() : ""),
                 fixed + u'=' + fixed);
        QCOMPARE(fonts.errors().join(u'|'), (fixed.isEmpty() ? "Fixed font not found.|"_L1 : ""_L1)
                                                + "Verdana font not found.");

        // The embedded font's block: every key in ascending order, each value padded to 20.
        const QStringList lines = block(*fonts.text(), u"Sequence-Regular"_s);
        QStringList keys;
        for (const QString& line : lines)
            keys << line.section(u':', 0, 0).trimmed();
        QCOMPARE(
            keys.join(u','),
            u"ascent,avg char width,bold,cap height,descent,exactMatch,family,fixedPitch,italic,"
            "max width,pixelSize,pointSize,pointSizeF,style,styleHint,styleName,weight"_s);
        for (const char* line :
             {"bold:               No", "family:             Sequence", "fixedPitch:         Yes",
              "styleName:          Regular", "weight:             400"})
            QVERIFY2(lines.contains(u"  "_s + QLatin1String(line)), line);
    }

    void missingFonts_data()
    {
        QTest::addColumn<QList<int>>("missing");
        QTest::addColumn<QStringList>("errors");
        QTest::newRow("none") << QList<int>() << QStringList();
        QTest::newRow("all that can be")
            << QList<int>{3, 1, 0}
            << QStringList{"Fixed font not found.",
                           "Embedded Sequence-Regular font failed to load.",
                           "Verdana font not found."};
    }

    // A missing font gives its error, only its name line in the text, no picture and no row on
    // the page; the page shows the collector's fonts without looking them up again.
    void missingFonts()
    {
        QFETCH(QList<int>, missing);
        auto table = SupportDataTable::create();
        auto* fonts = new SupportFontsData;
        table->emplace(fonts->type(), fonts);
        fonts->setSlots(standIns(missing));
        fonts->render();
        QTEST(fonts->errors(), "errors");
        // Bold from weight 401 up.
        QCOMPARE(block(*fonts->text(), u"System"_s).value(2), u"  bold:               No"_s);
        if (!missing.contains(0))
            QCOMPARE(block(*fonts->text(), u"DejaVu Sans Mono"_s).value(2),
                     u"  bold:               Yes"_s);

        SupportFontsTab tab(fonts);
        tab.updateContent();
        const auto* grid = tab.findChildren<QGridLayout*>().constLast();
        QVERIFY(grid->itemAtPosition(3, 1));
        QSize picture(0, 0);
        for (int i = 0; i < 4; ++i) {
            const SupportFontsData::FontSlot s = fonts->slot(i);
            QCOMPARE(block(*fonts->text(), s.name).size(), missing.contains(i) ? 0 : 17);
            const auto* name = qobject_cast<QLabel*>(grid->itemAtPosition(i, 0)->widget());
            QCOMPARE(name->isHidden(), missing.contains(i));
            QCOMPARE(grid->itemAtPosition(i, 1)->widget()->isHidden(), missing.contains(i));
            if (!s.font)
                continue;
            QCOMPARE(name->text(), s.name + u':');
            QLabel sample(s.name + u": "_s + SupportFontsData::sampleText());
            sample.setFont(*s.font);
            sample.resize(sample.sizeHint());
            const QSize size = renderWidget(&sample).size();
            picture =
                QSize(std::max(picture.width(), size.width()), picture.height() + size.height());
        }
        TestEnvironment home;
        QCOMPARE(QImage(saveReportTo(*table, home.home()) + u"/report.png"_s).size(), picture);
    }
};

QTEST_MAIN(tst_SupportFontsData)
#include "tst_supportfontsdata.moc"
