#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

class QByteArray;

/// The document in which the maker announces releases: a JSON object with one member for each system, of which this
/// program reads "win".
namespace updatedocument {

/// A release as the document tells it. What is missing there, or is no string, is empty here.
struct Release
{
    QString version;
    /// Display texts.
    QString size;
    QString date;
    /// Where it is to be had.
    QString url;
    /// What has changed, each entry followed by a line break.
    QString changes;
};

/// The document in a server's answer; nothing when that is no JSON object.
std::optional<QJsonObject> parsed(const QByteArray& body);

/// The release that the document announces; nothing when it has none for this program.
std::optional<Release> release(const QJsonObject& document);

/// Whether the version is newer than the running one. Versions are compared as texts, code unit by code unit, so
/// "10.0.0" comes before "9.0.0" and yet after "1.0.0".
bool isNewer(const QString& version);

} // namespace updatedocument
