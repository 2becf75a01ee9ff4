#include "mainwindow/regionoverlays.h"

#include "app/sclogger.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

RegionOverlays::RegionOverlays(QObject* parent) : QObject(parent)
{
    makeSelector();
}

RegionOverlays::~RegionOverlays()
{
    // Whoever listens is being taken down as well.
    blockSignals(true);
    m_frameSetAside = false;
    cancelSelection();
}

void RegionOverlays::makeSelector()
{
    m_selector = std::make_unique<AreaSelector>();
    m_selector->installEventFilter(this);
    connect(m_selector.get(), &AreaSelector::areaSelected, this, &RegionOverlays::onAreaSelected);
}

void RegionOverlays::select()
{
    if (m_selecting)
        return;
    if (m_selector == nullptr)
        makeSelector();
    m_selecting = true;
    // It stands above the selector and would take the presses that are meant for it.
    m_frameSetAside = isFrameShown();
    hideFrame();
    QGuiApplication::setOverrideCursor(Qt::CrossCursor);
    // The screen may have changed since the selector was made.
    if (const QScreen* const screen = QGuiApplication::primaryScreen())
        m_selector->setGeometry(screen->geometry());
    m_selector->show();
    m_selector->raise();
    m_selector->activateWindow();
}

void RegionOverlays::cancelSelection()
{
    if (!m_selecting)
        return;
    QGuiApplication::restoreOverrideCursor();
    m_selector->hide();
}

void RegionOverlays::onAreaSelected(const QRect& area)
{
    SCLogger::debug(QStringLiteral("Selected Area - x=%1, y=%2, width=%3, height=%4")
                        .arg(area.x())
                        .arg(area.y())
                        .arg(area.width())
                        .arg(area.height()));
    m_selecting = false;
    m_frameSetAside = false;
    emit regionSelected(area.translated(m_selector->geometry().topLeft()));
    // The selector has given back its cursor already.
    const QCursor* const cursor = QGuiApplication::overrideCursor();
    if (cursor != nullptr && cursor->shape() == Qt::CrossCursor)
        QGuiApplication::restoreOverrideCursor();
    m_selector->hide();
    m_selector->disconnect(this);
    // It is still delivering the event that brought the selection.
    m_selector.release()->deleteLater();
}

bool RegionOverlays::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_selector.get() && event->type() == QEvent::Hide && m_selecting && !event->spontaneous()) {
        m_selecting = false;
        if (std::exchange(m_frameSetAside, false))
            showFrame();
        emit selectionCancelled();
    }
    // Closed by the window manager, it leaves as with Escape.
    if (watched == m_selector.get() && event->type() == QEvent::Close)
        cancelSelection();
    if (watched == m_frame.get() && event->type() == QEvent::Close)
        emit frameClosed();
    return false;
}

DrawWindow& RegionOverlays::drawWindow()
{
    if (m_frame == nullptr) {
        m_frame = std::make_unique<DrawWindow>();
        m_frame->installEventFilter(this);
        m_frame->setLockRatio(m_lockRatio);
        connect(m_frame.get(), &DrawWindow::windowGeometryChanged, this, &RegionOverlays::frameChanged);
        connect(m_frame.get(), &DrawWindow::concealedChanged, this, &RegionOverlays::frameConcealed);
        connect(m_frame.get(), &DrawWindow::hideDrawWindow, this, &RegionOverlays::frameClosed);
        connect(m_frame.get(), &DrawWindow::startRecording, this, &RegionOverlays::startRecording);
        connect(m_frame.get(), &DrawWindow::stopRecording, this, &RegionOverlays::stopRecording);
    }
    return *m_frame;
}

QRect RegionOverlays::frame(const QRect& area)
{
    place(area);
    DrawWindow& window = drawWindow();
    window.show();
    window.raise();
    window.activateWindow();
    const int border = window.borderWidth();
    return window.geometry().adjusted(border, border, -border, -border);
}

void RegionOverlays::place(const QRect& area)
{
    DrawWindow& window = drawWindow();
    const int border = window.borderWidth();
    window.setGeometry(area.adjusted(-border, -border, border, border));
}

int RegionOverlays::borderWidth()
{
    return drawWindow().borderWidth();
}

void RegionOverlays::showFrame()
{
    drawWindow().show();
}

void RegionOverlays::hideFrame()
{
    if (m_frame != nullptr)
        m_frame->hide();
}

bool RegionOverlays::isFrameShown() const
{
    return m_frame != nullptr && m_frame->isVisible();
}

void RegionOverlays::setRecording(bool recording)
{
    if (m_frame == nullptr)
        return;
    m_frame->setRecording(recording);
    m_frame->setInsideRecorded(recording);
}

void RegionOverlays::setTimeText(const QString& text)
{
    if (m_frame != nullptr)
        m_frame->setTimeText(text);
}

void RegionOverlays::setLockRatio(bool lock)
{
    m_lockRatio = lock;
    if (m_frame != nullptr)
        m_frame->setLockRatio(lock);
}
