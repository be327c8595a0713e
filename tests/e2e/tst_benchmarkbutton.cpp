#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <functional>

// The System page's benchmark in the real window: the button is pressed from the keyboard, the
// folder typed into the "Choose Location" dialog, and the result read back through Copy Report.
class tst_BenchmarkButton : public QObject
{
    Q_OBJECT

private slots:
    void reportAppearsOnThePage();
};

namespace {

bool waitFor(const std::function<bool()>& done, int timeout)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeout)
            return false;
        QTest::qWait(100);
    }
    return true;
}

} // namespace

void tst_BenchmarkButton::reportAppearsOnThePage()
{
    TestEnvironment home;
    XvfbServer x;
    QVERIFY2(x.isRunning(), "Xvfb did not start");
    const QString location = home.path(QStringLiteral("bench"));
    QVERIFY(QDir().mkpath(location));

    QProcess program;
    const QString window = x.startMainWindow(program);
    QVERIFY2(!window.isEmpty(), "the main window never appeared");

    // Page order depends on what each page finds, so every page's controls are tried in turn
    // until the folder dialog opens; the other pages' buttons only touch the temporary home.
    const auto dialogOpen = [&] {
        return !x.visibleWindows(QStringLiteral("^Choose Location$")).isEmpty();
    };
    bool opened = false;
    for (int page = 0; page < 6 && !opened; ++page) {
        for (int press = 0; press < 8 && !opened; ++press) {
            x.keys({QStringLiteral("Tab"), QStringLiteral("space")});
            opened = waitFor(dialogOpen, 300);
        }
        if (!opened)
            x.keys({QStringLiteral("ctrl+Tab")});
    }
    QVERIFY2(opened, "the Choose Location dialog never opened");

    x.run(QStringLiteral("xdotool"),
          {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("10"), location});
    x.keys({QStringLiteral("Return")});
    QVERIFY(waitFor([&] { return !dialogOpen(); }, 10000));

    // The benchmark works in a temporary folder of its own there and removes it when done.
    const auto entries = [&] {
        return QDir(location).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden);
    };
    QVERIFY2(waitFor([&] { return !entries().isEmpty(); }, 20000), "the benchmark never started");
    QVERIFY2(waitFor([&] { return entries().isEmpty(); }, 240000), "the benchmark never ended");

    // Edit > Copy Report: from the open File menu, Right moves to Edit.
    QString copied;
    const bool found = waitFor(
        [&] {
            x.run(QStringLiteral("xdotool"),
                  {QStringLiteral("mousemove"), QStringLiteral("--window"), window,
                   QStringLiteral("15"), QStringLiteral("10"), QStringLiteral("click"),
                   QStringLiteral("1")});
            QTest::qWait(300);
            x.keys({QStringLiteral("Right"), QStringLiteral("Down"), QStringLiteral("Return")});
            copied =
                x.run(QStringLiteral("xclip"), {QStringLiteral("-o"), QStringLiteral("-selection"),
                                                QStringLiteral("clipboard")});
            return copied.contains(QStringLiteral("RANDOM_SEEK min="));
        },
        20000);
    QVERIFY2(found, qPrintable(copied.right(500)));
    QVERIFY(copied.contains(location + QStringLiteral("\nCREATE min=")));
    QVERIFY(!copied.contains(QStringLiteral("failed")));

    program.terminate();
    QVERIFY(program.waitForFinished(10000));
}

QTEST_GUILESS_MAIN(tst_BenchmarkButton)
#include "tst_benchmarkbutton.moc"
