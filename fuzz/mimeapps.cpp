#include "FuzzSupport.h"
#include "RegistryTools.h"

#include <QRegularExpression>

#include <glib.h>

#include <algorithm>

// mimeapps.list: the associations read exactly as GLib's own key-file reader (what GIO and the
// desktop use) reads them, and the removal of the product's ids with every other byte kept.
// Input: the MIME types to remove on the first line, separated by ";", then the file.

namespace {

const QString product = QStringLiteral("Corvanta");
const QByteArray groups[] = {"Default Applications", "Added Associations"};

// A byte-order mark is a character like any other here.
QString fromUtf8(const char* bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder(QByteArray(bytes));
}

// What g_key_file answers for the group: each key's string list, where it gives one. Keys that
// cannot be MIME types (not UTF-8, translations) are left out, as the reader leaves them out.
QMap<QString, QStringList> glibLists(const QByteArray& text, const QByteArray& group)
{
    QMap<QString, QStringList> lists;
    GKeyFile* file = g_key_file_new();
    if (g_key_file_load_from_data(file, text.constData(), gsize(text.size()), G_KEY_FILE_NONE,
                                  nullptr)) {
        gchar** keys = g_key_file_get_keys(file, group.constData(), nullptr, nullptr);
        for (gchar** key = keys; key && *key; ++key) {
            const QByteArray name(*key);
            gchar** ids =
                g_key_file_get_string_list(file, group.constData(), *key, nullptr, nullptr);
            if (ids && isUtf8(name) && !name.contains('[')) {
                QStringList list;
                for (gchar** id = ids; *id; ++id)
                    list.append(fromUtf8(*id));
                lists.insert(fromUtf8(*key), list);
            }
            g_strfreev(ids);
        }
        g_strfreev(keys);
    }
    g_key_file_free(file);
    return lists;
}

bool isProducts(const QStringList& ids)
{
    return ids.value(0).startsWith(associationPrefix(product));
}

// Blanks first do not hide the product: GLib would skip them, were the id to come first.
QStringList withoutProductIds(QStringList ids)
{
    static const QRegularExpression blanks(QStringLiteral("^[ \\t\\n\\f\\r]*"));
    ids.erase(std::remove_if(ids.begin(), ids.end(),
                             [](QString id) {
                                 return id.remove(blanks).startsWith(associationPrefix(product));
                             }),
              ids.end());
    return ids;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 2);
    const QStringList mimeTypes = QString::fromUtf8(fields.at(0)).split(QLatin1Char(';'));
    const QByteArray& text = fields.at(1);
    // GLib reads each line only up to a zero byte; the reader refuses such a file.
    if (text.contains('\0'))
        return 0;

    QMap<QString, QStringList> before[2];
    QStringList productTypes;
    for (int g = 0; g < 2; ++g) {
        before[g] = associationLists(text, groups[g]);
        require(before[g] == glibLists(text, groups[g]), "the lists are GLib's");
    }
    for (const QString& type : mimeTypes) {
        if (isProducts(before[0].value(type)) || isProducts(before[1].value(type)))
            productTypes.append(type);
    }

    const QByteArray result = withoutProductAssociations(text, mimeTypes, product);
    require(productTypes.isEmpty() == (result == text), "nothing else changes the file");
    for (int g = 0; g < 2; ++g) {
        const QMap<QString, QStringList> after = glibLists(result, groups[g]);
        for (auto it = before[g].cbegin(); it != before[g].cend(); ++it) {
            if (!productTypes.contains(it.key())) {
                require(after.value(it.key()) == it.value(), "other associations stay");
            } else {
                require(!isProducts(after.value(it.key())), "no removed type names the product");
                // A form feed at the head of the first of them has no escape, and GLib skips it.
                const QStringList others = withoutProductIds(it.value());
                if (!others.join(QString()).isEmpty() && !others.at(0).startsWith(u'\f'))
                    require(after.value(it.key()) == others, "other ids stay in their order");
            }
        }
        for (auto it = after.cbegin(); it != after.cend(); ++it)
            require(before[g].contains(it.key()) || productTypes.contains(it.key()),
                    "no association appears");
    }
    // Outside the changed values, the bytes stay: each line of the result is a line of the text
    // or one of them with its value changed, in the same order.
    const QList<QByteArray> lines = linesOf(text);
    qsizetype at = 0;
    for (const QByteArray& line : linesOf(result)) {
        const qsizetype equals = line.indexOf('=');
        while (at < lines.size() && lines.at(at) != line
               && (equals < 0 || !lines.at(at).startsWith(line.left(equals + 1))))
            ++at;
        require(at++ < lines.size(), "only values change and lines go");
    }
    require(withoutProductAssociations(result, mimeTypes, product) == result,
            "removal is idempotent");
    return 0;
}
