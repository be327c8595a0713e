#pragma once

#include "SupportTask.h"

#include <QCoreApplication>

#include <memory>

// Measures eight kinds of file operation, 1000 timed repetitions each, in a temporary folder made
// inside the chosen location, and reports the minimum, maximum and mean time of each kind, every
// single time in seconds, and the failures seen. Everything it makes is removed with the task.
class SupportBenchmarkFileIoTask : public SupportTask
{
    Q_DECLARE_TR_FUNCTIONS(SupportBenchmarkFileIoTask)

public:
    // In the order the phases run; the value indexes the report's blocks.
    enum Operation {
        Create,
        Delete,
        Move,
        Copy,
        SequentialSeek,
        SequentialRead,
        SequentialWrite,
        RandomSeek,
        OperationCount
    };

    explicit SupportBenchmarkFileIoTask(const QString& location);
    ~SupportBenchmarkFileIoTask() override;

    QString report() const override;
    void run() override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
