// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/combobox.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QKeyEvent>
#include <QStyledItemDelegate>

namespace {

class WheelGuard : public QObject
{
public:
    explicit WheelGuard(QComboBox* box) : QObject(box) { box->installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Wheel)
            event->ignore();
        return event->type() == QEvent::Wheel;
    }
};

/// Has Escape close the open list and nothing else. The list's own filter closes it too early, before shortcuts are
/// looked for: a window with Escape for a shortcut would go as well.
class ListEscape : public QObject
{
public:
    explicit ListEscape(QComboBox* box) : QObject(box), m_box(*box) { box->view()->installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        const bool isKey = event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress;
        if (!isKey || static_cast<const QKeyEvent*>(event)->key() != Qt::Key_Escape)
            return false;
        if (event->type() == QEvent::KeyPress)
            m_box.hidePopup();
        event->accept();
        return true;
    }

private:
    QComboBox& m_box;
};

/// Gives the list the box's name, for who does not see it, whenever it opens: the language may have changed.
class ListName : public QObject
{
public:
    explicit ListName(QComboBox* box) : QObject(box), m_box(*box) { box->view()->installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            m_box.view()->setAccessibleName(m_box.accessibleName());
        return false;
    }

private:
    QComboBox& m_box;
};

} // namespace

void prepareComboBox(QComboBox& box)
{
    // The box's own delegate ignores the style sheet.
    box.setItemDelegate(new QStyledItemDelegate(&box));
    new WheelGuard(&box);
    new ListEscape(&box);
    new ListName(&box);
}
