#include "SupportApplication.h"

#include "ReportExport.h"
#include "SupportMainWindow.h"
#include "SupportTabs.h"

#include <QDir>
#include <QIcon>
#include <QPointer>
#include <QTimer>

struct SupportApplication::Private
{
    QPointer<SupportMainWindow> window;
};

SupportApplication::SupportApplication(int& argc, char** argv)
    : BaseApplication(QStringLiteral("Corvanta"), QStringLiteral("1.0.5"), argc, argv)
    , d(std::make_unique<Private>())
{
    installTranslations(QStringLiteral("corvanta-support"));
    // The desktop entry's name lets Wayland compositors find the entry and its icon.
    setDesktopFileName(QStringLiteral("com.kelvanmoor.CorvantaSupport"));
}

SupportApplication::~SupportApplication()
{
    delete d->window.data();
    d.reset();
}

void SupportApplication::createMainWindow()
{
    // Only the window shows the icon; decoding its pictures would cost the headless report a
    // tenth of its time.
    QIcon icon;
    const QDir pictures(QStringLiteral(":/icons"));
    for (const QString& picture : pictures.entryList(QDir::Files))
        icon.addFile(pictures.filePath(picture));
    setWindowIcon(icon);
    d->window = new SupportMainWindow;
    SupportTabs* tabs = d->window->tabs();
    connect(tabs, &SupportTabs::signalLoadFinished, d->window.data(),
            &SupportMainWindow::showCentered);
    // The handlers do nothing once the window or its pages are gone.
    const auto withTable = [this](void (*report)(const SupportDataMap&)) {
        return [this, report] {
            if (d->window && d->window->tabs())
                report(*d->window->tabs()->table());
        };
    };
    connect(d->window.data(), &SupportMainWindow::signalCopyReport, this, withTable(copyReport));
    connect(d->window.data(), &SupportMainWindow::signalSaveReport, this, withTable(saveReport));
    connect(d->window.data(), &SupportMainWindow::signalEmailReport, this, withTable(emailReport));
    QTimer::singleShot(0, tabs, &SupportTabs::load);
}
