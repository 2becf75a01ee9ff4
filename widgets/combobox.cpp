// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/combobox.h"

#include <QComboBox>
#include <QEvent>
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

} // namespace

void prepareComboBox(QComboBox& box)
{
    // The box's own delegate ignores the style sheet.
    box.setItemDelegate(new QStyledItemDelegate(&box));
    new WheelGuard(&box);
}
