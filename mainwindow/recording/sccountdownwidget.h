// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class QCloseEvent;
class QEventLoop;
class QLabel;
class QSettings;

/// The round counter (3, 2, 1) over the capture area before a recording starts, with the recording hotkey below it. It
/// takes neither the keyboard focus nor any key, or the hotkey could not cancel it. Made for one countdown.
class SCCountdownWidget : public QWidget
{
    Q_OBJECT

public:
    explicit SCCountdownWidget(QWidget* parent, int stepMs = Durations().countdownStepMs);
    ~SCCountdownWidget() override;

    /// Shows the widget and counts down from count to 1. A count below 1 emits countdownFinished() at once and shows
    /// nothing.
    void start(int count);

    /// Runs events until the countdown is over or cancelled. Returns at once when none runs.
    void exec();

    /// Lets exec() return. Neither hides the widget nor emits countdownFinished().
    void cancel();

    /// Still true after an exec() that returned because the program quits.
    bool isCounting() const;

public slots:
    /// One tick: shows the count and lowers it; past 1 the widget is hidden.
    void updateCountdown();

signals:
    void countdownFinished();

    /// By the task switcher, or by a session that ends.
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* buildCircle();
    QWidget* buildHint(const QString& hotkey);
    void finish();

    QLabel* m_numberLabel = nullptr;
    QLabel* m_hintLabel = nullptr;
    QTimer* m_timer = nullptr;
    int m_count = 0;
    QEventLoop* m_waiting = nullptr;
    std::unique_ptr<QSettings> m_settings;
};
