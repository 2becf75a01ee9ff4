#pragma once

#include "mainwindow/durations.h"

#include <QRect>
#include <QWidget>

class QGraphicsOpacityEffect;
class QHBoxLayout;
class QLabel;
class QPropertyAnimation;
class QPushButton;
class QTimer;

/// The small bar that floats over the desktop while a recording runs: a record and a pause button, the elapsed time,
/// and a pin. With the pin out it fades away when the pointer leaves it, and comes back when the pointer touches the
/// top edge of the primary screen (or, where the bar stands elsewhere, its place).
///
/// It never takes the keyboard focus, so that the recorded program keeps it. Who records shows, hides and places it,
/// feeds it, and listens to its signals. User-interface thread; all lengths are logical pixels.
class SCFullscreenToolbar : public QWidget
{
    Q_OBJECT

public:
    explicit SCFullscreenToolbar(QWidget* parent = nullptr, const Durations& durations = {});
    ~SCFullscreenToolbar() override;

    /// Shows whether a recording runs. A bar told that none runs is not paused either.
    void setRecording(bool recording);

    /// "hh:mm:ss"
    void setTimeText(const QString& text);

    /// Marks the recording as one of sound only.
    void setAudioOnly(bool audioOnly);

    /// Formats that cannot be paused disable the button, whose tool tip then says why. True at first.
    void setPausable(bool pausable);

    /// Shows whether the recording is paused.
    void setPaused(bool paused);

    /// Shows the bar only while the pointer is at the top edge of the primary screen or over the bar, whatever the pin
    /// says: for places where it would be in the picture. False at first.
    void setTopEdgeOnly(bool topEdgeOnly);

    /// What is recorded, in logical pixels of the desktop: the bar's tool tips stay out of it. Empty at first.
    void setPicture(const QRect& picture) { m_picture = picture; }

    /// A concealed bar is not to be seen, whether it is shown or not. False at first.
    void setConcealed(bool concealed);

    /// A bar that is hidden this way (hide() does) does not come back by itself; one that is shown fades in, unless it
    /// must wait for the pointer.
    void setVisible(bool visible) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Of 255, for an opacity of 0.0 to 1.0: at most 230, so that the bar stays a little transparent.
    static int layeredAlpha(double opacity);

signals:
    /// The record button was pressed; isRecording is what the user wants from now on.
    void recordingToggled(bool isRecording);

    /// The pause button was pressed; paused is what the user wants from now on. The look follows with setPaused().
    void pauseToggled(bool paused);

public slots:
    /// checked: the pin is in, the bar stays.
    void onAutoHideToggled(bool checked);
    void checkMousePosition();
    void toggleRecording();

protected:
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// What the owner last asked for; the fading is the bar's own affair.
    enum class Wish
    {
        None,
        Shown,
        Hidden
    };

    QWidget* buildContainer();
    void setUpAnimation(int fadeMs);
    void readyNativeWindow();
    void updateOutline();
    void updateRecordButton();
    void updatePauseButton();
    void retranslate();
    void updatePolling();
    bool comesAndGoes() const { return m_autoHide || m_topEdgeOnly; }
    bool isPointerAtTopEdge() const;
    bool isPointerInside() const;
    void comeBack();
    void fadeOut();
    void fadeTo(double opacity);

    QHBoxLayout* m_layout;
    QPushButton* m_recordButton = nullptr;
    QPushButton* m_autoHideButton = nullptr;
    QLabel* m_timerLabel = nullptr;
    QGraphicsOpacityEffect* m_opacityEffect;
    QPropertyAnimation* m_opacityAnimation;
    bool m_autoHide = false;
    bool m_pausable = true;
    bool m_isRecording = false;
    QTimer* m_mousePollTimer;

    QPushButton* m_pauseButton = nullptr;
    QLabel* m_audioOnlyLabel = nullptr;
    QWidget* m_container = nullptr;
    bool m_paused = false;
    bool m_topEdgeOnly = false;
    QRect m_picture;
    bool m_concealed = false;
    /// The system mixes what the bar leaves unpainted with the desktop.
    bool m_hasOpenCorners = true;
    Wish m_wish = Wish::None;
};
