#pragma once

#include "BaseApplication.h"
#include "SupportData.h"

#include <QFont>
#include <QSharedPointer>

#include <array>
#include <memory>

// The four fonts the product relies on, with their resolved properties and metrics, and a sample
// line in each for the report picture.
class SupportFontsData : public SupportData
{
public:
    struct FontSlot
    {
        QSharedPointer<QFont> font; // null when the font is unavailable
        QString name;
    };
    // Fixed-pitch, embedded, system default and "Verdana", in this order.
    using FontSlots = std::array<FontSlot, 4>;

    // fixedFamilies: the fixed-pitch families to look for, in order of preference.
    explicit SupportFontsData(
        const QStringList& fixedFamilies = BaseApplication::monospaceFontFamilies());
    ~SupportFontsData() override;

    QStringList errors() const override;
    // Creates widgets: GUI thread only.
    QImage image() const override;
    QString name() const override;
    int type() const override;
    void load() override;

    // By position 0 to 3; an empty slot outside that range.
    FontSlot slot(int index) const;
    // The fragment for the given slots; load() finds them first.
    void setSlots(const FontSlots& fontSlots);
    void render();

    static QString sampleText();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
