#pragma once

#include "SupportTask.h"

#include <QObject>

#include <memory>

// Runs queued tasks one after another behind an application-modal progress dialog and collects
// their report texts. Tasks run on the thread that calls start() (the GUI thread); the dialog keeps
// events flowing, so its Cancel button reaches the running task through the shared cancelled flag.
// signalFinished() comes once at the end of every batch, after which report() holds the texts of
// every task finished so far.
class SupportTaskManager : public QObject
{
    Q_OBJECT

public:
    explicit SupportTaskManager(QObject* parent = nullptr);
    ~SupportTaskManager() override;

    // The manager takes ownership.
    void addTask(SupportTask* task);
    void start();
    QString report() const;

signals:
    void signalFinished();

public slots:
    void slotCancelClicked();
    void slotProgress(int current, int min, int max, const QString& msg);
    void slotTaskFinished(SupportTask* task, const QString& errors);

private:
    void setUp();
    void runFrontTask();
    void endBatch();

    struct Private;
    std::unique_ptr<Private> d;
};
