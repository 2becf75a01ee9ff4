// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/minidump.h"

#include <QString>

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t kThreadListStream = 3;
constexpr uint32_t kModuleListStream = 4;
constexpr uint32_t kExceptionStream = 6;
constexpr uint32_t kVersion = 0xA793;
/// Sizes of one entry: MINIDUMP_DIRECTORY, MINIDUMP_THREAD, MINIDUMP_MODULE.
constexpr uint32_t kDirectoryEntryBytes = 12;
constexpr uint32_t kThreadBytes = 48;
constexpr uint32_t kModuleBytes = 108;
constexpr uint32_t kModuleNameOffset = 20;
/// More of anything would be a number that was misread.
constexpr uint32_t kMostEntries = 10'000;

} // namespace

template <typename T>
T Minidump::number(uint64_t offset) const
{
    T value{};
    if (offset + sizeof(value) <= static_cast<uint64_t>(m_bytes.size()))
        std::memcpy(&value, m_bytes.constData() + offset, sizeof(value));
    return value;
}

bool Minidump::isMinidump() const
{
    return m_bytes.startsWith("MDMP") && number<uint16_t>(4) == kVersion;
}

uint64_t Minidump::flags() const
{
    return number<uint64_t>(24);
}

std::optional<uint32_t> Minidump::stream(uint32_t type) const
{
    const uint32_t count = std::min(number<uint32_t>(8), kMostEntries);
    const uint32_t directory = number<uint32_t>(12);
    for (uint32_t index = 0; index < count; ++index) {
        const uint64_t entry = uint64_t{directory} + uint64_t{index} * kDirectoryEntryBytes;
        if (number<uint32_t>(entry) == type)
            return number<uint32_t>(entry + 8);
    }
    return std::nullopt;
}

QList<uint32_t> Minidump::threadIds() const
{
    QList<uint32_t> ids;
    if (const auto list = stream(kThreadListStream)) {
        const uint32_t count = std::min(number<uint32_t>(*list), kMostEntries);
        for (uint32_t index = 0; index < count; ++index)
            ids.append(number<uint32_t>(uint64_t{*list} + 4 + uint64_t{index} * kThreadBytes));
    }
    return ids;
}

QString Minidump::textAt(uint32_t offset) const
{
    const QByteArray utf16 = m_bytes.mid(offset + 4, number<uint32_t>(offset));
    return QString::fromUtf16(reinterpret_cast<const char16_t*>(utf16.constData()), utf16.size() / 2);
}

QStringList Minidump::modules() const
{
    QStringList names;
    if (const auto list = stream(kModuleListStream)) {
        const uint32_t count = std::min(number<uint32_t>(*list), kMostEntries);
        for (uint32_t index = 0; index < count; ++index)
            names.append(
                textAt(number<uint32_t>(uint64_t{*list} + 4 + uint64_t{index} * kModuleBytes + kModuleNameOffset)));
    }
    return names;
}

std::optional<Minidump::Exception> Minidump::exception() const
{
    const auto at = stream(kExceptionStream);
    if (!at)
        return std::nullopt;
    return Exception{number<uint32_t>(*at), number<uint32_t>(uint64_t{*at} + 8), number<uint64_t>(uint64_t{*at} + 24)};
}
