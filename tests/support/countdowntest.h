// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/recording/sccountdownwidget.h"
#include "tests/support/shownwindow.h"

#include <QTimer>

#include <utility>

/// Runs an action once a countdown is on the screen, while whoever has started it waits for its end. Deleting the
/// returned timer cancels the action.
template <typename Action>
QTimer* whenCountingDown(QObject* context, Action action)
{
    constexpr int kPollMs = 5;
    auto* const poll = new QTimer(context);
    QObject::connect(poll, &QTimer::timeout, context, [poll, run = std::move(action)] {
        if (shownWindow<SCCountdownWidget>() == nullptr)
            return;
        poll->stop();
        poll->deleteLater();
        run();
    });
    poll->start(kPollMs);
    return poll;
}
