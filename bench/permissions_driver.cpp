#include "BaseApplication.h"
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
// the size it has in the window and paints it once, on the display the environment gives. Prints
// the paths listed, the two times in milliseconds and the peak memory in KiB.
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

    std::printf("%lld %.1f %.1f %ld\n",
                static_cast<long long>(collector.text()->count(QStringLiteral("<br>"))), walkMs,
                pageMs, peakKib());
    return 0;
}
