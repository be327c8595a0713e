#include "SupportApplication.h"

#include "ReportExport.h"
#include "SupportMainWindow.h"
#include "SupportSystemData.h"
#include "SupportTabs.h"

#include <QDir>
#include <QIcon>
#include <QPointer>
#include <QProgressDialog>
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
    connect(d->window.data(), &SupportMainWindow::signalCopyReport, this, [this] {
        whenNetworkAnswered(tr("Copy Report"), [](const SupportDataMap& table) {
            copyReport(table);
            return tr("Report copied to the clipboard.");
        });
    });
    connect(d->window.data(), &SupportMainWindow::signalSaveReport, this,
            [this] { whenNetworkAnswered(tr("Save Report"), saveReport); });
    connect(d->window.data(), &SupportMainWindow::signalEmailReport, this, [this] {
        whenNetworkAnswered(tr("E-mail Report"), [this](const SupportDataMap& table) {
            emailReport(table, d->window);
            return QString();
        });
    });
    QTimer::singleShot(0, tabs, &SupportTabs::load);
}

void SupportApplication::whenNetworkAnswered(const QString& action, const ReportAction& report)
{
    // Nothing is done once the window or its pages are gone.
    const auto run = [this, report] {
        if (!d->window || !d->window->tabs())
            return;
        const QString done = report(*d->window->tabs()->table());
        if (!done.isEmpty())
            d->window->showStatus(done);
    };
    auto* system = d->window && d->window->tabs() ? dynamic_cast<SupportSystemData*>(
                       findSupportData(*d->window->tabs()->table(), SystemDataKind))
                                                  : nullptr;
    const int remaining = system ? system->networkWaitRemaining() : 0;
    if (!remaining) {
        run();
        return;
    }

    // The report would say "Checking..." where the page will soon give the answer. The wait is
    // bounded by the network's own, and the dialog lets the user give up on the action.
    auto* dialog = new QProgressDialog(tr("%1 waits for the network's answers...").arg(action),
                                       tr("Cancel"), 0, remaining, d->window);
    dialog->setWindowTitle(QStringLiteral("Corvanta Support"));
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setMinimumDuration(0);
    dialog->setAutoReset(false);
    dialog->setAutoClose(false);
    auto* ticker = new QTimer(dialog);
    connect(ticker, &QTimer::timeout, dialog, [dialog, system, remaining] {
        dialog->setValue(remaining - system->networkWaitRemaining());
    });
    ticker->start(100);
    connect(system, &SupportSystemData::signalNetworkAnswered, dialog, [dialog, system, run] {
        if (system->networkWaitRemaining())
            return;
        dialog->disconnect();
        dialog->hide();
        dialog->deleteLater();
        run();
    });
    connect(dialog, &QProgressDialog::canceled, this, [this, dialog, action] {
        dialog->deleteLater();
        if (d->window)
            d->window->showStatus(tr("%1 cancelled.").arg(action));
    });
    dialog->setValue(0);
}
