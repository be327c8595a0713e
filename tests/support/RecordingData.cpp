#include "RecordingData.h"

using namespace Qt::StringLiterals;

SupportDataTable RecordingData::table(const QList<int>& kinds, Journal* journal)
{
    auto table = SupportDataTable::create();
    for (int kind : kinds)
        table->emplace(kind, std::make_unique<RecordingData>(kind, journal));
    return table;
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
