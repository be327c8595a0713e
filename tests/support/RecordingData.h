#pragma once

#include "SupportData.h"

#include <QMutex>
#include <QStringList>
#include <QThread>

// A collector named after its kind that journals its loads and shows what the test gives it.
class RecordingData : public SupportData
{
public:
    struct Journal
    {
        QMutex mutex;
        QStringList events; // "main:<kind>", "begin:<kind>", "end:<kind>"
        QList<QThread*> loadThreads;
        QList<QThread*> mainThreadStepThreads;
        void add(const QString& event, QList<QThread*>* threads = nullptr)
        {
            QMutexLocker locker(&mutex);
            events << event;
            if (threads)
                *threads << QThread::currentThread();
        }
        QStringList snapshot()
        {
            QMutexLocker locker(&mutex);
            return events;
        }
    };

    explicit RecordingData(int kind, Journal* journal = nullptr)
        : m_kind(kind)
        , m_journal(journal)
    {}
    // A table with one recording collector of each kind.
    static SupportDataTable table(const QList<int>& kinds, Journal* journal = nullptr);
    static RecordingData* in(const SupportDataTable& table, int kind)
    {
        return static_cast<RecordingData*>(findSupportData(*table, kind));
    }

    QStringList errors() const override { return fakeErrors; }
    QImage image() const override { return fakeImage; }
    QString name() const override;
    int type() const override { return m_kind; }
    void handleLink(const QString& link) override { links << link; }
    void load() override;
    void loadOnMainThread() override;
    bool needsMainThreadWork() const override { return mainThreadWork; }

    QStringList fakeErrors;
    QString fakeText;
    QImage fakeImage;
    QStringList links;
    bool mainThreadWork = false;
    // How much longer than usual load() takes.
    unsigned long loadMs = 0;

private:
    int m_kind;
    Journal* m_journal;
};
