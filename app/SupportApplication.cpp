#include "SupportApplication.h"

#include "SupportMainWindow.h"
#include "SupportTabs.h"

#include <QPointer>
#include <QTimer>

struct SupportApplication::Private
{
    QPointer<SupportMainWindow> window;
};

SupportApplication::SupportApplication(int& argc, char** argv)
    : BaseApplication(QStringLiteral("Corvanta"), QStringLiteral("1.0.5"), argc, argv)
    , d(std::make_unique<Private>())
{}

SupportApplication::~SupportApplication()
{
    delete d->window.data();
    d.reset();
}

void SupportApplication::createMainWindow()
{
    d->window = new SupportMainWindow;
    SupportTabs* tabs = d->window->tabs();
    connect(tabs, &SupportTabs::signalLoadFinished, d->window.data(),
            &SupportMainWindow::showCentered);
    QTimer::singleShot(0, tabs, &SupportTabs::load);
}

SupportMainWindow* SupportApplication::mainWindow() const
{
    return d->window;
}
