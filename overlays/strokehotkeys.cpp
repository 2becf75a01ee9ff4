// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/strokehotkeys.h"

#include <QApplication>
#include <QWidget>

#include <utility>

using platform::GlobalHotkey;

namespace {

bool isTextFocused()
{
    const QWidget* const focused = QApplication::focusWidget();
    return focused != nullptr && focused->testAttribute(Qt::WA_InputMethodEnabled);
}

} // namespace

StrokeHotkeys::StrokeHotkeys(QObject* parent) : QObject(parent)
{
    connect(&m_undo, &GlobalHotkey::activated, this, &StrokeHotkeys::undoPressed);
    for (const GlobalHotkey* const key : {&m_redo, &m_redoAsElsewhere})
        connect(key, &GlobalHotkey::activated, this, &StrokeHotkeys::redoPressed);
    connect(qApp, &QApplication::focusChanged, this, &StrokeHotkeys::update);
}

void StrokeHotkeys::hold(bool undo, bool redo)
{
    m_isUndoWanted = undo;
    m_isRedoWanted = redo;
    update();
}

/// Where another program holds a key, it works while the strokes' window has the focus.
void StrokeHotkeys::update()
{
    const bool isLeft = isTextFocused();
    const bool undo = m_isUndoWanted && !isLeft;
    const bool redo = m_isRedoWanted && !isLeft;
    if (std::exchange(m_isUndoHeld, undo) != undo)
        m_undo.registerKey(undo ? QKeySequence(Qt::CTRL | Qt::Key_Z) : QKeySequence());
    if (std::exchange(m_isRedoHeld, redo) == redo)
        return;
    m_redo.registerKey(redo ? QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z) : QKeySequence());
    m_redoAsElsewhere.registerKey(redo ? QKeySequence(Qt::CTRL | Qt::Key_Y) : QKeySequence());
}
