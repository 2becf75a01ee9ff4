// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "screenshot/scscreenshotwindow.h"
#include "tests/support/shownwindow.h"

#include <QPixmap>

/// Saves what the screenshot frame that is shown encloses; off screen there is nothing to be grabbed but a green image.
inline void saveShownFrame()
{
    auto* const frame = shownWindow<SCScreenshotWindow>();
    frame->setGrabber([](QScreen&, const QRect&) {
        QPixmap image(20, 10);
        image.fill(Qt::green);
        return image;
    });
    frame->saveScreenshot();
}
