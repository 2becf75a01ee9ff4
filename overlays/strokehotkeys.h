// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/input/global_hotkey.h"

#include <QObject>

/// Ctrl+Z, Ctrl+Shift+Z and Ctrl+Y for strokes that are drawn over another program, which keeps the keyboard focus. A
/// text field of this program that has the focus keeps the keys. User-interface thread.
class StrokeHotkeys : public QObject
{
    Q_OBJECT

public:
    explicit StrokeHotkeys(QObject* parent = nullptr);

    /// Other programs do not get the keys that are held.
    void hold(bool undo, bool redo);

signals:
    void undoPressed();
    void redoPressed();

private:
    void update();

    platform::GlobalHotkey m_undo{nullptr};
    platform::GlobalHotkey m_redo{nullptr};
    platform::GlobalHotkey m_redoAsElsewhere{nullptr};
    bool m_isUndoWanted = false;
    bool m_isRedoWanted = false;
    bool m_isUndoHeld = false;
    bool m_isRedoHeld = false;
};
