#pragma once

#include "SupportData.h"

#include <QMutex>
#include <QStringList>
#include <QThread>

// A collector for tests: records where and in which order it was loaded, and carries whatever
// errors and links the test gives it.
class RecordingData : public SupportData
{
public:
    struct Journal
    {
        QMutex mutex;
        QStringList events; // "main:<kind>", "begin:<kind>", "end:<kind>"
        QList<QThread*> loadThreads;
        QList<QThread*> mainThreadStepThreads;
        void add(const QString& event);
        QStringList snapshot();
    };

    RecordingData(int kind, const QString& name, Journal* journal, bool mainThreadWork = false);

    QStringList errors() const override;
    QImage image() const override;
    QString name() const override;
    int type() const override;
    void handleLink(const QString& link) override;
    void load() override;
    void loadOnMainThread() override;
    bool needsMainThreadWork() const override;

    QStringList fakeErrors;
    QString fakeText;
    QImage fakeImage;
    QStringList links;
    int loads = 0;

private:
    int m_kind;
    QString m_name;
    Journal* m_journal;
    bool m_mainThreadWork;
};
