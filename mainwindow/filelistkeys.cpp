// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/filelistkeys.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QCoreApplication>
#include <QItemSelectionModel>
#include <QKeyEvent>

namespace {

bool isMove(const QKeyEvent& event)
{
    if (event.matches(QKeySequence::SelectAll))
        return true;
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        return (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == Qt::NoModifier;
    default:
        return false;
    }
}

bool isEnter(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

Qt::KeyboardModifiers modifiersOf(const QKeyEvent& event)
{
    return event.modifiers() & ~Qt::KeypadModifier;
}

/// Does something with the chosen files.
bool isAction(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers modifiers = modifiersOf(event);
    if (isEnter(event))
        return modifiers == Qt::NoModifier || modifiers == Qt::ControlModifier;
    return event.key() == Qt::Key_Delete && modifiers == Qt::NoModifier;
}

} // namespace

FileListKeys::FileListKeys(QAbstractItemView& view, const QList<QWidget*>& widgets) : QObject(&view), m_view(view)
{
    for (QWidget* const widget : widgets)
        widget->installEventFilter(this);
}

bool FileListKeys::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && onKey(*static_cast<QKeyEvent*>(event)))
        return true;
    return QObject::eventFilter(watched, event);
}

bool FileListKeys::onKey(const QKeyEvent& event)
{
    if (isMove(event)) {
        moveInList(event);
        return true;
    }
    if (!isAction(event))
        return false;
    if (event.isAutoRepeat() || m_view.selectionModel() == nullptr)
        return true;
    if (isEnter(event))
        onEnter(event);
    else
        emit deletionRequested();
    return true;
}

void FileListKeys::onEnter(const QKeyEvent& event)
{
    const QModelIndex current = m_view.currentIndex();
    if (!current.isValid() || !m_view.selectionModel()->isSelected(current))
        return;
    if (modifiersOf(event) == Qt::ControlModifier)
        emit folderRequested(current);
    else
        emit openRequested(current);
}

void FileListKeys::moveInList(const QKeyEvent& event)
{
    QKeyEvent forwarded(event.type(), event.key(), event.modifiers(), event.text(), event.isAutoRepeat());
    QCoreApplication::sendEvent(&m_view, &forwarded);
    const QModelIndex current = m_view.currentIndex();
    if (!current.isValid())
        return;
    // The view reports it only while it has the focus.
    QAccessibleEvent focus(&m_view, QAccessible::Focus);
    focus.setChild(current.row());
    QAccessible::updateAccessibility(&focus);
}
