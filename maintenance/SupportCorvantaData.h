#pragma once

#include "SupportData.h"

#include <functional>
#include <memory>

// The product's own installation: where it keeps its per-user data, the user identifier, the
// installed versions and the file-name extensions it owns. Its red "Remove" links put the
// product's folders into the trash; only where the trash refuses one do they offer to delete it
// for good. The page reloads every collector a removal concerns (SupportTabs).
class SupportCorvantaData : public SupportData
{
public:
    using PathTest = std::function<bool(const QString& path)>;
    // The product's program files found at its default install locations.
    using InstallationFinder = std::function<QStringList(const QString& productName)>;

    explicit SupportCorvantaData(
        const InstallationFinder& findInstallations = defaultInstallations);
    ~SupportCorvantaData() override;

    QStringList errors() const override;
    QString name() const override;
    int type() const override;
    void handleLink(const QString& link) override;
    void load() override;
    // Entries of the separate viewer edition are then not versions of this product.
    virtual bool isFullEdition() const;

    bool hasAssociations() const;
    QStringList machineAssociations() const;
    QStringList userAssociations() const;
    // Removes every association of the last load, machine first.
    void removeAllAssociations();

    static QString productName();
    static QString productAppDataPath(const QString& productName);
    static QString productTempPath(const QString& productName);
    // The product's preferences: an INI file in the user's scope under the organization's name.
    static QString settingsFileName(const QString& productName);
    // More of the product's per-user data, trashed with its data folder.
    static QStringList furtherDataPaths(const QString& productName);

    // The program under Program Files and Program Files (x86) of each drive ("C:/"), in Windows
    // form ("C:\Program Files\Corvanta\Corvanta.exe"), where exists() finds it.
    static QStringList programFilesInstallations(const QString& productName,
                                                 const QStringList& drives, const PathTest& exists);
    // On Windows the above on every drive; elsewhere /opt/<name>/<name> and
    // /usr/local/<name>/<name>.
    static QStringList defaultInstallations(const QString& productName);

private:
    void render();

    struct Private;
    std::unique_ptr<Private> d;
};
