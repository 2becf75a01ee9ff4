// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <obs.h>

enum class ListKind
{
    Text,
    Integer
};

/// The setting that selects an entry has the same key.
struct PropertyList
{
    const char* key = nullptr;
    ListKind kind = ListKind::Text;
};

/// Values as texts.
struct ListEntries
{
    QStringList names;
    QStringList values;
};

/// Empty without such a list.
ListEntries readList(obs_properties_t* properties, const PropertyList& list);
