#include "FuzzSupport.h"
#include "RegistryTools.h"

// mimeapps.list: the defaults it names, and the removal of the product's defaults with every other
// byte kept. Input: the MIME types to remove on the first line, separated by ";", then the file.

namespace {

const QString product = QStringLiteral("Corvanta");

bool namesProduct(const QMap<QString, QString>& defaults, const QStringList& mimeTypes)
{
    for (const QString& mimeType : mimeTypes) {
        if (defaults.value(mimeType).startsWith(associationPrefix(product)))
            return true;
    }
    return false;
}

// The line at index alone, under the group headers that come before it.
QByteArray lineInItsGroup(const QList<QByteArray>& lines, qsizetype index)
{
    QByteArray text;
    for (qsizetype i = 0; i < index; ++i) {
        const QString line = QString::fromUtf8(lines.at(i)).trimmed();
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']')))
            text += lines.at(i);
    }
    return text + lines.at(index);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 2);
    const QStringList mimeTypes = QString::fromUtf8(fields.at(0)).split(QLatin1Char(';'));
    const QByteArray& text = fields.at(1);

    const QMap<QString, QString> defaults = defaultApplications(text);
    require(isUtf8(text) || defaults.isEmpty(), "text that is not UTF-8 names no defaults");
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it) {
        require(!it.key().isEmpty() && it.key() == it.key().trimmed(), "a MIME type is trimmed");
        require(!it.value().isEmpty() && it.value() == it.value().trimmed()
                    && !it.value().contains(QLatin1Char(';')),
                "a default is one trimmed desktop-file id");
    }

    const QByteArray result = withoutProductDefaults(text, mimeTypes, product);
    QList<qsizetype> removed;
    const QList<QByteArray> lines = linesOf(text);
    require(isLinesRemoved(lines, linesOf(result), &removed), "only whole lines are removed");
    require(isUtf8(text) || removed.isEmpty(), "text that is not UTF-8 stays as it is");
    for (const qsizetype index : removed) {
        require(namesProduct(defaultApplications(lineInItsGroup(lines, index)), mimeTypes),
                "each removed line is a default of the product for one of the types");
    }

    const QMap<QString, QString> remaining = defaultApplications(result);
    require(!namesProduct(remaining, mimeTypes), "no type named for removal names the product");
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it) {
        if (!namesProduct({{it.key(), it.value()}}, mimeTypes))
            require(remaining.value(it.key()) == it.value(), "other defaults stay");
    }
    for (auto it = remaining.cbegin(); it != remaining.cend(); ++it)
        require(defaults.contains(it.key()), "no default appears");
    require(withoutProductDefaults(result, mimeTypes, product) == result, "removal is idempotent");
    return 0;
}
