#include "RecordingData.h"

#include <QMutexLocker>

using namespace Qt::StringLiterals;

void RecordingData::Journal::add(const QString& event, QList<QThread*>* threads)
{
    QMutexLocker locker(&mutex);
    events << event;
    if (threads)
        *threads << QThread::currentThread();
}

QStringList RecordingData::Journal::snapshot()
{
    QMutexLocker locker(&mutex);
    return events;
}

SupportDataTable RecordingData::table(const QList<int>& kinds, Journal* journal)
{
    auto table = SupportDataTable::create();
    for (int kind : kinds)
        table->emplace(kind, std::make_unique<RecordingData>(kind, journal));
    return table;
}

RecordingData* RecordingData::in(const SupportDataTable& table, int kind)
{
    return static_cast<RecordingData*>(findSupportData(*table, kind));
}

QString RecordingData::name() const
{
    static const QStringList names{"Display", "Fonts", "Item", "Permissions", "Corvanta", "System"};
    return names.value(m_kind, u"Item"_s);
}

void RecordingData::load()
{
    if (m_journal) {
        m_journal->add(u"begin:%1"_s.arg(m_kind), &m_journal->loadThreads);
        // Long enough that an overlapping load of another collector would show in the journal.
        QThread::msleep(20);
    }
    QThread::msleep(loadMs);
    if (m_journal)
        m_journal->add(u"end:%1"_s.arg(m_kind));
    *text() = fakeText;
}

void RecordingData::loadOnMainThread()
{
    if (m_journal)
        m_journal->add(u"main:%1"_s.arg(m_kind), &m_journal->mainThreadStepThreads);
}
