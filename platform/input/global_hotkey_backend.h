// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/input/global_hotkey.h"

namespace platform {

/// Takes one key at a time. Has its owner emit queued: what follows a hotkey may run an event loop, which must not
/// happen inside the system's dispatcher.
class GlobalHotkey::Backend
{
public:
    virtual ~Backend() = default;

    /// None is taken before. Empty on success, else why not.
    virtual QString take(const QKeyCombination& key) = 0;

    virtual void release() = 0;

    static std::unique_ptr<Backend> create(GlobalHotkey& owner);
};

} // namespace platform
