#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>

/// The course of a drag during which the dragged thing must not be seen, because it surrounds a picture that is being
/// recorded and that follows it: picture and thing reach the screen at different moments, and whichever is late would
/// leave the thing in the picture.
///
/// So the thing is concealed with the first move, moves once the screen and the recorded pictures have taken that up,
/// and is revealed once they show it at rest, also in a drag that only pauses. What it then goes to is the last place
/// it was moved to. User-interface thread.
class UnseenMove : public QObject
{
    Q_OBJECT

public:
    /// For a compositor, for the windows below to draw themselves again, and for a picture to be taken after that, of
    /// which the slowest recording has one every 40 ms.
    static constexpr int kConcealMs = 100;
    static constexpr int kRestMs = 200;

    explicit UnseenMove(QObject* parent = nullptr);

    /// The pointer is there now.
    void moveTo(const QPoint& pointer);

    /// The pointer has been let go of. ended() follows, not before the last moved().
    void end();

    /// Gives up what is under way, without a signal but revealed().
    void giveUp();

signals:
    void concealed();
    void moved(QPoint pointer);
    void ended();
    void revealed();

private:
    enum class State
    {
        Seen,
        Concealing,
        Moving
    };

    void onTimeout();
    void go(const QPoint& pointer);

    State m_state = State::Seen;
    QPoint m_pointer;
    bool m_isEnding = false;
    QTimer m_timer;
};
