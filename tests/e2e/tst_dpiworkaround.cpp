#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

// The Display page's workaround buttons in the real window, pressed from the keyboard the way a
// user without a mouse would; the result is read from the user's environment.d file.
class tst_DpiWorkaround : public QObject
{
    Q_OBJECT

private slots:
    void applyThenRemove();

private:
    bool pressUntil(const std::function<bool()>& done);

    XvfbServer* m_x = nullptr;
};

namespace {

QString readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

// Moves through the focus chain, pressing each control once; disabled buttons are not in it.
bool tst_DpiWorkaround::pressUntil(const std::function<bool()>& done)
{
    for (int step = 0; step < 12; ++step) {
        m_x->keys({QStringLiteral("Tab"), QStringLiteral("space")});
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < 300) {
            if (done())
                return true;
            QTest::qWait(30);
        }
    }
    return false;
}

void tst_DpiWorkaround::applyThenRemove()
{
    TestEnvironment home;
    // Pages with errors come first, in kind order. A second, narrow screen gives the Display
    // page an error of its own, so it is the page shown on opening whatever the others find.
    XvfbServer x({QStringLiteral("1920x1080"), QStringLiteral("800x600")});
    m_x = &x;
    QVERIFY2(x.isRunning(), "Xvfb did not start");
    const QString ours =
        home.path(QStringLiteral(".config/environment.d/60-corvanta-support.conf"));
    QDir().mkpath(QFileInfo(ours).absolutePath());
    QFile seed(ours);
    QVERIFY(seed.open(QIODevice::WriteOnly));
    seed.write("# kept\nEDITOR=vi\n");
    seed.close();

    QProcess program;
    const QString window = x.startMainWindow(program);
    QVERIFY2(!window.isEmpty(), "the main window never appeared");

    const auto applied = [&] {
        return readAll(ours).contains(QStringLiteral("QT_AUTO_SCREEN_SCALE_FACTOR=0\n"));
    };
    QVERIFY2(pressUntil(applied), qPrintable(readAll(ours)));
    QVERIFY(readAll(ours).startsWith(QStringLiteral("# kept\nEDITOR=vi\n")));

    // Only "Remove" is enabled now, so the next press that changes anything removes it.
    QVERIFY2(pressUntil([&] { return !applied(); }), qPrintable(readAll(ours)));
    QCOMPARE(readAll(ours), QStringLiteral("# kept\nEDITOR=vi\n"));

    program.terminate();
    QVERIFY(program.waitForFinished(10000));
}

QTEST_GUILESS_MAIN(tst_DpiWorkaround)
#include "tst_dpiworkaround.moc"
