// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/shownclock.h"

#include "tests/support/testpattern.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

/// How far a number may be from what the others say: a recorder that could not keep up shows old frames for a while.
constexpr int64_t kBelievableNs = 700'000'000;
constexpr double kNsPerSecond = 1e9;

struct Reading
{
    double fileSeconds;
    int64_t shownNs;

    /// Where the file would begin on the screen's clock.
    int64_t originNs() const { return shownNs - std::llround(fileSeconds * kNsPerSecond); }
};

using Readings = QList<Reading>;

int64_t medianOrigin(Readings::const_iterator begin, Readings::const_iterator end)
{
    QList<int64_t> origins;
    std::transform(begin, end, std::back_inserter(origins), [](const Reading& reading) { return reading.originNs(); });
    const auto middle = origins.begin() + origins.size() / 2;
    std::nth_element(origins.begin(), middle, origins.end());
    return *middle;
}

} // namespace

std::optional<ShownClock> readShownClock(const QList<std::optional<uint32_t>>& numbers, const QList<double>& seconds,
                                         int numbersPerSecond, int64_t nearNs)
{
    Readings readings;
    for (qsizetype index = 0; index < std::min(numbers.size(), seconds.size()); ++index)
        if (numbers.at(index))
            readings.append({seconds.at(index), momentOfNumber(*numbers.at(index), numbersPerSecond, nearNs)});
    if (readings.isEmpty())
        return std::nullopt;
    ShownClock clock;
    const int64_t origin = medianOrigin(readings.cbegin(), readings.cend());
    clock.astray = static_cast<int>(readings.removeIf(
        [origin](const Reading& reading) { return std::abs(reading.originNs() - origin) > kBelievableNs; }));
    constexpr qsizetype kFewest = 2;
    if (readings.size() < 2 * kFewest)
        return std::nullopt;
    clock.firstNs = readings.constFirst().shownNs;
    clock.lastNs = readings.constLast().shownNs;
    const double middle = (readings.constFirst().fileSeconds + readings.constLast().fileSeconds) / 2;
    const auto second = std::find_if(readings.cbegin(), readings.cend(),
                                     [middle](const Reading& reading) { return reading.fileSeconds >= middle; });
    if (second - readings.cbegin() < kFewest || readings.cend() - second < kFewest)
        return std::nullopt;
    const int64_t ahead = medianOrigin(second, readings.cend()) - medianOrigin(readings.cbegin(), second);
    clock.driftSeconds = static_cast<double>(ahead) / kNsPerSecond;
    return clock;
}
