// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/strokehotkeys.h"

#include <utility>

using platform::GlobalHotkey;

StrokeHotkeys::StrokeHotkeys(QObject* parent) : QObject(parent)
{
    connect(&m_undo, &GlobalHotkey::activated, this, &StrokeHotkeys::undoPressed);
    for (const GlobalHotkey* const key : {&m_redo, &m_redoAsElsewhere})
        connect(key, &GlobalHotkey::activated, this, &StrokeHotkeys::redoPressed);
}

/// Where another program holds a key, it works while the strokes' window has the focus.
void StrokeHotkeys::hold(bool undo, bool redo)
{
    if (std::exchange(m_isUndoHeld, undo) != undo)
        m_undo.registerKey(undo ? QKeySequence(Qt::CTRL | Qt::Key_Z) : QKeySequence());
    if (std::exchange(m_isRedoHeld, redo) == redo)
        return;
    m_redo.registerKey(redo ? QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z) : QKeySequence());
    m_redoAsElsewhere.registerKey(redo ? QKeySequence(Qt::CTRL | Qt::Key_Y) : QKeySequence());
}
