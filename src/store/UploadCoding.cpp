#include "store/UploadCoding.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

constexpr QLatin1String fileIdKey("fileId");
constexpr QLatin1String nameKey("name");
constexpr QLatin1String linkKey("link");
constexpr QLatin1String dateKey("date");

std::optional<UploadRecord> toRecord(const QJsonObject &object)
{
    const QJsonValue fileId = object.value(fileIdKey);
    const QJsonValue name = object.value(nameKey);
    const QJsonValue link = object.value(linkKey);
    const QJsonValue date = object.value(dateKey);
    const bool hasLink = !link.isUndefined() && !link.isNull();
    if (!fileId.isString() || !name.isString() || !date.isDouble() || (hasLink && !link.isString()))
        return std::nullopt;
    return UploadRecord { fileId.toString(), name.toString(),
                          hasLink ? std::optional(link.toString()) : std::nullopt,
                          date.toDouble() };
}

}

QByteArray UploadCoding::encode(const QList<UploadRecord> &records)
{
    QJsonArray array;
    for (const UploadRecord &record : records) {
        QJsonObject object {
            { fileIdKey, record.fileId },
            { nameKey, record.name },
            { dateKey, record.date },
        };
        if (record.link)
            object.insert(linkKey, *record.link);
        array.append(object);
    }
    // Slashes stand in strings only.
    return QJsonDocument(array).toJson(QJsonDocument::Compact).replace('/', "\\/");
}

std::optional<QList<UploadRecord>> UploadCoding::decode(const QByteArray &json)
{
    const auto document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return std::nullopt;
    QList<UploadRecord> records;
    const QJsonArray array = document.array();
    for (const auto &each : array) {
        auto record = toRecord(each.toObject());
        if (!record)
            return std::nullopt;
        records.append(std::move(*record));
    }
    return records;
}
