#include "mainwindow/screenshotsession.h"

#include "mainwindow/capture/regionselection.h"
#include "screenshot/scscreenshot.h"
#include "screenshot/scscreenshotwindow.h"
#include "widgets/framegeometry.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>

#include <utility>

namespace {

/// Without what lies beyond all screens, where a picture would be black. On Windows a maximised window reaches there
/// with its borders, which nobody sees. What lies on another screen stays.
QRect seenOf(const QRect& area)
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    const QRect seen = screen == nullptr ? area : area & screen->virtualGeometry();
    return seen.isEmpty() ? area : seen;
}

} // namespace

ScreenshotSession::ScreenshotSession(QObject* parent, int windowGoneMs)
    : QObject(parent)
    , m_screenshot(new SCScreenshot(this))
    , m_selection(new RegionSelection(this))
    , m_selectorDelay(new QTimer(this))
    , m_keyboard(new QTimer(this))
{
    m_selectorDelay->setSingleShot(true);
    m_selectorDelay->setInterval(windowGoneMs);
    m_keyboard->setSingleShot(true);
    m_keyboard->setInterval(windowGoneMs);
    connect(m_keyboard, &QTimer::timeout, this, &ScreenshotSession::takeKeyboard);
    connect(m_selectorDelay, &QTimer::timeout, m_selection, &RegionSelection::begin);
    connect(m_screenshot, &SCScreenshot::error, this, &ScreenshotSession::failed);
    connect(m_selection, &RegionSelection::selected, this, &ScreenshotSession::frameArea);
    connect(m_selection, &RegionSelection::cancelled, this, &ScreenshotSession::end);
}

ScreenshotSession::~ScreenshotSession()
{
    blockSignals(true);
}

SCScreenshotWindow& ScreenshotSession::window()
{
    if (m_window == nullptr) {
        m_window = std::make_unique<SCScreenshotWindow>(m_screenshot);
        m_window->installEventFilter(this);
        connect(m_window.get(), &SCScreenshotWindow::screenshotSaved, this, &ScreenshotSession::saved);
    }
    return *m_window;
}

void ScreenshotSession::begin()
{
    if (!std::exchange(m_isActive, true))
        emit began();
}

void ScreenshotSession::end()
{
    if (!m_isChanging && std::exchange(m_isActive, false))
        emit ended();
}

bool ScreenshotSession::isGrabbing() const
{
    return m_window != nullptr && m_window->isCapturing();
}

void ScreenshotSession::frameScreen()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    const QScopedValueRollback<bool> changing(m_isChanging, true);
    m_selectorDelay->stop();
    m_selection->cancel();
    showFrame(screen->geometry(), true);
}

void ScreenshotSession::selectRegion()
{
    const QScopedValueRollback<bool> changing(m_isChanging, true);
    begin();
    // It would take the presses that are meant for the selector.
    if (m_window != nullptr)
        m_window->hide();
    m_selectorDelay->start();
}

void ScreenshotSession::frameArea(const QRect& area)
{
    const QRect seen = seenOf(area);
    const QRect grown(seen.topLeft(), seen.size().expandedTo(window().minimumSize()));
    const QScreen* const screen = QGuiApplication::screenAt(seen.center());
    const bool fits = grown == seen || screen == nullptr;
    showFrame(fits ? grown : QRect(framegeometry::moved(grown, {}, screen->geometry(), 0), grown.size()), false);
}

void ScreenshotSession::showFrame(const QRect& area, bool fullScreen)
{
    begin();
    window().setGeometry(area);
    window().setFullScreen(fullScreen);
    window().show();
    m_keyboard->start();
}

/// What has gone to make room had the keyboard, which the window manager then gives to another program.
void ScreenshotSession::takeKeyboard()
{
    if (m_window->isVisible())
        m_window->activateWindow();
}

void ScreenshotSession::giveUp()
{
    m_selectorDelay->stop();
    m_selection->cancel();
    if (m_window != nullptr)
        m_window->hide();
    end();
}

bool ScreenshotSession::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_window.get() && event->type() == QEvent::Hide && !event->spontaneous())
        end();
    return false;
}
