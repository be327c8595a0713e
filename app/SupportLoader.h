#pragma once

#include "SupportData.h"

#include <QObject>

#include <memory>

// Loads every collector in ascending kind, one at a time, on a worker thread, behind a modal
// progress dialog that names the collector in hand. The dialog cannot be dismissed: neither Esc
// nor a close request ends it before the pass does.
class SupportLoader : public QObject
{
    Q_OBJECT

public:
    explicit SupportLoader(const SupportDataTableRef& table, QObject* parent = nullptr);
    ~SupportLoader() override;

    void start();

signals:
    void signalFinished();
    void signalMainThreadItemWorkFinished(int type);
    void signalStartWorkerItem(int type);

public slots:
    void slotStartMainThreadItemWork(int type);
    void slotStartNextWorkerItem();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
