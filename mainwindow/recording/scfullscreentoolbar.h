// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"
#include "widgets/keyboardwindow.h"

#include <QRect>
#include <QWidget>

class BlinkingLabel;
class QGraphicsOpacityEffect;
class QHBoxLayout;
class QLabel;
class QPropertyAnimation;
class QPushButton;
class QTimer;

/// The bar that floats over the desktop during a recording: record and pause buttons, elapsed time, pin. The pin is in
/// at first, and its first click switches auto-hide on. Unpinned the bar
/// fades out when the pointer leaves it, and in when the pointer touches the top edge of the primary screen or the
/// bar's position. Takes the keyboard from nobody by itself, nor by a click. Logical pixels. User-interface thread.
class SCFullscreenToolbar : public QWidget, public KeyboardWindow
{
    Q_OBJECT

public:
    explicit SCFullscreenToolbar(QWidget* parent = nullptr, const Durations& durations = {});
    ~SCFullscreenToolbar() override;

    /// False also ends the paused state.
    void setRecording(bool recording);

    /// For the tool tip; empty where there is none.
    void setPauseKey(const QString& key);

    void setTimeText(const QString& text);
    void setAudioOnly(bool audioOnly);
    void setPausable(bool pausable);
    void setPaused(bool paused);

    /// For a position that is recorded: the pin is out until the user presses it or the bar is hidden, and the bar is
    /// visible only while the pointer is at the top edge or over it.
    void setTopEdgeOnly(bool topEdgeOnly);

    /// Logical pixels of the desktop. Tool tips stay out of it.
    void setRecordedArea(const QRect& area) { m_recordedArea = area; }

    /// Not painted, whether shown or not.
    void setConcealed(bool concealed);

    /// A hidden bar does not show itself; a shown one fades in, or waits for the pointer.
    void setVisible(bool visible) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    bool offersKeyboard() const override { return m_wish == Wish::Shown; }
    bool hasKeyboard() const override { return isActiveWindow(); }
    /// Shows the bar until the keyboard goes elsewhere.
    void takeKeyboard() override;

    /// 230 of 255 for an opacity of 1.0. A bar that has faded in is opaque.
    static int layeredAlpha(double opacity);

signals:
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
    bool isPointerAtTopEdge() const;
    bool isPointerInside() const;
    void fadeIn();
    void fadeOut();
    void fadeTo(double opacity);

    QHBoxLayout* m_layout;
    QPushButton* m_recordButton = nullptr;
    QPushButton* m_autoHideButton = nullptr;
    BlinkingLabel* m_timerLabel = nullptr;
    QGraphicsOpacityEffect* m_opacityEffect;
    QPropertyAnimation* m_opacityAnimation;
    bool m_autoHide = false;
    bool m_pausable = true;
    bool m_isRecording = false;
    QString m_pauseKey;
    QTimer* m_mousePollTimer;

    QPushButton* m_pauseButton = nullptr;
    QLabel* m_audioOnlyLabel = nullptr;
    QWidget* m_container = nullptr;
    bool m_paused = false;
    bool m_topEdgeOnly = false;
    /// Not by the user, who has not pressed it since.
    bool m_isPinReleased = false;
    /// From takeKeyboard() until the keyboard goes elsewhere, or does not come.
    bool m_isShownForKeyboard = false;
    QRect m_recordedArea;
    bool m_concealed = false;
    bool m_hasOpenCorners = true;
    Wish m_wish = Wish::None;
};
