// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/propertylist.h"

namespace {

QString valueAt(obs_property_t* list, size_t index, ListKind kind)
{
    if (kind == ListKind::Integer)
        return QString::number(obs_property_list_item_int(list, index));
    return QString::fromUtf8(obs_property_list_item_string(list, index));
}

} // namespace

ListEntries readList(obs_properties_t* properties, const PropertyList& list)
{
    ListEntries entries;
    obs_property_t* property = obs_properties_get(properties, list.key);
    const size_t count = property ? obs_property_list_item_count(property) : 0;
    for (size_t i = 0; i < count; ++i) {
        entries.names << QString::fromUtf8(obs_property_list_item_name(property, i));
        entries.values << valueAt(property, i, list.kind);
    }
    return entries;
}
