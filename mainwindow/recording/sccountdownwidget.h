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

/// The counter (3, 2, 1) over the capture area, with the recording hotkey below it. Takes neither focus nor keys, or
/// the hotkey could not cancel it. For one countdown.
class SCCountdownWidget : public QWidget
{
    Q_OBJECT

public:
    explicit SCCountdownWidget(QWidget* parent, int stepMs = Durations().countdownStepMs);
    ~SCCountdownWidget() override;

    /// A count below 1 emits countdownFinished() at once and shows nothing.
    void start(int count);

    /// Runs events until the countdown is over or cancelled.
    void exec();

    /// Makes exec() return. Neither hides the widget nor emits countdownFinished().
    void cancel();

    /// Still true when exec() returned because the program quits.
    bool isCounting() const;

public slots:
    /// One tick: shows the count and lowers it; past 1 hides the widget.
    void updateCountdown();

signals:
    void countdownFinished();

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
