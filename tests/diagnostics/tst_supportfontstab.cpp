#include "ReportFragments.h"
#include "SupportFontsData.h"
#include "SupportFontsTab.h"

#include <QFontInfo>
#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

SupportFontsData::FontSlots standIns(const QList<int>& missing = {})
{
    SupportFontsData::FontSlots fontSlots;
    const QStringList families = {"DejaVu Sans Mono", "DejaVu Serif", "DejaVu Sans",
                                  "DejaVu Sans Mono"};
    for (int i = 0; i < 4; ++i) {
        if (!missing.contains(i))
            fontSlots[size_t(i)].font = QSharedPointer<QFont>::create(families.at(i));
        fontSlots[size_t(i)].name = u"Stand-in %1"_s.arg(i);
    }
    return fontSlots;
}

} // namespace

class tst_SupportFontsTab : public QObject
{
    Q_OBJECT

private slots:
    void rows_data()
    {
        QTest::addColumn<QList<int>>("missing");
        QTest::newRow("all found") << QList<int>();
        QTest::newRow("Verdana missing") << QList<int>{3};
        QTest::newRow("fixed and embedded missing") << QList<int>{0, 1};
    }

    // The page shows what the collector holds: a refresh does not look the fonts up again.
    void rows()
    {
        QFETCH(QList<int>, missing);
        SupportFontsData fonts;
        fonts.setSlots(standIns());
        SupportFontsTab tab(&fonts);
        tab.updateContent();
        tab.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tab));
        fonts.setSlots(standIns(missing));
        fonts.render();
        tab.updateContent();

        QGridLayout* grid = nullptr;
        for (QGridLayout* layout : tab.findChildren<QGridLayout*>()) {
            if (layout->itemAtPosition(3, 1))
                grid = layout;
        }
        QVERIFY(grid);
        for (int row = 0; row < 4; ++row) {
            auto* name = qobject_cast<QLabel*>(grid->itemAtPosition(row, 0)->widget());
            auto* sample = qobject_cast<QLabel*>(grid->itemAtPosition(row, 1)->widget());
            QVERIFY(name && sample);
            const SupportFontsData::FontSlot fontSlot = fonts.slot(row);
            QCOMPARE(name->isVisible(), !missing.contains(row));
            QCOMPARE(sample->isVisible(), !missing.contains(row));
            if (!fontSlot.font)
                continue;
            QCOMPARE(name->text(), u"Stand-in %1:"_s.arg(row));
            QCOMPARE(sample->text(), SupportFontsData::sampleText());
            QCOMPARE(QFontInfo(sample->font()).family(), QFontInfo(*fontSlot.font).family());
        }
        auto* text = qobject_cast<QLabel*>(tab.findChild<QScrollArea*>()->widget());
        QCOMPARE(text->text(), preformatted(*fonts.text()));
    }
};

QTEST_MAIN(tst_SupportFontsTab)
#include "tst_supportfontstab.moc"
