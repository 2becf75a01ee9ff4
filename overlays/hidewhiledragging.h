// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>

/// Drags what surrounds a recorded area. Both reach the screen at different moments, so the dragged thing is concealed,
/// moved once screen and video show that, and revealed when it stops. User-interface thread.
class HideWhileDragging : public QObject
{
    Q_OBJECT

public:
    /// A compositor's frame, a repaint below and a video frame (40 ms at the slowest).
    static constexpr int kConcealMs = 100;
    static constexpr int kRestMs = 200;

    explicit HideWhileDragging(QObject* parent = nullptr);

    void moveTo(const QPoint& position);

    /// ended() follows, not before the last moved().
    void end();

    /// Emits revealed(), if concealed.
    void cancel();

signals:
    void concealed();
    void moved(QPoint position);
    void ended();
    void revealed();

private:
    enum class State
    {
        Visible,
        Concealing,
        Moving
    };

    void onTimeout();
    void move(const QPoint& position);

    State m_state = State::Visible;
    QPoint m_position;
    bool m_isEnding = false;
    QTimer m_timer;
};
