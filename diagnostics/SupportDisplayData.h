#pragma once

#include "SupportData.h"

#include <QList>
#include <QSize>
#include <QSizeF>

#include <memory>

// Every screen with its size, physical size and pixel ratio, the DPI range, and screens too small
// for the product.
class SupportDisplayData : public SupportData
{
public:
    struct Screen
    {
        QString name;
        QSize size;                    // device-independent pixels
        QSizeF physicalSize;           // millimetres
        float devicePixelRatio = 1.0f; // shown in float precision, so 1.25 reads 1.25
    };

    SupportDisplayData();
    ~SupportDisplayData() override;

    QStringList errors() const override;
    QString name() const override;
    int type() const override;
    void load() override;

    // The fragment for the given figures; load() gathers them from the screens first. Without a
    // display server it says so instead, and finds no errors.
    void render();
    void setFigures(const QList<Screen>& screens, double effectiveDpi, double minimumDpi,
                    double maximumDpi);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
