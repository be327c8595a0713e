#include "SupportDisplayData.h"
#include "SupportDisplayTab.h"
#include "TestEnvironment.h"

#include <QDir>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QPushButton* button(const QWidget& tab, const QString& action)
{
    for (QPushButton* candidate : tab.findChildren<QPushButton*>()) {
        if (candidate->text() == action + u" DPI Workaround"_s)
            return candidate;
    }
    return nullptr;
}

const QByteArray other = "# set by hand\nEDITOR=vi\n";
const QByteArray workaround = "QT_AUTO_SCREEN_SCALE_FACTOR=0\n";
const QByteArray folder = "<a folder>";

} // namespace

// Loading the real screens is covered end to end under Xvfb; here the figures are set directly.
class tst_SupportDisplay : public QObject
{
    Q_OBJECT

private slots:
    // Each screen smaller than 1024 x 768 is named, in screen order.
    void errors()
    {
        SupportDisplayData data;
        QCOMPARE(data.errors(), QStringList{u"No screens found."_s});
        const QSizeF physical(300, 200);
        data.setFigures({{u"a"_s, QSize(1024, 768), physical, 1.0f},
                         {u"b"_s, QSize(1023, 768), physical, 1.0f},
                         {u"c"_s, QSize(1024, 767), physical, 1.0f}},
                        96, 96, 96);
        QCOMPARE(data.errors(), (QStringList{"Screen 2 is too narrow.", "Screen 3 is too short."}));
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
        QTest::newRow("just below half rounds down, ratio in float precision")
            << 95.49 << 1.1f << QSizeF(508.5, 285.75)
            << "(508.5 x 285.75)<br>  devicePixelRatio=1.1" << 95;
    }

    // Minimum and maximum lie 48 below and above the effective figure, so each line is told apart.
    void rendering()
    {
        QFETCH(double, dpi);
        QFETCH(float, ratio);
        QFETCH(QSizeF, physical);
        QFETCH(QString, shown);
        QFETCH(int, rounded);
        SupportDisplayData data;
        data.setFigures({{u"HDMI-1"_s, QSize(1920, 1080), physical, ratio}}, dpi, dpi - 48,
                        dpi + 48);
        data.render();
        QCOMPARE(*data.text(),
                 "Number of Screens:  1<br><br>screen 1:           <br>  name=HDMI-1<br>"
                 "  geometry=(1920 x 1080)<br>  physicalSize="
                     + shown
                     + u"<br><br>Minimum DPI:        %1<br>Maximum DPI:        %2<br>"
                       "Effective DPI:      %3<br>"_s.arg(rounded - 48)
                           .arg(rounded + 48)
                           .arg(rounded));
    }

    void buttons_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("click");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("apply keeps other lines") << other << "Apply" << other + workaround;
        QTest::newRow("starts with the variable set") << workaround << "" << workaround;
        // A folder where the file belongs: the write fails, for root too.
        QTest::newRow("failure changes nothing") << folder << "Apply" << folder;
    }

    // The workaround buttons: only the one that changes something is enabled, before and after.
    void buttons()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, click);
        QFETCH(QByteArray, after);
        TestEnvironment home;
        const QString file = home.path(u".config/environment.d/60-corvanta-support.conf"_s);
        QVERIFY(before == folder ? QDir().mkpath(file) : putFile(file, before));
        SupportDisplayData display;
        SupportDisplayTab tab(&display);
        tab.updateContent();
        tab.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tab));
        QPushButton* apply = button(tab, u"Apply"_s);
        QPushButton* remove = button(tab, u"Remove"_s);
        QVERIFY(apply && remove);
        for (const QByteArray& state : {before, after}) {
            QCOMPARE(remove->isEnabled(), state.contains(workaround));
            QCOMPARE(apply->isEnabled(), !state.contains(workaround));
            if (!click.isEmpty())
                QTest::mouseClick(button(tab, std::exchange(click, QString())), Qt::LeftButton);
        }
        QCOMPARE(QFileInfo(file).isDir() ? folder : fileBytes(file), after);
    }
};

QTEST_MAIN(tst_SupportDisplay)
#include "tst_supportdisplay.moc"
