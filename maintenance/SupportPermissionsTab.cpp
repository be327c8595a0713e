#include "SupportPermissionsTab.h"

#include "BaseApplication.h"
#include "FileDirTools.h"
#include "ReportFragments.h"
#include "SupportData.h"

#include <QAbstractTextDocumentLayout>
#include <QFileDialog>
#include <QGridLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBrowser>

struct SupportPermissionsTab::Private
{
    QTextBrowser* view = nullptr;
    bool stale = false; // the collector's text is newer than the one shown
};

SupportPermissionsTab::SupportPermissionsTab(SupportData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{}

SupportPermissionsTab::~SupportPermissionsTab() = default;

void SupportPermissionsTab::updateContent()
{
    if (!d->view) {
        auto* fileButton = new QPushButton(tr("Check File"));
        auto* folderButton = new QPushButton(tr("Check Folder"));
        connect(fileButton, &QPushButton::clicked, this, &SupportPermissionsTab::slotCheckFile);
        connect(folderButton, &QPushButton::clicked, this, &SupportPermissionsTab::slotCheckFolder);
        QGridLayout* buttons = createButtonRow();
        buttons->addWidget(fileButton, 0, 0);
        buttons->addWidget(folderButton, 0, 1);
        buttons->setColumnStretch(2, 1);

        d->view = createView();
        auto* layout = new QGridLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(d->view, 0, 0);
        layout->addLayout(buttons, 1, 0);
    }
    // A page out of sight is filled when it comes into view, so a long list does not hold up the
    // window while another page is shown.
    d->stale = true;
    if (isVisible())
        showList();
}

void SupportPermissionsTab::showEvent(QShowEvent* event)
{
    SupportTab::showEvent(event);
    if (d->stale)
        showList();
}

void SupportPermissionsTab::showList()
{
    d->stale = false;
    // Inside <pre> a line end shows as the break does, but makes a paragraph of each line, which
    // is laid out on its own when it comes into view. The place in the list is kept across a new
    // text, as a label's scroll area keeps it.
    QScrollBar* scrollBar = d->view->verticalScrollBar();
    const int position = scrollBar->value();
    d->view->setHtml(
        preformatted(*supportData()->text()).replace(QStringLiteral("<br>"), QStringLiteral("\n")));
    if (position > 0) {
        d->view->document()->documentLayout()->documentSize();
        scrollBar->setValue(position);
    }
}

// The list holds a line for every file of the product, often tens of thousands. A label lays its
// whole text out several times over to learn its size, and again on every paint, so such a list
// kept the window from opening for seconds. A text browser lays out only what it shows; it is set
// up to look exactly as the label of every other page does.
QTextBrowser* SupportPermissionsTab::createView()
{
    auto* view = new QTextBrowser;
    view->setOpenLinks(false);
    QFont font = BaseApplication::monospaceFont();
    font.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
    view->setFont(font);
    view->document()->setDocumentMargin(5);
    QPalette palette = view->palette();
    palette.setBrush(QPalette::All, QPalette::Base, Qt::white);
    palette.setBrush(QPalette::All, QPalette::Text, Qt::black);
    view->setPalette(palette);
    // The same routing as a label's links; the link comes back exactly as written in the page.
    connect(view, &QTextBrowser::anchorClicked, this,
            [this](const QUrl& url) { onLinkActivated(url.toString(QUrl::FullyEncoded)); });
    return view;
}

void SupportPermissionsTab::slotCheckFile()
{
    showPermissions(QFileDialog::getOpenFileName(this, tr("Choose File")));
}

void SupportPermissionsTab::slotCheckFolder()
{
    showPermissions(QFileDialog::getExistingDirectory(this, tr("Choose Folder")));
}

void SupportPermissionsTab::showPermissions(const QString& path)
{
    if (path.isEmpty())
        return;
    QMessageBox::about(this, QStringLiteral("Corvanta Support"),
                       tr("Path:\n%1\n\nPermissions:\n%2").arg(path, permissionsText(path, false)));
}
