// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

class Hotkeys;
class KeyboardWindow;
class Notices;

namespace platform {
class GlobalHotkey;
}

/// Ctrl and Shift with the recording's hotkey give the keyboard to the program's windows over the desktop, one after
/// the other, and then back to the window that had it. One that hides with the keyboard leaves it to the main window,
/// or else to that one, too. Other programs have the key while there is no such window. User-interface thread.
class WindowKey : public QObject
{
    Q_OBJECT

public:
    /// Belongs to hotkeys, whose parent is the main window. A key that cannot be had is reported in a notice.
    WindowKey(Hotkeys& hotkeys, Notices& notices);
    ~WindowKey() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();
    void noteKeyboard();
    void onAvailabilityChanged(bool available, const QString& reason);
    void report(const QString& reason);
    void giveOn();
    void onHidden();
    bool giveToMainWindow() const;
    bool giveToFormer();

    const Hotkeys& m_hotkeys;
    Notices& m_notices;
    platform::GlobalHotkey* const m_key;
    /// The recording's, empty while there is no window.
    QString m_followed;
    QString m_name;
    /// The text that was last posted.
    QString m_reported;
    /// Qt's native window id, 0 for none.
    quint64 m_before = 0;
    /// That has the keyboard, only for comparison.
    const KeyboardWindow* m_current = nullptr;
};
