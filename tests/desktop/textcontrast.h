// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QList>
#include <QString>

class QWidget;

/// How far texts stand out from what they are painted on, measured on an image of the screen.
namespace textcontrast {

/// White on black.
inline constexpr double kMost = 21.0;

struct Text
{
    QString widget;
    /// Of the luminances of text and background, from 1 on.
    double contrast = 1.0;
};

/// Those of the window's shown and enabled widgets, entries of menus and rows of lists. @param screen the primary
/// screen
QList<Text> textsOf(const QWidget& window, const QImage& screen);

} // namespace textcontrast
