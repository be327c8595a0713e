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

class tst_SupportDisplayTab : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestEnvironment> m_environment;
    SupportDisplayData m_display;

private slots:
    void init() { m_environment = std::make_unique<TestEnvironment>(); }
    void cleanup() { m_environment.reset(); }

    void buttons_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("click");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("apply keeps other lines") << other << "Apply" << other + workaround;
        QTest::newRow("remove keeps other lines") << other + workaround << "Remove" << other;
        QTest::newRow("starts with the variable set") << workaround << "" << workaround;
        // A folder where the file belongs: the write fails, for root too.
        QTest::newRow("failure changes nothing") << folder << "Apply" << folder;
    }

    void buttons()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, click);
        QFETCH(QByteArray, after);
        const QString file =
            m_environment->path(u".config/environment.d/60-corvanta-support.conf"_s);
        QVERIFY(before == folder ? QDir().mkpath(file) : putFile(file, before));
        SupportDisplayTab tab(&m_display);
        tab.updateContent();
        tab.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tab));
        QPushButton* apply = button(tab, u"Apply"_s);
        QPushButton* remove = button(tab, u"Remove"_s);
        QVERIFY(apply && remove);
        // Only the button that changes something is enabled, before and after the click.
        for (const QByteArray& state : {before, after}) {
            QCOMPARE(remove->isEnabled(), state.contains(workaround));
            QCOMPARE(apply->isEnabled(), !state.contains(workaround));
            if (!click.isEmpty())
                QTest::mouseClick(button(tab, click), Qt::LeftButton);
            click.clear();
        }
        QCOMPARE(QFileInfo(file).isDir() ? folder : fileBytes(file), after);
    }
};

QTEST_MAIN(tst_SupportDisplayTab)
#include "tst_supportdisplaytab.moc"
