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
        void add(const QString& event, QList<QThread*>* threads = nullptr);
        QStringList snapshot();
    };

    RecordingData(int kind, const QString& name, Journal* journal, bool mainThreadWork = false)
        : m_kind(kind)
        , m_name(name)
        , m_journal(journal)
        , m_mainThreadWork(mainThreadWork)
    {}

    QStringList errors() const override { return fakeErrors; }
    QImage image() const override { return fakeImage; }
    QString name() const override { return m_name; }
    int type() const override { return m_kind; }
    void handleLink(const QString& link) override { links << link; }
    void load() override;
    void loadOnMainThread() override;
    bool needsMainThreadWork() const override { return m_mainThreadWork; }

    QStringList fakeErrors;
    QString fakeText;
    QImage fakeImage;
    QStringList links;

private:
    int m_kind;
    QString m_name;
    Journal* m_journal;
    bool m_mainThreadWork;
};
