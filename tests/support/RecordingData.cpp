#include "RecordingData.h"

#include <QMutexLocker>

void RecordingData::Journal::add(const QString& event)
{
    QMutexLocker locker(&mutex);
    events << event;
}

QStringList RecordingData::Journal::snapshot()
{
    QMutexLocker locker(&mutex);
    return events;
}

RecordingData::RecordingData(int kind, const QString& name, Journal* journal, bool mainThreadWork)
    : m_kind(kind)
    , m_name(name)
    , m_journal(journal)
    , m_mainThreadWork(mainThreadWork)
{}

QStringList RecordingData::errors() const
{
    return fakeErrors;
}

QImage RecordingData::image() const
{
    return fakeImage;
}

QString RecordingData::name() const
{
    return m_name;
}

int RecordingData::type() const
{
    return m_kind;
}

void RecordingData::handleLink(const QString& link)
{
    links << link;
}

void RecordingData::load()
{
    if (m_journal) {
        m_journal->add(QStringLiteral("begin:%1").arg(m_kind));
        {
            QMutexLocker locker(&m_journal->mutex);
            m_journal->loadThreads << QThread::currentThread();
        }
        // Long enough that an overlapping load of another collector would show in the journal.
        QThread::msleep(20);
        m_journal->add(QStringLiteral("end:%1").arg(m_kind));
    }
    ++loads;
    *text() = fakeText;
}

void RecordingData::loadOnMainThread()
{
    if (!m_journal)
        return;
    m_journal->add(QStringLiteral("main:%1").arg(m_kind));
    QMutexLocker locker(&m_journal->mutex);
    m_journal->mainThreadStepThreads << QThread::currentThread();
}

bool RecordingData::needsMainThreadWork() const
{
    return m_mainThreadWork;
}
