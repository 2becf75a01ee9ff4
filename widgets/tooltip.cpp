#include "widgets/tooltip.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

QWidget* visibleToolTip()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto found = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
        return window->windowType() == Qt::ToolTip && window->isVisible();
    });
    return found == windows.end() ? nullptr : *found;
}
