#include "SupportData.h"

#include "ReportFragments.h"

SupportData::SupportData()
    : m_text(std::make_unique<QString>())
{
    watchFields(m_text.get());
}

SupportData::~SupportData()
{
    forgetFields(m_text.get());
}

QString* SupportData::text() const
{
    return m_text.get();
}

QImage SupportData::image() const
{
    return {};
}

void SupportData::handleLink(const QString&) {}

void SupportData::loadOnMainThread() {}

bool SupportData::needsMainThreadWork() const
{
    return false;
}

SupportData* findSupportData(const SupportDataMap& table, int kind)
{
    const auto it = table.find(kind);
    return it == table.end() ? nullptr : it->second.get();
}
