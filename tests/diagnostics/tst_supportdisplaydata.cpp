#include "SupportDisplayData.h"

#include <QTest>

using namespace Qt::StringLiterals;

// Loading the real screens is covered end to end under Xvfb; here the figures are set directly.
class tst_SupportDisplayData : public QObject
{
    Q_OBJECT

private slots:
    void errors_data()
    {
        QTest::addColumn<QList<QSize>>("sizes");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("none") << QList<QSize>() << QStringList{"No screens found."};
        QTest::newRow("large enough") << QList<QSize>{{1024, 768}} << QStringList();
        QTest::newRow("narrow") << QList<QSize>{{1023, 768}}
                                << QStringList{"Screen 1 is too narrow."};
        QTest::newRow("second short")
            << QList<QSize>{{1920, 1080}, {1366, 720}} << QStringList{"Screen 2 is too short."};
        QTest::newRow("both, narrow first")
            << QList<QSize>{{800, 600}, {800, 600}}
            << QStringList{"Screen 1 is too narrow.", "Screen 1 is too short.",
                           "Screen 2 is too narrow.", "Screen 2 is too short."};
    }

    void errors()
    {
        QFETCH(QList<QSize>, sizes);
        QFETCH(QStringList, expected);
        QList<SupportDisplayData::Screen> screens;
        for (const QSize& size : sizes)
            screens.append({u"s"_s, size, QSizeF(300, 200), 1.0f});
        SupportDisplayData data;
        data.setFigures(screens, 96, 96, 96);
        QCOMPARE(data.errors(), expected);
    }

    void rendering_data()
    {
        QTest::addColumn<double>("dpi");
        QTest::addColumn<float>("ratio");
        QTest::addColumn<QSizeF>("physical");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("rounded");
        QTest::newRow("half rounds up")
            << 95.5 << 1.0f << QSizeF(508, 286) << "(508 x 286)<br>  devicePixelRatio=1" << 96;
        QTest::newRow("just below half rounds down")
            << 95.49 << 1.25f << QSizeF(508.5, 285.75)
            << "(508.5 x 285.75)<br>  devicePixelRatio=1.25" << 95;
        QTest::newRow("ratio shown in float precision")
            << 144.0 << 1.1f << QSizeF(340, 190) << "(340 x 190)<br>  devicePixelRatio=1.1" << 144;
    }

    void rendering()
    {
        QFETCH(double, dpi);
        QFETCH(float, ratio);
        QFETCH(QSizeF, physical);
        QFETCH(QString, shown);
        QFETCH(int, rounded);
        SupportDisplayData data;
        data.setFigures({{u"HDMI-1"_s, QSize(1920, 1080), physical, ratio}}, dpi, dpi, dpi);
        data.render();
        QCOMPARE(*data.text(),
                 "Number of Screens:  1<br><br>screen 1:           <br>  name=HDMI-1<br>"
                 "  geometry=(1920 x 1080)<br>  physicalSize="
                     + shown
                     + QStringLiteral("<br><br>Minimum DPI:        %1<br>Maximum DPI:  "
                                      "      %1<br>Effective DPI:      %1<br>")
                           .arg(rounded));
    }
};

QTEST_MAIN(tst_SupportDisplayData)
#include "tst_supportdisplaydata.moc"
