#include "ReportJson.h"

#include "SupportData.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace {

const QString toolName = QStringLiteral("Corvanta Support");
const QList<int> sectionKinds{DisplayDataKind, FontsDataKind, PermissionsDataKind, CorvantaDataKind,
                              SystemDataKind};

QJsonArray stringArray(const QStringList& list)
{
    QJsonArray array;
    for (const QString& item : list)
        array.append(item);
    return array;
}

bool isStringArray(const QJsonValue& value)
{
    if (!value.isArray())
        return false;
    const QJsonArray array = value.toArray();
    return std::all_of(array.begin(), array.end(),
                       [](const QJsonValue& item) { return item.isString(); });
}

// Exactly these keys, as the schema allows no others.
bool hasKeys(const QJsonValue& value, QStringList keys)
{
    if (!value.isObject())
        return false;
    QStringList present = value.toObject().keys();
    keys.sort();
    present.sort();
    return present == keys;
}

bool readField(const QJsonValue& value, ReportField* field)
{
    if (!hasKeys(value, {QStringLiteral("label"), QStringLiteral("value"), QStringLiteral("note")}))
        return false;
    const QJsonObject object = value.toObject();
    const QJsonValue label = object.value(QStringLiteral("label"));
    const QJsonValue fieldValue = object.value(QStringLiteral("value"));
    const QJsonValue note = object.value(QStringLiteral("note"));
    if (!label.isString() || !(fieldValue.isString() || fieldValue.isNull()) || !note.isString())
        return false;
    *field = {label.toString(), fieldValue.isNull() ? QString() : fieldValue.toString(),
              note.toString()};
    return true;
}

bool readSection(const QJsonValue& value, ReportDocument::Section* section)
{
    if (!hasKeys(value, {QStringLiteral("kind"), QStringLiteral("name"), QStringLiteral("errors"),
                         QStringLiteral("fields"), QStringLiteral("text")}))
        return false;
    const QJsonObject object = value.toObject();
    const QJsonValue kind = object.value(QStringLiteral("kind"));
    const QJsonValue name = object.value(QStringLiteral("name"));
    const QJsonValue errors = object.value(QStringLiteral("errors"));
    const QJsonValue fields = object.value(QStringLiteral("fields"));
    const QJsonValue text = object.value(QStringLiteral("text"));
    if (!kind.isDouble() || kind.toDouble() != kind.toInt() || !sectionKinds.contains(kind.toInt())
        || name.toString().isEmpty() || !isStringArray(errors) || !fields.isArray()
        || !text.isString())
        return false;
    section->kind = kind.toInt();
    section->name = name.toString();
    for (const QJsonValue& error : errors.toArray()) {
        if (error.toString().isEmpty())
            return false;
        section->errors << error.toString();
    }
    for (const QJsonValue& fieldValue : fields.toArray()) {
        ReportField field;
        if (!readField(fieldValue, &field))
            return false;
        // A path's state is one of three.
        if (section->kind == PermissionsDataKind && field.value != QLatin1String("OK")
            && field.value != QLatin1String("Not Writable") && field.value != QLatin1String("Link"))
            return false;
        section->fields << field;
    }
    section->text = text.toString();
    return true;
}

} // namespace

QByteArray reportJson(const ReportDocument& document)
{
    QJsonArray sections;
    for (const ReportDocument::Section& section : document.sections) {
        QJsonArray fields;
        for (const ReportField& field : section.fields) {
            fields.append(QJsonObject{
                {QStringLiteral("label"), field.label},
                {QStringLiteral("value"), field.value.isNull() ? QJsonValue() : field.value},
                {QStringLiteral("note"), field.note},
            });
        }
        sections.append(QJsonObject{
            {QStringLiteral("kind"), section.kind},
            {QStringLiteral("name"), section.name},
            {QStringLiteral("errors"), stringArray(section.errors)},
            {QStringLiteral("fields"), fields},
            {QStringLiteral("text"), section.text},
        });
    }
    // The offset is part of the time, so a desk in another zone reads the user's own clock.
    const QDateTime generated =
        document.generated.toOffsetFromUtc(document.generated.offsetFromUtc());
    const QJsonObject root{
        {QStringLiteral("generated"), generated.toString(Qt::ISODate)},
        {QStringLiteral("tool"), QJsonObject{{QStringLiteral("name"), document.tool},
                                             {QStringLiteral("version"), document.version}}},
        {QStringLiteral("sections"), sections},
    };
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool readReportJson(const QByteArray& json, ReportDocument* document, QString* reason)
{
    QJsonParseError error;
    const QJsonDocument parsed = QJsonDocument::fromJson(json, &error);
    if (parsed.isNull()) {
        *reason = QStringLiteral("not JSON (%1 at byte %2)")
                      .arg(error.errorString(), QString::number(error.offset));
        return false;
    }
    const QJsonObject root = parsed.object();
    const QJsonValue toolValue = root.value(QStringLiteral("tool"));
    const QJsonObject tool = toolValue.toObject();
    if (tool.value(QStringLiteral("name")).toString() != toolName) {
        *reason = QStringLiteral("not a %1 report").arg(toolName);
        return false;
    }
    static const QRegularExpression version(QStringLiteral("^\\d+\\.\\d+\\.\\d+$"));
    static const QRegularExpression time(QStringLiteral(
        "^\\d{4}-\\d{2}-\\d{2}T\\d{2}:\\d{2}:\\d{2}(\\.\\d+)?(Z|[+-]\\d{2}:\\d{2})$"));
    const QJsonValue generatedValue = root.value(QStringLiteral("generated"));
    if (!hasKeys(parsed.object(),
                 {QStringLiteral("generated"), QStringLiteral("tool"), QStringLiteral("sections")})
        || !hasKeys(toolValue, {QStringLiteral("name"), QStringLiteral("version")})
        || !tool.value(QStringLiteral("version")).isString()
        || !version.match(tool.value(QStringLiteral("version")).toString()).hasMatch()
        || !time.match(generatedValue.toString()).hasMatch()) {
        *reason = QStringLiteral("a %1 report of another form").arg(toolName);
        return false;
    }
    ReportDocument read;
    read.tool = toolName;
    read.version = tool.value(QStringLiteral("version")).toString();
    read.generated =
        QDateTime::fromString(root.value(QStringLiteral("generated")).toString(), Qt::ISODate);
    const QJsonValue sections = root.value(QStringLiteral("sections"));
    if (!read.generated.isValid() || !sections.isArray()) {
        *reason = QStringLiteral("a %1 report without its time or sections").arg(toolName);
        return false;
    }
    for (const QJsonValue& value : sections.toArray()) {
        ReportDocument::Section section;
        if (!readSection(value, &section)) {
            *reason = QStringLiteral("section %1 is damaged").arg(read.sections.size() + 1);
            return false;
        }
        read.sections << section;
    }
    *document = read;
    return true;
}
