// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/scfullscreentoolbar.h"

#include "platform/windowing/overlay_window.h"
#include "widgets/blinkinglabel.h"
#include "widgets/icons.h"
#include "widgets/stylesheet.h"
#include "widgets/tooltip.h"
#include "widgets/windowmask.h"

#include <QCursor>
#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

#include <utility>

namespace {

constexpr QSize kBarSize(280, 40);
constexpr QSize kButtonSize(40, 40);
constexpr QSize kIconSize(24, 24);
constexpr int kAudioOnlyIconPx = 20;
/// As in the style sheet.
constexpr int kCornerRadiusPx = 8;
/// Qt::WindowStaysOnTopHint and the bits of Qt::Tool and Qt::SubWindow.
constexpr int kWindowFlags = 0x4001B;
constexpr int kTopEdgePx = 10;
/// On X11 it comes in the server's own time.
constexpr int kKeyboardComesMs = 1000;
constexpr double kHighestAlpha = 230.0;
constexpr int kOpaque = 255;

QIcon image(const char* name)
{
    return icons::named(QLatin1String(name));
}

QPushButton* makeButton(const char* objectName, QWidget* parent)
{
    auto* const button = new QPushButton(parent);
    button->setObjectName(QLatin1String(objectName));
    button->setFixedSize(kButtonSize);
    button->setIconSize(kIconSize);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

QIcon pinIcon()
{
    QIcon icon = image("pin");
    icon.addFile(icons::path(QStringLiteral("pin"), icons::Tone::Light), {}, QIcon::Normal, QIcon::On);
    return icon;
}

/// The buttons have no text: tool tip and accessible name say what they do.
void setMeaning(QPushButton& button, const QString& meaning)
{
    button.setToolTip(meaning);
    button.setAccessibleName(meaning);
}

} // namespace

SCFullscreenToolbar::SCFullscreenToolbar(QWidget* parent, const Durations& durations)
    : QWidget(parent)
    , m_layout(new QHBoxLayout(this))
    , m_opacityEffect(new QGraphicsOpacityEffect(this))
    , m_opacityAnimation(new QPropertyAnimation(m_opacityEffect, "opacity", this))
    , m_mousePollTimer(new QTimer(this))
{
    setFixedSize(kBarSize);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setAttribute(Qt::WA_QuitOnClose, false);
    prepareNativeWindow();
    applyStyleSheet(*this, QStringLiteral(":/res/style/fullscreen-toolbar.qss"));

    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addWidget(buildContainer());
    retranslate();
    connect(m_autoHideButton, &QPushButton::toggled, this, &SCFullscreenToolbar::onAutoHideToggled);
    connect(m_autoHideButton, &QPushButton::clicked, this, [this] { m_isPinReleased = false; });
    connect(m_recordButton, &QPushButton::clicked, this, &SCFullscreenToolbar::toggleRecording);
    connect(m_pauseButton, &QPushButton::clicked, this, [this] { emit pauseToggled(!m_paused); });

    setUpAnimation(durations.toolbarFadeMs);
    m_mousePollTimer->setInterval(durations.toolbarPointerPollMs);
    connect(m_mousePollTimer, &QTimer::timeout, this, &SCFullscreenToolbar::checkMousePosition);
    qApp->installEventFilter(this);
}

SCFullscreenToolbar::~SCFullscreenToolbar()
{
    qApp->removeEventFilter(this);
}

QWidget* SCFullscreenToolbar::buildContainer()
{
    m_container = new QWidget(this);
    m_container->setObjectName(QStringLiteral("containerWidget"));
    m_container->setFixedSize(kBarSize);
    m_recordButton = makeButton("recordButton", m_container);
    m_pauseButton = makeButton("pauseButton", m_container);
    m_audioOnlyLabel = new QLabel(m_container);
    m_audioOnlyLabel->setObjectName(QStringLiteral("audioOnlyLabel"));
    m_audioOnlyLabel->setPixmap(image("audio-only").pixmap({kAudioOnlyIconPx, kAudioOnlyIconPx}));
    m_audioOnlyLabel->hide();
    m_timerLabel = new BlinkingLabel(QStringLiteral("00:00:00"), m_container);
    m_timerLabel->setObjectName(QStringLiteral("timerLabel"));
    m_timerLabel->setAlignment(Qt::AlignCenter);
    m_autoHideButton = makeButton("autoHideButton", m_container);
    m_autoHideButton->setIcon(pinIcon());
    m_autoHideButton->setCheckable(true);
    m_autoHideButton->setChecked(true);

    auto* const layout = new QHBoxLayout(m_container);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_recordButton);
    layout->addWidget(m_pauseButton);
    layout->addStretch();
    layout->addWidget(m_audioOnlyLabel);
    layout->addWidget(m_timerLabel);
    layout->addStretch();
    layout->addWidget(m_autoHideButton);
    return m_container;
}

void SCFullscreenToolbar::setUpAnimation(int fadeMs)
{
    m_opacityEffect->setOpacity(1.0);
    setGraphicsEffect(m_opacityEffect);
    m_opacityAnimation->setDuration(fadeMs);
    connect(m_opacityAnimation, &QPropertyAnimation::finished, this, [this] {
        if (m_opacityAnimation->endValue().toDouble() == 0.0)
            QWidget::setVisible(false);
        else
            platform::setWindowAlpha(*this, kOpaque);
    });
    connect(m_opacityAnimation, &QPropertyAnimation::valueChanged, this, [this](const QVariant& value) {
        if (isVisible() && internalWinId() != 0)
            platform::setWindowAlpha(*this, layeredAlpha(value.toDouble()));
    });
}

int SCFullscreenToolbar::layeredAlpha(double opacity)
{
    return static_cast<int>(opacity * kHighestAlpha);
}

/// The widget's own flags hold no hint about frames: the native window alone is made without one, and leaves the
/// keyboard to others when it is clicked.
void SCFullscreenToolbar::prepareNativeWindow()
{
    const auto flags = Qt::WindowFlags::fromInt(kWindowFlags);
    overrideWindowFlags(flags | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    platform::prepareAsOverlay(*this);
    m_hasOpenCorners = platform::prepareForAlpha(*this);
    // What the native window was made with stays with it.
    overrideWindowFlags(flags);
}

/// Without a compositor the transparent corners would be black.
void SCFullscreenToolbar::updateOutline()
{
    if (m_concealed) {
        setMask(maskOfNothing());
        return;
    }
    if (m_hasOpenCorners && platform::isCompositing()) {
        clearMask();
        return;
    }
    QPainterPath outline;
    outline.addRoundedRect(rect(), kCornerRadiusPx, kCornerRadiusPx);
    setMask(QRegion(outline.toFillPolygon().toPolygon()));
}

void SCFullscreenToolbar::setConcealed(bool concealed)
{
    m_concealed = concealed;
    updateOutline();
}

void SCFullscreenToolbar::setRecording(bool recording)
{
    m_isRecording = recording;
    updateRecordButton();
    if (!recording)
        setPaused(false);
}

void SCFullscreenToolbar::updateRecordButton()
{
    m_recordButton->setIcon(image(m_isRecording ? "stop-recording" : "start-recording"));
    setMeaning(*m_recordButton, m_isRecording ? tr("Stop Recording") : tr("Start Recording"));
}

void SCFullscreenToolbar::setPauseKey(const QString& key)
{
    m_pauseKey = key;
    updatePauseButton();
}

void SCFullscreenToolbar::setTimeText(const QString& text)
{
    m_timerLabel->setText(text);
}

void SCFullscreenToolbar::setAudioOnly(bool audioOnly)
{
    m_audioOnlyLabel->setVisible(audioOnly);
    m_container->setProperty("audioOnly", audioOnly);
    restyle(*m_container);
}

void SCFullscreenToolbar::setPausable(bool pausable)
{
    m_pausable = pausable;
    updatePauseButton();
}

void SCFullscreenToolbar::setPaused(bool paused)
{
    m_paused = paused;
    updatePauseButton();
}

void SCFullscreenToolbar::updatePauseButton()
{
    m_pauseButton->setEnabled(m_pausable);
    m_pauseButton->setIcon(image(m_paused ? "resume-recording" : "pause-recording"));
    setMeaning(*m_pauseButton, m_paused ? tr("Resume Recording") : tr("Pause Recording"));
    if (!m_pausable)
        m_pauseButton->setToolTip(tr("This format cannot be paused"));
    else if (!m_pauseKey.isEmpty())
        m_pauseButton->setToolTip(QStringLiteral("%1 (%2)").arg(m_pauseButton->toolTip(), m_pauseKey));
    m_timerLabel->setProperty("paused", m_paused);
    restyle(*m_timerLabel);
    m_timerLabel->setBlinking(m_paused);
}

void SCFullscreenToolbar::retranslate()
{
    setWindowTitle(tr("Recording Toolbar"));
    updateRecordButton();
    updatePauseButton();
    setMeaning(*m_autoHideButton, tr("Toggle Auto-Hide"));
    m_timerLabel->setAccessibleName(tr("Elapsed Time"));
    m_audioOnlyLabel->setAccessibleName(tr("Sound Only"));
    m_audioOnlyLabel->setToolTip(tr("Sound Only"));
}

void SCFullscreenToolbar::setTopEdgeOnly(bool topEdgeOnly)
{
    if (topEdgeOnly == m_topEdgeOnly)
        return;
    m_topEdgeOnly = topEdgeOnly;
    const bool isPinned = m_autoHideButton->isChecked();
    const bool wasReleased = std::exchange(m_isPinReleased, topEdgeOnly && isPinned);
    m_autoHideButton->setChecked(!topEdgeOnly && (isPinned || wasReleased));
    if (m_wish == Wish::Shown && m_autoHide)
        checkMousePosition();
}

void SCFullscreenToolbar::setVisible(bool visible)
{
    m_wish = visible ? Wish::Shown : Wish::Hidden;
    // A bar that was pinned into one video is not pinned into the next.
    if (!visible)
        setTopEdgeOnly(false);
    updatePolling();
    const bool mustWait = visible && m_topEdgeOnly && m_autoHide && !isPointerAtTopEdge();
    if (!mustWait)
        QWidget::setVisible(visible);
    QCoreApplication::postEvent(this, new QEvent(offerEvent()));
}

void SCFullscreenToolbar::takeKeyboard()
{
    m_isShownForKeyboard = true;
    fadeIn();
    platform::giveKeyboard(*this);
    // The system may refuse, and then nothing is lost that would end it.
    QTimer::singleShot(kKeyboardComesMs, this, [this] {
        if (!isActiveWindow())
            m_isShownForKeyboard = false;
    });
}

void SCFullscreenToolbar::onAutoHideToggled(bool checked)
{
    m_autoHide = !checked;
    m_autoHideButton->setChecked(checked);
    updatePolling();
    if (!m_autoHide && m_wish == Wish::Shown)
        fadeIn();
}

/// A bar that was hidden, or never shown, does not poll.
void SCFullscreenToolbar::updatePolling()
{
    const bool isWanted = m_wish == Wish::Shown || (m_wish == Wish::None && !m_topEdgeOnly);
    if (!m_autoHide || !isWanted)
        m_mousePollTimer->stop();
    else if (!m_mousePollTimer->isActive())
        m_mousePollTimer->start();
}

void SCFullscreenToolbar::checkMousePosition()
{
    if (m_wish == Wish::Hidden)
        return;
    // A hidden bar at the top edge is shown by the edge alone, not by the rest of its position.
    const bool isThere = isVisible() || (!m_topEdgeOnly && y() > screen()->geometry().y() + kTopEdgePx);
    if (isPointerAtTopEdge() || (isThere && isPointerInside()) || m_isShownForKeyboard)
        fadeIn();
    else
        fadeOut();
}

bool SCFullscreenToolbar::isPointerAtTopEdge() const
{
    const QScreen* const primary = QGuiApplication::primaryScreen();
    const QPoint pointer = QCursor::pos();
    // Other screens may lie beside the primary one and above it.
    return primary != nullptr && primary->geometry().contains(pointer) &&
           pointer.y() <= primary->geometry().top() + kTopEdgePx;
}

bool SCFullscreenToolbar::isPointerInside() const
{
    return geometry().contains(QCursor::pos());
}

void SCFullscreenToolbar::fadeIn()
{
    QWidget::setVisible(true);
    fadeTo(1.0);
}

void SCFullscreenToolbar::fadeOut()
{
    if (isVisible())
        fadeTo(0.0);
}

void SCFullscreenToolbar::fadeTo(double opacity)
{
    const bool isFading = m_opacityAnimation->state() == QAbstractAnimation::Running;
    // The pointer is polled more often than a fade takes: a fade restarted each time would never end.
    if (isFading ? m_opacityAnimation->endValue().toDouble() == opacity : m_opacityEffect->opacity() == opacity)
        return;
    m_opacityAnimation->stop();
    m_opacityAnimation->setStartValue(m_opacityEffect->opacity());
    m_opacityAnimation->setEndValue(opacity);
    m_opacityAnimation->start();
}

void SCFullscreenToolbar::toggleRecording()
{
    m_isRecording = !m_isRecording;
    emit recordingToggled(m_isRecording);
}

/// Over the program's own windows the bar need not wait for the next poll of the pointer.
bool SCFullscreenToolbar::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ToolTip && m_container->isAncestorOf(qobject_cast<QWidget*>(watched))) {
        bartip::show(static_cast<QWidget&>(*watched), m_recordedArea);
        return true;
    }
    if (event->type() == QEvent::MouseMove && m_mousePollTimer->isActive())
        checkMousePosition();
    return false;
}

void SCFullscreenToolbar::leaveEvent(QEvent* event)
{
    if (m_autoHide && !isPointerInside())
        checkMousePosition();
    QWidget::leaveEvent(event);
}

/// Before the window is on the screen.
void SCFullscreenToolbar::showEvent(QShowEvent* event)
{
    updateOutline();
    fadeTo(1.0);
    QWidget::showEvent(event);
}

/// An interrupted fade is continued when the bar is shown again.
void SCFullscreenToolbar::hideEvent(QHideEvent* event)
{
    m_opacityAnimation->stop();
    m_isShownForKeyboard = false;
    QWidget::hideEvent(event);
}

void SCFullscreenToolbar::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    if (event->type() == QEvent::ActivationChange && !isActiveWindow())
        m_isShownForKeyboard = false;
    QWidget::changeEvent(event);
}
