#include "SupportPermissionsTab.h"

#include "BaseApplication.h"
#include "FileDirTools.h"
#include "PageLinesView.h"
#include "SupportData.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QMessageBox>
#include <QPushButton>

struct SupportPermissionsTab::Private
{
    PageLinesView* view = nullptr;
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
    d->view->setFragment(*supportData()->text());
}

// The list holds a line for every file of the product, often a hundred thousand. A label, or any
// text document, lays the whole text out to learn its size, which kept the window from opening
// for seconds and took gigabytes; this view lays out only the lines in sight. It is set up to
// look exactly as the label of every other page does.
PageLinesView* SupportPermissionsTab::createView()
{
    auto* view = new PageLinesView;
    QFont font = BaseApplication::monospaceFont();
    font.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
    view->setFont(font);
    QPalette palette = view->palette();
    palette.setBrush(QPalette::All, QPalette::Base, Qt::white);
    palette.setBrush(QPalette::All, QPalette::Text, Qt::black);
    view->setPalette(palette);
    connect(view, &PageLinesView::signalLinkActivated, this,
            &SupportPermissionsTab::onLinkActivated);
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
