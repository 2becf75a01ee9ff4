// SPDX-License-Identifier: GPL-3.0-or-later
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

/// The small bar that floats over the desktop while a recording runs: a record and a pause button, the elapsed time and
/// a pin. With the pin out it fades out when the pointer leaves it, and in when the pointer touches the top edge of the
/// primary screen or, where the bar is elsewhere, its position. It never takes the keyboard focus, which the recorded
/// program keeps. Logical pixels. User-interface thread.
class SCFullscreenToolbar : public QWidget
{
    Q_OBJECT

public:
    explicit SCFullscreenToolbar(QWidget* parent = nullptr, const Durations& durations = {});
    ~SCFullscreenToolbar() override;

    /// With false the bar is not paused either.
    void setRecording(bool recording);

    void setTimeText(const QString& text);
    void setAudioOnly(bool audioOnly);
    /// Whether the format can be paused. True at first.
    void setPausable(bool pausable);
    void setPaused(bool paused);

    /// Shows the bar only while the pointer is at the top edge of the primary screen or over the bar: for a position
    /// where it is recorded.
    void setTopEdgeOnly(bool topEdgeOnly);

    /// In logical pixels of the desktop: the bar's tool tips stay out of it.
    void setRecordedArea(const QRect& area) { m_recordedArea = area; }

    /// A concealed bar is not painted, whether it is shown or not.
    void setConcealed(bool concealed);

    /// A bar hidden this way does not show itself again; one that is shown fades in, or waits for the pointer.
    void setVisible(bool visible) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// For an opacity of 0.0 to 1.0: 230 of 255 at most.
    static int layeredAlpha(double opacity);

signals:
    // What the user wants from now on.
    void recordingToggled(bool isRecording);
    void pauseToggled(bool paused);

public slots:
    void onAutoHideToggled(bool checked);
    void checkMousePosition();
    void toggleRecording();

protected:
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// What the owner last asked for.
    enum class Wish
    {
        None,
        Shown,
        Hidden
    };

    QWidget* buildContainer();
    void setUpAnimation(int fadeMs);
    void prepareNativeWindow();
    void updateOutline();
    void updateRecordButton();
    void updatePauseButton();
    void retranslate();
    void updatePolling();
    bool comesAndGoes() const { return m_autoHide || m_topEdgeOnly; }
    bool isPointerAtTopEdge() const;
    bool isPointerInside() const;
    void fadeIn();
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
    QRect m_recordedArea;
    bool m_concealed = false;
    /// What the bar leaves unpainted is transparent.
    bool m_hasOpenCorners = true;
    Wish m_wish = Wish::None;
};
