#include "dialogs/updatedocument.h"

#include "app/appidentity.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>

namespace updatedocument {

namespace {

QString joined(const QJsonArray& entries)
{
    QString text;
    for (const QJsonValue entry : entries)
        text += entry.toString() + u'\n';
    return text;
}

} // namespace

std::optional<QJsonObject> parsed(const QByteArray& body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isNull() || !document.isObject())
        return std::nullopt;
    return document.object();
}

std::optional<Release> release(const QJsonObject& document)
{
    const auto found = document.constFind(QLatin1String("win"));
    if (found == document.constEnd())
        return std::nullopt;
    const QJsonObject entry = found->toObject();
    const auto text = [&entry](const char* key) { return entry.value(QLatin1String(key)).toString(); };
    return Release{text("version"), text("size"), text("date"), text("url"),
                   joined(entry.value(QLatin1String("change")).toArray())};
}

bool isNewer(const QString& version)
{
    return QString::fromLatin1(appidentity::kVersion) < version;
}

} // namespace updatedocument
