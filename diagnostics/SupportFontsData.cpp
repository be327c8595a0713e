#include "SupportFontsData.h"

#include "ReportExport.h"
#include "ReportFragments.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetrics>
#include <QLabel>
#include <QMap>

namespace {

enum SlotIndex { FixedSlot, EmbeddedSlot, SystemSlot, NamedSlot };

const QString embeddedFontName = QStringLiteral("Sequence-Regular");
const QString namedFontName = QStringLiteral("Verdana");

bool isInstalled(const QString& family)
{
    return !QFontDatabase::styles(family).isEmpty();
}

SupportFontsData::FontSlot fixedFont(const QStringList& families)
{
    for (const QString& family : families) {
        if (isInstalled(family))
            return {QSharedPointer<QFont>::create(family), family};
    }
    return {};
}

SupportFontsData::FontSlot embeddedFont()
{
    SupportFontsData::FontSlot slot{nullptr, embeddedFontName};
    const int id =
        QFontDatabase::addApplicationFont(QStringLiteral(":/Fonts/%1.ttf").arg(embeddedFontName));
    if (id < 0)
        return slot;
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    if (!families.isEmpty())
        slot.font = QSharedPointer<QFont>::create(families.first());
    return slot;
}

QMap<QString, QVariant> properties(const QFont& font)
{
    const QFontInfo info(font);
    const QFontMetrics metrics(font);
    return {
        {QStringLiteral("bold"), yesNo(info.weight() > 400)},
        {QStringLiteral("exactMatch"), yesNo(info.exactMatch())},
        {QStringLiteral("fixedPitch"), yesNo(info.fixedPitch())},
        {QStringLiteral("italic"), yesNo(info.italic())},
        {QStringLiteral("family"), info.family()},
        {QStringLiteral("styleName"), info.styleName()},
        {QStringLiteral("pixelSize"), info.pixelSize()},
        {QStringLiteral("pointSize"), info.pointSize()},
        {QStringLiteral("style"), int(info.style())},
        {QStringLiteral("styleHint"), int(info.styleHint())},
        {QStringLiteral("weight"), info.weight()},
        {QStringLiteral("pointSizeF"), info.pointSizeF()},
        {QStringLiteral("ascent"), metrics.ascent()},
        {QStringLiteral("avg char width"), metrics.averageCharWidth()},
        {QStringLiteral("descent"), metrics.descent()},
        {QStringLiteral("max width"), metrics.maxWidth()},
        {QStringLiteral("cap height"), metrics.capHeight()},
    };
}

} // namespace

struct SupportFontsData::Private
{
    FontSlots fontSlots;
    QStringList fixedFamilies;
};

SupportFontsData::SupportFontsData(const QStringList& fixedFamilies)
    : d(std::make_unique<Private>())
{
    // The fonts live in the static core library; naming the resource makes the linker keep it.
    Q_INIT_RESOURCE(Fonts);
    d->fixedFamilies = fixedFamilies;
}

SupportFontsData::~SupportFontsData() = default;

QStringList SupportFontsData::errors() const
{
    QStringList errors;
    if (!d->fontSlots[FixedSlot].font)
        errors << QStringLiteral("Fixed font not found.");
    if (!d->fontSlots[EmbeddedSlot].font)
        errors << QStringLiteral("Embedded %1 font failed to load.")
                      .arg(d->fontSlots[EmbeddedSlot].name);
    if (!d->fontSlots[NamedSlot].font)
        errors << QStringLiteral("%1 font not found.").arg(d->fontSlots[NamedSlot].name);
    return errors;
}

QImage SupportFontsData::image() const
{
    QList<QImage> images;
    for (const FontSlot& fontSlot : d->fontSlots) {
        if (!fontSlot.font) {
            images << QImage();
            continue;
        }
        QLabel label;
        label.setFont(*fontSlot.font);
        label.setText(fontSlot.name + QStringLiteral(": ") + sampleText());
        // A widget that was never shown has a default size. adjustSize() would cap the width at
        // two thirds of the screen and cut the sample off, so the label takes its full size hint.
        label.resize(label.sizeHint());
        images << renderWidget(&label);
    }
    return stackImages(images);
}

QString SupportFontsData::name() const
{
    return QStringLiteral("Fonts");
}

int SupportFontsData::type() const
{
    return FontsDataKind;
}

void SupportFontsData::load()
{
    FontSlots fontSlots;
    fontSlots[FixedSlot] = fixedFont(d->fixedFamilies);
    fontSlots[EmbeddedSlot] = embeddedFont();
    fontSlots[SystemSlot] = {QSharedPointer<QFont>::create(), QStringLiteral("System")};
    fontSlots[NamedSlot] = {nullptr, namedFontName};
    if (isInstalled(namedFontName))
        fontSlots[NamedSlot].font = QSharedPointer<QFont>::create(namedFontName);
    setSlots(fontSlots);
    render();
}

SupportFontsData::FontSlot SupportFontsData::slot(int index) const
{
    if (index < 0 || index >= int(d->fontSlots.size()))
        return {};
    return d->fontSlots[size_t(index)];
}

void SupportFontsData::setSlots(const FontSlots& fontSlots)
{
    d->fontSlots = fontSlots;
}

void SupportFontsData::render()
{
    QString& text = *this->text();
    text.clear();
    appendErrors(text, *this);
    for (const FontSlot& fontSlot : d->fontSlots) {
        appendField(text, fontSlot.name, QVariant());
        text += lineBreaks(1);
        if (fontSlot.font) {
            const QMap<QString, QVariant> values = properties(*fontSlot.font);
            for (auto it = values.cbegin(); it != values.cend(); ++it) {
                appendIndented(text, it.key() + QLatin1Char(':'), it.value(), 20);
                text += lineBreaks(1);
            }
        }
        text += lineBreaks(1);
    }
}

QString SupportFontsData::sampleText()
{
    return QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-=#,.:*");
}
