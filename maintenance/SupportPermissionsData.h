#pragma once

#include "SupportData.h"

#include <memory>

// Can the user write every file and folder the product keeps per user? Lists the product's data
// folders with everything below them and its preferences files, each with its state.
class SupportPermissionsData : public SupportData
{
public:
    SupportPermissionsData();
    ~SupportPermissionsData() override;

    QStringList errors() const override;
    QString name() const override;
    int type() const override;
    // "deletePath" followed by a path puts that path into the trash, or deletes it for good when
    // the trash refuses it and the user agrees.
    void handleLink(const QString& link) override;
    void load() override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
