#pragma once

#include "SupportData.h"

#include <QObject>

#include <memory>

// Lives on the loader's worker thread and runs each collector's load() there.
class SupportLoaderWorker : public QObject
{
    Q_OBJECT

public:
    explicit SupportLoaderWorker(const SupportDataTableRef& table);
    ~SupportLoaderWorker() override;

    void startItem(int type);
    void finishItem(int type);

signals:
    void signalItemFinished(int type);
    void signalStartMainThreadItemWork(int type);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
