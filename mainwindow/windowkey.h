// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

class Hotkeys;

namespace platform {
class GlobalHotkey;
}

/// Ctrl and Shift with the recording's hotkey give the keyboard to the program's windows over the desktop, one after
/// the other, and then back to the window that had it. Other programs have that key while there is no such window.
/// User-interface thread.
class WindowKey : public QObject
{
    Q_OBJECT

public:
    /// Belongs to hotkeys, whose parent is the main window.
    explicit WindowKey(Hotkeys& hotkeys);
    ~WindowKey() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();
    void giveOn();
    bool giveBack();

    const Hotkeys& m_hotkeys;
    platform::GlobalHotkey* const m_key;
    /// The recording's, empty while there is no window.
    QString m_followed;
    /// Qt's native window id, 0 for none.
    quint64 m_before = 0;
};
