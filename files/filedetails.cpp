// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filedetails.h"

#include "files/fileproperties.h"

#include <QMetaType>

using namespace fileproperties;

namespace {

/// JSON's whole numbers that every reader has exactly end here.
constexpr double kLargest = 9007199254740992.0;

bool isNumber(const QVariant& value)
{
    const int type = value.typeId();
    return type == QMetaType::LongLong || type == QMetaType::Double || type == QMetaType::Int;
}

std::optional<qint64> numberOf(const QVariant& value)
{
    const double number = isNumber(value) ? value.toDouble() : -1;
    if (!(number >= 0 && number <= kLargest))
        return std::nullopt;
    return static_cast<qint64>(number);
}

/// An invalid value removes it.
bool replace(QVariantMap& properties, const QString& key, const QVariant& value)
{
    if (properties.value(key) == value)
        return false;
    if (value.isValid())
        properties.insert(key, value);
    else
        properties.remove(key);
    return true;
}

bool setNumber(QVariantMap& properties, const QString& key, std::optional<qint64> number)
{
    const bool isOurs = !properties.contains(key) || isNumber(properties.value(key));
    return isOurs && replace(properties, key, number ? QVariant(*number) : QVariant());
}

bool mark(const QVariantMap& properties, const QString& key)
{
    const QVariant value = properties.value(key);
    return value.typeId() == QMetaType::Bool && value.toBool();
}

bool setMark(QVariantMap& properties, const QString& key, bool isSet)
{
    const bool isOurs = !properties.contains(key) || properties.value(key).typeId() == QMetaType::Bool;
    return isOurs && replace(properties, key, isSet ? QVariant(true) : QVariant());
}

} // namespace

FileDetails FileDetails::of(const QVariantMap& properties)
{
    return {numberOf(properties.value(kSize)), numberOf(properties.value(kDuration)), mark(properties, kUnreadable),
            mark(properties, kMissing)};
}

bool FileDetails::writeTo(QVariantMap& properties) const
{
    const bool isSizeNew = setNumber(properties, kSize, sizeBytes);
    const bool isDurationNew = setNumber(properties, kDuration, durationMs);
    const bool isUnreadableNew = setMark(properties, kUnreadable, isUnreadable);
    return setMark(properties, kMissing, isMissing) || isSizeNew || isDurationNew || isUnreadableNew;
}
