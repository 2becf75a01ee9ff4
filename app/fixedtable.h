// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <initializer_list>
#include <map>
#include <stdexcept>

/// A constant ordered map.
template <typename Key, typename T>
class FixedTable
{
public:
    FixedTable(std::initializer_list<std::pair<const Key, T>> entries) : m_entries(entries) {}

    /// @throw std::out_of_range without an entry.
    const T& at(const Key& key) const
    {
        const auto entry = m_entries.find(key);
        if (entry == m_entries.end())
            throw std::out_of_range("invalid map<K, T> key");
        return entry->second;
    }

    bool contains(const Key& key) const { return m_entries.find(key) != m_entries.end(); }
    int size() const { return static_cast<int>(m_entries.size()); }

    /// In ascending order of the keys.
    auto begin() const { return m_entries.cbegin(); }
    auto end() const { return m_entries.cend(); }

    /// Values to keys; of equal values the first entry stays.
    FixedTable<T, Key> reversed() const
    {
        FixedTable<T, Key> table({});
        for (const auto& [key, value] : m_entries)
            table.m_entries.emplace(value, key);
        return table;
    }

private:
    template <typename OtherKey, typename OtherT>
    friend class FixedTable;

    std::map<Key, T> m_entries;
};
