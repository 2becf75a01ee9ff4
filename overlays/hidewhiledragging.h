// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>

/// A drag of something that surrounds a recorded area and takes the area along. Both reach the screen at different
/// moments, so the dragged thing is concealed, moved once screen and video show that, and revealed when it rests.
/// User-interface thread.
class HideWhileDragging : public QObject
{
    Q_OBJECT

public:
    /// A compositor's frame, a repaint of the windows below and a video frame after that (every 40 ms at the slowest).
    static constexpr int kConcealMs = 100;
    static constexpr int kRestMs = 200;

    explicit HideWhileDragging(QObject* parent = nullptr);

    void moveTo(const QPoint& position);

    /// The button is released. ended() follows, not before the last moved().
    void end();

    /// Emits nothing but revealed(), if concealed.
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
