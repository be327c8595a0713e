#include "SupportPermissionsTab.h"

#include "FileDirTools.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

struct SupportPermissionsTab::Private
{
    QLabel* label = nullptr;
};

SupportPermissionsTab::SupportPermissionsTab(SupportData* collector, QWidget* parent)
    : SupportTab(collector, parent)
    , d(std::make_unique<Private>())
{}

SupportPermissionsTab::~SupportPermissionsTab() = default;

void SupportPermissionsTab::updateContent()
{
    if (!d->label) {
        auto* fileButton = new QPushButton(tr("Check File"));
        auto* folderButton = new QPushButton(tr("Check Folder"));
        connect(fileButton, &QPushButton::clicked, this, &SupportPermissionsTab::slotCheckFile);
        connect(folderButton, &QPushButton::clicked, this, &SupportPermissionsTab::slotCheckFolder);
        auto* buttons = new QGridLayout;
        buttons->setContentsMargins(5, 5, 5, 5);
        buttons->addWidget(fileButton, 0, 0);
        buttons->addWidget(folderButton, 0, 1);
        buttons->setColumnStretch(2, 1);

        d->label = createPage(buttons);
    }
    showText(d->label);
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
    QMessageBox::about(this, QString(),
                       tr("Path:\n%1\n\nPermissions:\n%2").arg(path, permissionsText(path, false)));
}
