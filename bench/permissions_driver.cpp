#include "BaseApplication.h"
#include "SupportCorvantaData.h"
#include "SupportPermissionsData.h"
#include "SupportPermissionsTab.h"

#include <QElapsedTimer>
#include <QWindow>

#include <cstdio>
#include <sys/resource.h>

namespace {

long peakKib()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

// Loads the Permissions collector for the product's folders under $HOME, then shows its page at
// the size it has in the window and paints it once, on the display the environment gives, then
// clicks the "Remove" link of one file. Prints the paths listed, the two times in milliseconds,
// the peak memory in KiB by then, and the milliseconds the click took.
int main(int argc, char** argv)
{
    BaseApplication application(QStringLiteral("Corvanta"), QStringLiteral("1.0.5"), argc, argv);
    SupportPermissionsData collector;
    QElapsedTimer timer;
    timer.start();
    collector.load();
    const double walkMs = double(timer.nsecsElapsed()) / 1e6;

    timer.restart();
    SupportPermissionsTab page(&collector);
    page.resize(956, 491);
    page.updateContent();
    page.show();
    while (!page.windowHandle() || !page.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    page.repaint();
    const double pageMs = double(timer.nsecsElapsed()) / 1e6;
    const long peak = peakKib();
    const long long paths = collector.text()->count(QStringLiteral("<br>"));

    // A "Remove" link clicked: the file goes to the trash, and the page is shown again.
    timer.restart();
    page.onLinkActivated(
        QStringLiteral("#deletePath")
        + SupportCorvantaData::productAppDataPath(SupportCorvantaData::productName())
        + QStringLiteral("/userUUID.txt"));
    page.repaint();
    const double removeMs = double(timer.nsecsElapsed()) / 1e6;

    std::printf("%lld %.1f %.1f %ld %.1f\n", paths, walkMs, pageMs, peak, removeMs);
    return 0;
}
