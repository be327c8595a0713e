#include "AccessibleProgram.h"
#include "ProductHome.h"
#include "XvfbServer.h"

#include <QFileInfo>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

// The Corvanta page's four buttons pressed from the real window, one after another, with the
// files, the trash and the page checked after each.
class tst_Installation : public QObject
{
    Q_OBJECT

private slots:
    void buttonsFromTheWindow()
    {
        ProductHome home;
        QVERIFY(home.isValid() && home.prepare());
        AccessibleProgram program;
        XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        QVERIFY2(!x.startMainWindow().isEmpty(), "the main window never appeared");
        const auto click = [&](const QString& role, const QString& name) {
            return program.click(x, role, name);
        };
        QVERIFY2(QTest::qWaitFor([&] { return click(u"page tab"_s, u"Corvanta"_s); }, 20000),
                 "no Corvanta page tab");
        // The page's text, its links' words included, and the enabled buttons in the order of the
        // row, each by the start of its name.
        const auto page = [&] {
            QString enabled;
            for (const auto& item : program.items()) {
                if (item.role == u"push button"_s && item.enabled)
                    enabled += item.name.left(8) + ' ';
            }
            return program.find(u"label"_s, u"Application Data:"_s).name + '|' + enabled;
        };
        const QString before = page();
        QVERIFY2(before.contains(u"(User):\n.cvd      Remove\n"_s)
                     && before.endsWith(u"|Remove A Repair P Remove P Remove A "_s),
                 qPrintable(before));

        QVERIFY(click(u"push button"_s, u"Remove All Associations"_s));
        QTRY_VERIFY_WITH_TIMEOUT(
            fileBytes(home.userMimeapps()) == ProductHome::mimeappsWithoutProduct, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"(User):\n\n|Repair P Remove P Remove A "_s),
                                 20000);

        QVERIFY(click(u"push button"_s, u"Repair Preferences"_s));
        QTRY_VERIFY_WITH_TIMEOUT(fileBytes(home.preferences()) == ProductHome::repairedPreferences,
                                 20000);

        QVERIFY(click(u"push button"_s, u"Remove Preferences"_s));
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"|Repair P Remove A "_s), 20000);
        QVERIFY(!QFileInfo::exists(home.preferences()));
        QVERIFY(trashList().contains(' ' + home.preferences() + '\n'));

        QVERIFY(click(u"push button"_s, u"Remove All Application Data"_s));
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"|Repair P "_s), 20000);
        QVERIFY(page().contains("\nApplication Data:   " + home.dataFolder()
                                + " - Does Not Exist Remove\n"));
        const QString listed = trashList();
        QCOMPARE(listed.count(home.path(QString())), 3);
        QVERIFY2(listed.contains(' ' + home.dataFolder() + '\n')
                     && listed.contains(' ' + home.path(u".cache/Corvanta"_s) + '\n'),
                 qPrintable(listed));
    }
};

QTEST_GUILESS_MAIN(tst_Installation)
#include "tst_installation.moc"
