#include "SupportDisplayData.h"

#include "ReportFragments.h"

#include <QGuiApplication>
#include <QScreen>

#include <charconv>
#include <cmath>

namespace {

// The shortest text that reads back as the same float, so a ratio of 1.1 does not print as
// 1.100000023841858.
QString floatText(float value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

} // namespace

struct SupportDisplayData::Private
{
    bool noDisplayServer = false;
    double effectiveDpi = 0.0;
    double maximumDpi = 0.0;
    double minimumDpi = 0.0;
    QList<Screen> screens;
};

SupportDisplayData::SupportDisplayData()
    : d(std::make_unique<Private>())
{}

SupportDisplayData::~SupportDisplayData() = default;

QStringList SupportDisplayData::errors() const
{
    QStringList errors;
    if (d->noDisplayServer)
        return errors;
    if (d->screens.isEmpty())
        errors << QStringLiteral("No screens found.");
    for (int i = 0; i < d->screens.size(); ++i) {
        const QSize size = d->screens.at(i).size;
        if (size.width() < 1024)
            errors << QStringLiteral("Screen %1 is too narrow.").arg(i + 1);
        if (size.height() < 768)
            errors << QStringLiteral("Screen %1 is too short.").arg(i + 1);
    }
    return errors;
}

QString SupportDisplayData::name() const
{
    return QStringLiteral("Display");
}

int SupportDisplayData::type() const
{
    return DisplayDataKind;
}

void SupportDisplayData::load()
{
    // These platforms make up a screen of their own (offscreen's is 800x800): without a display
    // server there is no real screen to describe, or to find too small.
    const QString platform = QGuiApplication::platformName();
    d->noDisplayServer =
        platform == QLatin1String("offscreen") || platform == QLatin1String("minimal");
    QList<Screen> screens;
    double minimum = 9999.0;
    double maximum = 0.0;
    const QList<QScreen*> all = d->noDisplayServer ? QList<QScreen*>() : QGuiApplication::screens();
    for (const QScreen* screen : all) {
        screens.append({screen->name(), screen->geometry().size(), screen->physicalSize(),
                        float(screen->devicePixelRatio())});
        const double dpi = screen->physicalDotsPerInch();
        minimum = std::min(minimum, dpi);
        maximum = std::max(maximum, dpi);
    }
    const QScreen* primary = QGuiApplication::primaryScreen();
    if (screens.isEmpty())
        setFigures(screens, 0.0, 0.0, 0.0);
    else
        setFigures(screens, primary ? primary->physicalDotsPerInch() : 0.0, minimum, maximum);
    render();
}

void SupportDisplayData::setFigures(const QList<Screen>& screens, double effectiveDpi,
                                    double minimumDpi, double maximumDpi)
{
    d->screens = screens;
    d->effectiveDpi = effectiveDpi;
    d->minimumDpi = minimumDpi;
    d->maximumDpi = maximumDpi;
}

void SupportDisplayData::render()
{
    QString& text = *this->text();
    text.clear();
    if (d->noDisplayServer) {
        text += QStringLiteral("No display server could be reached, so there are no screens to "
                               "describe.")
                + lineBreaks(1);
        return;
    }
    appendErrors(text, *this);
    appendField(text, QStringLiteral("Number of Screens:"), int(d->screens.size()));
    text += lineBreaks(2);
    for (int i = 0; i < d->screens.size(); ++i) {
        const Screen& screen = d->screens.at(i);
        appendField(text, QStringLiteral("screen %1:").arg(i + 1), QVariant());
        text += lineBreaks(1);
        appendIndented(text, QStringLiteral("name="), screen.name, 0);
        text += lineBreaks(1);
        appendIndented(
            text, QStringLiteral("geometry="),
            QStringLiteral("(%1 x %2)")
                .arg(QString::number(screen.size.width()), QString::number(screen.size.height())),
            0);
        text += lineBreaks(1);
        appendIndented(text, QStringLiteral("physicalSize="),
                       QStringLiteral("(%1 x %2)")
                           .arg(screen.physicalSize.width(), 0, 'g', -1)
                           .arg(screen.physicalSize.height(), 0, 'g', -1),
                       0);
        text += lineBreaks(1);
        appendIndented(text, QStringLiteral("devicePixelRatio="),
                       floatText(screen.devicePixelRatio), 0);
        text += lineBreaks(2);
    }
    // Half away from zero: 95.5 reads 96.
    const auto whole = [](double dpi) {
        return qint64(std::round(dpi));
    };
    appendField(text, QStringLiteral("Minimum DPI:"), whole(d->minimumDpi));
    text += lineBreaks(1);
    appendField(text, QStringLiteral("Maximum DPI:"), whole(d->maximumDpi));
    text += lineBreaks(1);
    appendField(text, QStringLiteral("Effective DPI:"), whole(d->effectiveDpi));
    text += lineBreaks(1);
}
