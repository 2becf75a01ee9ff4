// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <functional>
#include <initializer_list>
#include <optional>

class QWidget;

namespace platform {

/// Keeps a top-level window, which gets its native handle and must keep it, out of every screen capture while the user
/// sees it, or lets it be captured again. User-interface thread.
/// @return whether the system could. X11 cannot, nor can Windows before 10 2004: the caller minimises or hides the
///         window, or keeps it outside the recorded area.
bool setExcludedFromCapture(QWidget& window, bool excluded);

/// Keeps all of the windows out of captures or, where one of them cannot be, none. @param setExcluded for tests
bool excludeTogether(std::initializer_list<QWidget*> windows,
                     const std::function<bool(QWidget&, bool)>& setExcluded = &setExcludedFromCapture);

/// Windows' two calls for where a window is seen; tests play the answers of its versions.
class DisplayAffinity
{
public:
    /// WDA_NONE
    static constexpr quint32 kEverywhere = 0;
    /// WDA_MONITOR: a black box in captures. Never set on purpose.
    static constexpr quint32 kBlackInCaptures = 1;
    /// WDA_EXCLUDEFROMCAPTURE
    static constexpr quint32 kExcluded = 0x11;

    virtual ~DisplayAffinity() = default;

    virtual bool set(quint32 affinity) = 0;

    virtual std::optional<quint32> get() const = 0;
};

/// Sets kExcluded or kEverywhere. Systems before Windows 10 2004 accept kExcluded and black the window out, so they are
/// not asked (isKnown is false); of the others the answer is read back.
bool applyExclusion(DisplayAffinity& affinity, bool isKnown, bool excluded);

} // namespace platform
