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

void readyComboBox(QComboBox& box)
{
    // The style sheet draws the entries with it; the box's own delegate ignores that.
    box.setItemDelegate(new QStyledItemDelegate(&box));
    new WheelGuard(&box);
}
