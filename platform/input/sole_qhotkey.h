// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHotkey>
#include <QString>

namespace platform {

/// One key by QHotkey, which by itself gives every object of the program a key that one of them has. User-interface
/// thread.
class SoleQHotkey
{
public:
    SoleQHotkey() = default;
    ~SoleQHotkey();
    SoleQHotkey(const SoleQHotkey&) = delete;
    SoleQHotkey& operator=(const SoleQHotkey&) = delete;

    /// None is taken before. Empty on success, else why not.
    QString take(const QKeyCombination& key);

    void release();

    const QHotkey& hotkey() const { return m_hotkey; }

private:
    QHotkey m_hotkey;
};

} // namespace platform
