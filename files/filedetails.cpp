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

bool setMark(QVariantMap& properties, const QString& key, bool isSet)
{
    const bool isOurs = !properties.contains(key) || properties.value(key).typeId() == QMetaType::Bool;
    return isOurs && replace(properties, key, isSet ? QVariant(true) : QVariant());
}

} // namespace

FileDetails FileDetails::of(const QVariantMap& properties)
{
    const QVariant unreadable = properties.value(kUnreadable);
    return {numberOf(properties.value(kSize)), numberOf(properties.value(kDuration)),
            unreadable.typeId() == QMetaType::Bool && unreadable.toBool()};
}

bool FileDetails::writeTo(QVariantMap& properties) const
{
    const bool isSizeNew = setNumber(properties, kSize, sizeBytes);
    const bool isDurationNew = setNumber(properties, kDuration, durationMs);
    return setMark(properties, kUnreadable, isUnreadable) || isSizeNew || isDurationNew;
}
