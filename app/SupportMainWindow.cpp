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
#include <QShortcut>
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

    // Mnemonics only ("&"): they open the menus from the keyboard without being shortcuts.
    QMenu* file = menuBar()->addMenu(tr("&File"));
    addEntry(file, tr("&Save Report..."), this, &SupportMainWindow::signalSaveReport);
    addEntry(file, tr("&Email Report..."), this, &SupportMainWindow::signalEmailReport);
    addEntry(file, tr("&Quit"), qApp, &QCoreApplication::quit);
    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    addEntry(edit, tr("&Copy Report"), this, &SupportMainWindow::signalCopyReport);
    QMenu* help = menuBar()->addMenu(tr("&Help"));
    addEntry(help, tr("&About %1").arg(toolName), this, &SupportMainWindow::slotShowAbout);
    // F10 opens the menu bar, as it does in the desktop's own programs.
    auto* menuKey = new QShortcut(QKeySequence(Qt::Key_F10), this);
    connect(menuKey, &QShortcut::activated, this, [this] {
        menuBar()->setFocus(Qt::MenuBarFocusReason);
        menuBar()->setActiveAction(menuBar()->actions().value(0));
    });

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
    QMessageBox box(this);
    box.setWindowTitle(toolName);
    box.setText(QStringLiteral("%1 %2").arg(toolName, QStringLiteral("1.0.5")));
    box.setIconPixmap(windowIcon().pixmap(64));
    box.exec();
}

void SupportMainWindow::showCentered()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen) {
        const QRect area = screen->availableGeometry();
        // Half the screen, but never less than the pages need, nor more than the screen: the
        // size the window will really have is the one to centre.
        const QSize half(qRound(area.width() / 2.0), qRound(area.height() / 2.0));
        resize(half.expandedTo(minimumSizeHint()).boundedTo(area.size()));
        QRect frame = frameGeometry();
        frame.moveCenter(area.center());
        move(frame.topLeft());
    }
    show();
}
