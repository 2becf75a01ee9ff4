// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <obs.h>

/// What the values of a property list are.
enum class ListKind
{
    Text,
    Integer
};

/// A list property of a source; the setting that selects an entry has the same key.
struct PropertyList
{
    const char* key = nullptr;
    ListKind kind = ListKind::Text;
};

/// The names and the values, as texts, of a list's entries.
struct ListEntries
{
    QStringList names;
    QStringList values;
};

/// Empty where the properties have no such list.
ListEntries readList(obs_properties_t* properties, const PropertyList& list);
