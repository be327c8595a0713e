#include "SupportMainWindow.h"

#include "SupportTabs.h"

#include <QAction>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QScreen>
#include <QStatusBar>

namespace {

const QString toolName = QStringLiteral("Corvanta Support");

// The window deliberately has no keyboard shortcuts.
template<typename Receiver, typename Slot>
QAction* addEntry(QMenu* menu, const QString& text, Receiver* receiver, Slot slot)
{
    QAction* action = menu->addAction(text);
    action->setShortcut(QKeySequence());
    QObject::connect(action, &QAction::triggered, receiver, slot);
    return action;
}

} // namespace

struct SupportMainWindow::Private
{
    QPointer<SupportTabs> tabs;
};

SupportMainWindow::SupportMainWindow(SupportTabs* tabs)
    : d(std::make_unique<Private>())
{
    setWindowTitle(toolName);

    QMenu* file = menuBar()->addMenu(tr("File"));
    addEntry(file, tr("Save Report..."), this, &SupportMainWindow::signalSaveReport);
    addEntry(file, tr("Email Report..."), this, &SupportMainWindow::signalEmailReport);
    addEntry(file, tr("Quit"), qApp, &QCoreApplication::quit);
    QMenu* edit = menuBar()->addMenu(tr("Edit"));
    addEntry(edit, tr("Copy Report"), this, &SupportMainWindow::signalCopyReport);
    QMenu* help = menuBar()->addMenu(tr("Help"));
    addEntry(help, tr("About %1").arg(toolName), this, &SupportMainWindow::slotShowAbout);

    setAttribute(Qt::WA_DeleteOnClose);
    d->tabs = tabs ? tabs : new SupportTabs;
    setCentralWidget(d->tabs);
    // There from the start, so the pages do not shrink at the first message.
    statusBar();
}

SupportMainWindow::~SupportMainWindow() = default;

SupportTabs* SupportMainWindow::tabs() const
{
    return d->tabs;
}

void SupportMainWindow::showStatus(const QString& text)
{
    statusBar()->showMessage(text);
}

void SupportMainWindow::slotShowAbout()
{
    QMessageBox box;
    box.setWindowTitle(toolName);
    box.setText(QStringLiteral("%1 %2").arg(toolName, QStringLiteral("1.0.5")));
    box.exec();
}

void SupportMainWindow::showCentered()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen) {
        const QRect area = screen->geometry();
        resize(qRound(area.width() / 2.0), qRound(area.height() / 2.0));
        QRect frame = frameGeometry();
        frame.moveCenter(area.center());
        move(frame.topLeft());
    }
    show();
}
