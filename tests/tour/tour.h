// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QWidget>

#include <functional>

/// A walk through everything that the program shows: each window, page, overlay and dialog in the states that differ to
/// the eye. It wants a private desktop, a profile of its own and an application object; the texts are those of the
/// translator that is installed.
namespace tour {

/// What is to be seen now.
struct Stop
{
    QByteArray name;
    /// Where on the desktop, in logical pixels.
    QRect area;
    /// The windows that are looked at.
    QList<QWidget*> windows;
};

/// Called at each stop; what is shown goes when it returns. It may run events.
using Look = std::function<void(const Stop&)>;

void mainWindow(const Look& look);
void files(const Look& look);
void dialogs(const Look& look);
void messages(const Look& look);
void overlays(const Look& look);
void screenshotFrame(const Look& look);

/// All of them.
void everything(const Look& look);

} // namespace tour
