#include "ReportFragments.h"
#include "SupportDisplayData.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

using Screen = SupportDisplayData::Screen;

class tst_SupportDisplayData : public QObject
{
    Q_OBJECT

private slots:
    void errors_data();
    void errors();
    void rendering_data();
    void rendering();
    void noScreens();
    void loadReadsTheScreens();
};

void tst_SupportDisplayData::errors_data()
{
    QTest::addColumn<QList<QSize>>("sizes");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("large enough") << QList<QSize>{{1024, 768}} << QStringList();
    QTest::newRow("narrow") << QList<QSize>{{1023, 768}} << QStringList{"Screen 1 is too narrow."};
    QTest::newRow("second short") << QList<QSize>{{1920, 1080}, {1366, 720}}
                                  << QStringList{"Screen 2 is too short."};
    QTest::newRow("both, narrow first")
        << QList<QSize>{{800, 600}, {800, 600}}
        << QStringList{"Screen 1 is too narrow.", "Screen 1 is too short.",
                       "Screen 2 is too narrow.", "Screen 2 is too short."};
}

void tst_SupportDisplayData::errors()
{
    QFETCH(QList<QSize>, sizes);
    QFETCH(QStringList, expected);
    QList<Screen> screens;
    for (const QSize& size : sizes)
        screens.append({QStringLiteral("s"), size, QSizeF(300, 200), 1.0f});
    SupportDisplayData data;
    data.setFigures(screens, 96, 96, 96);
    QCOMPARE(data.errors(), expected);
}

void tst_SupportDisplayData::rendering_data()
{
    QTest::addColumn<double>("dpi");
    QTest::addColumn<float>("ratio");
    QTest::addColumn<QSizeF>("physical");
    QTest::addColumn<QString>("expected");
    const QString head = QStringLiteral("Number of Screens:  1<br><br>"
                                        "screen 1:           <br>"
                                        "  name=HDMI-1<br>"
                                        "  geometry=(1920 x 1080)<br>");
    QTest::newRow("half rounds up")
        << 95.5 << 1.0f << QSizeF(508, 286)
        << head
               + "  physicalSize=(508 x 286)<br>  devicePixelRatio=1<br><br>"
                 "Minimum DPI:        96<br>Maximum DPI:        96<br>Effective DPI:      96<br>";
    QTest::newRow("just below half rounds down")
        << 95.49 << 1.25f << QSizeF(508.5, 285.75)
        << head
               + "  physicalSize=(508.5 x 285.75)<br>  devicePixelRatio=1.25<br><br>"
                 "Minimum DPI:        95<br>Maximum DPI:        95<br>Effective DPI:      95<br>";
    QTest::newRow("ratio shown in float precision")
        << 144.0 << 1.1f << QSizeF(340, 190)
        << head
               + "  physicalSize=(340 x 190)<br>  devicePixelRatio=1.1<br><br>"
                 "Minimum DPI:        144<br>Maximum DPI:        144<br>Effective DPI:      "
                 "144<br>";
}

void tst_SupportDisplayData::rendering()
{
    QFETCH(double, dpi);
    QFETCH(float, ratio);
    QFETCH(QSizeF, physical);
    QFETCH(QString, expected);
    SupportDisplayData data;
    data.setFigures({{QStringLiteral("HDMI-1"), QSize(1920, 1080), physical, ratio}}, dpi, dpi,
                    dpi);
    data.render();
    QCOMPARE(*data.text(), expected);
}

void tst_SupportDisplayData::noScreens()
{
    SupportDisplayData data;
    data.setFigures({}, 0, 0, 0);
    data.render();
    QCOMPARE(data.errors(), QStringList{"No screens found."});
    QCOMPARE(
        htmlToPlainText(*data.text()),
        QStringLiteral("Errors:\n1. No screens found.\n\nNumber of Screens:  0\n\n"
                       "Minimum DPI:        0\nMaximum DPI:        0\nEffective DPI:      0\n"));
}

// The offscreen platform has one screen of 800 x 800.
void tst_SupportDisplayData::loadReadsTheScreens()
{
    SupportDisplayData data;
    data.load();
    const QScreen* primary = QGuiApplication::primaryScreen();
    QCOMPARE(data.screens().size(), QGuiApplication::screens().size());
    QCOMPARE(data.screens().first().size, primary->geometry().size());
    QCOMPARE(data.effectiveDpi(), primary->physicalDotsPerInch());
    QCOMPARE(data.minimumDpi(), primary->physicalDotsPerInch());
    QCOMPARE(data.errors(), QStringList({"Screen 1 is too narrow."}));
    QVERIFY(
        data.text()->startsWith(QStringLiteral("Errors:<br>1. Screen 1 is too narrow.<br><br>")));
    QVERIFY(data.text()->contains(QStringLiteral("geometry=(800 x 800)")));
}

QTEST_MAIN(tst_SupportDisplayData)
#include "tst_supportdisplaydata.moc"
