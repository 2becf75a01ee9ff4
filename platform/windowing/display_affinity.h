// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

namespace platform {

/// Windows' two calls for where a window's content may be seen, so that every version's answers can be played.
class DisplayAffinity
{
public:
    /// Everywhere (WDA_NONE).
    static constexpr quint32 kEverywhere = 0;
    /// On the monitor; in a capture the window is a black box (WDA_MONITOR). Never set on purpose.
    static constexpr quint32 kBlackInCaptures = 1;
    /// On the monitor; in a capture the window is not there (WDA_EXCLUDEFROMCAPTURE).
    static constexpr quint32 kExcluded = 0x11;

    virtual ~DisplayAffinity() = default;

    /// @return whether the system accepted it.
    virtual bool set(quint32 affinity) = 0;

    /// None when the system does not say.
    virtual std::optional<quint32> get() const = 0;
};

/// Keeps a window out of captures, or lets it be captured again. Systems before Windows 10 2004 accept kExcluded and
/// black the window out, so they are not asked; of the others the answer is read back.
///
/// @param isKnown whether the system has kExcluded.
/// @return whether the system did it.
bool applyExclusion(DisplayAffinity& affinity, bool isKnown, bool excluded);

} // namespace platform
