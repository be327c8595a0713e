#include "BaseApplication.h"
#include "RegistryTools.h"
#include "ReportExport.h"
#include "SupportDisplayData.h"
#include "SupportDisplayTab.h"
#include "SupportFontsData.h"
#include "SupportFontsTab.h"
#include "TestEnvironment.h"

#include <QDir>
#include <QFontInfo>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList block(const QString& text, const QString& name)
{
    const QStringList lines = text.split(u"<br>"_s);
    const qsizetype start = lines.indexOf(name.leftJustified(20));
    return start < 0 ? QStringList{u"<none>"_s}
                     : lines.mid(start + 1, lines.indexOf(QString(), start) - start - 1);
}

} // namespace

// The Display and Fonts pages; real screens are loaded end to end under Xvfb.
class tst_DisplayAndFonts : public QObject
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
    // The fixed font is the list's first installed; a missing font gets no block, picture or row.
    void fonts()
    {
        SupportFontsData none({u"Consolas"_s, u"Courier New"_s});
        none.load();
        QVERIFY(!none.slot(0).font && none.slot(0).name.isEmpty());
        QCOMPARE(none.errors(), (QStringList{"Fixed font not found.", "Verdana font not found."}));
        SupportFontsData fonts({u"Consolas"_s, u"DejaVu Serif"_s, u"DejaVu Sans Mono"_s});
        fonts.load();
        QVERIFY(fonts.slot(0).font);
        QCOMPARE(fonts.slot(0).name + u'=' + QFontInfo(*fonts.slot(0).font).family(),
                 u"DejaVu Serif=DejaVu Serif"_s);
        QCOMPARE(fonts.errors(), QStringList{u"Verdana font not found."_s});
        // Where none of the usual names is installed, the system's own fixed font still is.
        QCOMPARE(BaseApplication::monospaceFontFamilies().constLast(), u"DejaVu Sans Mono"_s);
        // The embedded font's block, each value padded to 20.
        const QStringList lines = block(*fonts.text(), u"Sequence-Regular"_s);
        for (const char* line :
             {"bold:               No", "family:             Sequence", "fixedPitch:         Yes",
#ifndef Q_OS_WIN // Windows' GDI font engine gives a font added from memory no style name.
              "styleName:          Regular",
#endif
              "weight:             400"})
            QVERIFY2(lines.contains(u"  "_s + QLatin1String(line)), line);

        const QList<int> missing{1, 3};
        fonts.setSlots(
            {{{QSharedPointer<QFont>::create(u"DejaVu Sans Mono"_s), u"DejaVu Sans Mono"_s},
              {{}, u"Sequence-Regular"_s},
              {QSharedPointer<QFont>::create(u"DejaVu Sans"_s), u"System"_s},
              {{}, u"Verdana"_s}}});
        fonts.render();
        QCOMPARE(fonts.errors(), (QStringList{"Embedded Sequence-Regular font failed to load.",
                                              "Verdana font not found."}));
        SupportFontsTab tab(&fonts);
        tab.updateContent();
        const auto* grid = tab.findChildren<QGridLayout*>().constLast();
        QVERIFY(grid->itemAtPosition(3, 1));
        QSize picture(0, 0);
        for (int i = 0; i < 4; ++i) {
            const SupportFontsData::FontSlot s = fonts.slot(i);
            QCOMPARE(block(*fonts.text(), s.name).size(), missing.contains(i) ? 0 : 17);
            const auto* name = qobject_cast<QLabel*>(grid->itemAtPosition(i, 0)->widget());
            QCOMPARE(name->isHidden(), missing.contains(i));
            QCOMPARE(grid->itemAtPosition(i, 1)->widget()->isHidden(), missing.contains(i));
            if (!s.font)
                continue;
            QCOMPARE(name->text(), s.name + u':');
            // Each sample at its full width, never cut to the screen's.
            QLabel sample(s.name + u": "_s + SupportFontsData::sampleText());
            sample.setFont(*s.font);
            sample.resize(sample.sizeHint());
            const QSize size = renderWidget(&sample).size();
            picture =
                QSize(std::max(picture.width(), size.width()), picture.height() + size.height());
        }
        QCOMPARE(fonts.image().size(), picture);
    }

    // Screens under 1024x768 named in order; DPI rounds half up; a folder in the way fails Apply.
    void display()
    {
        SupportDisplayData data;
        QCOMPARE(data.errors(), QStringList{u"No screens found."_s});
        data.setFigures({{u"HDMI-1"_s, QSize(1024, 768), QSizeF(508.5, 285.75), 1.1f},
                         {u"b"_s, QSize(1023, 767), QSizeF(508, 286), 1.0f}},
                        95.5, 47.49, 143.5);
        data.render();
        QCOMPARE(*data.text(),
                 u"Errors:<br>1. Screen 2 is too narrow.<br>2. Screen 2 is too short.<br><br>"
                 "Number of Screens:  2<br><br>screen 1:           <br>  name=HDMI-1<br>"
                 "  geometry=(1024 x 768)<br>  physicalSize=(508.5 x 285.75)<br>"
                 "  devicePixelRatio=1.1<br><br>screen 2:           <br>  name=b<br>"
                 "  geometry=(1023 x 767)<br>  physicalSize=(508 x 286)<br>"
                 "  devicePixelRatio=1<br><br>Minimum DPI:        47<br>"
                 "Maximum DPI:        144<br>Effective DPI:      96<br>"_s);

        TestEnvironment home;
        const QString file = home.path(u".config/environment.d/60-corvanta-support.conf"_s);
        QVERIFY(QDir().mkpath(file));
#ifdef Q_OS_WIN // Wine's registry outlives a run: start without the workaround.
        removeEnvironmentVariable(u"QT_AUTO_SCREEN_SCALE_FACTOR"_s);
#endif
        SupportDisplayTab tab(&data);
        tab.updateContent();
        tab.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tab));
        QPushButton *apply = nullptr, *remove = nullptr;
        for (QPushButton* button : tab.findChildren<QPushButton*>())
            (button->text() == u"Apply DPI Workaround"_s ? apply : remove) = button;
        QVERIFY(apply && apply->isEnabled() && remove && !remove->isEnabled());
#ifndef Q_OS_WIN // Windows' workaround goes to the registry, where no folder is in the way.
        QTest::mouseClick(apply, Qt::LeftButton);
        QVERIFY(apply->isEnabled() && !remove->isEnabled() && QFileInfo(file).isDir());
#endif
    }
};

QTEST_MAIN(tst_DisplayAndFonts)
#include "tst_displayandfonts.moc"
