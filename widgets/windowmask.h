#pragma once

#include <QRegion>

/// A mask for QWidget::setMask() that leaves all of a window out, which stays shown otherwise and keeps the mouse where
/// it has it. An empty region would be no mask.
inline QRegion maskOfNothing()
{
    return {-1, -1, 1, 1};
}
