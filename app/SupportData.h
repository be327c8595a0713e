#pragma once

#include <QImage>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QWeakPointer>

#include <map>
#include <memory>

// Collector kinds: the key in the collector table, and so the load and report order.
enum SupportDataKind {
    DisplayDataKind = 0,
    FontsDataKind = 1,
    PermissionsDataKind = 3,
    CorvantaDataKind = 4,
    SystemDataKind = 5,
};

// A data collector: gathers facts, renders them as an HTML fragment and keeps the errors it met.
class SupportData
{
public:
    SupportData();
    virtual ~SupportData();

    virtual QStringList errors() const = 0;
    // The pointer stays the same for the object's life, so pages may keep it. Rendering straight
    // into it with the fragment helpers also gives the page's fields (renderedFields).
    virtual QString* text() const;
    virtual QImage image() const;
    virtual QString name() const = 0;
    virtual int type() const = 0;
    // Called with a clicked action link after its leading "#".
    virtual void handleLink(const QString& link);
    // Runs on the loader's worker thread: must not touch widgets.
    virtual void load() = 0;
    virtual void loadOnMainThread();
    virtual bool needsMainThreadWork() const;

private:
    Q_DISABLE_COPY(SupportData)
    const std::unique_ptr<QString> m_text;
};

// The collector table owns every collector; the loader holds it only weakly.
using SupportDataMap = std::map<int, std::unique_ptr<SupportData>>;
using SupportDataTable = QSharedPointer<SupportDataMap>;
using SupportDataTableRef = QWeakPointer<SupportDataMap>;

SupportData* findSupportData(const SupportDataMap& table, int kind);
