#include "screenshot/scscreenshotwindow.h"

#include "platform/windowing/capture_exclusion.h"
#include "platform/windowing/overlay_window.h"
#include "screenshot/screengrab.h"
#include "screenshot/scscreenshot.h"
#include "widgets/icons.h"
#include "widgets/stylesheet.h"
#include "widgets/tooltip.h"
#include "widgets/windowmask.h"

#include <QBitmap>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QThread>

#include <algorithm>
#include <array>
#include <cstdlib>

using framegeometry::HitArea;

namespace {

constexpr QSize kMinimumSize(100, 100);
constexpr int kButtonPx = 30;
/// Between the frame of a whole screen and the tool bar inside it.
constexpr int kInsetPx = 4;
/// Between the frame of a region and the tool bar below it.
constexpr int kGapPx = 2;
constexpr QColor kBorder(0, 122, 204);
/// Half of it lies outside the window.
constexpr int kBorderPenPx = 4;
/// As far as the border reaches into the window, at whichever side it does most.
constexpr int kRingPx = 3;
/// Nothing to the eye, but enough for the system to give the window the pointer.
constexpr QColor kUnseen(0, 0, 0, 1);

/// What was below the border is painted again by its owner, and a compositor shows that with its next picture.
constexpr qint64 kRepaintMs = 100;
/// Compositors let windows fade out, and draw shadows around them.
constexpr qint64 kFadeMs = 400;
constexpr int kShadowPx = 32;
constexpr qint64 kLongestWaitMs = 1000;
constexpr unsigned long kPollMs = 10;

bool isBorderColour(QRgb colour)
{
    constexpr int kTolerance = 2;
    return std::abs(qRed(colour) - kBorder.red()) <= kTolerance &&
           std::abs(qGreen(colour) - kBorder.green()) <= kTolerance &&
           std::abs(qBlue(colour) - kBorder.blue()) <= kTolerance;
}

/// Most of the strip is.
bool isBorder(const QPixmap& strip)
{
    const QImage image = strip.toImage();
    qint64 found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            found += isBorderColour(image.pixel(x, y)) ? 1 : 0;
    }
    return 2 * found > qint64(image.width()) * image.height();
}

/// A line each at the left, right, top and bottom of the frame.
std::array<QRect, 4> edgesOf(const QRect& frame)
{
    return {QRect(frame.topLeft(), frame.bottomLeft()), QRect(frame.topRight(), frame.bottomRight()),
            QRect(frame.topLeft(), frame.topRight()), QRect(frame.bottomLeft(), frame.bottomRight())};
}

QRect withShadow(const QWidget& window)
{
    return window.geometry().adjusted(-kShadowPx, -kShadowPx, kShadowPx, kShadowPx);
}

void describe(QPushButton& button, const QString& text)
{
    button.setToolTip(text);
    button.setAccessibleName(text);
}

} // namespace

SCScreenshotWindow::SCScreenshotWindow(SCScreenshot* screenshot, QWidget* parent)
    : QWidget(parent), m_screenshot(*screenshot), m_grabber(&grabOfScreen), m_opening(*this)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowFlags(Qt::SubWindow | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_StaticContents);
    setAttribute(Qt::WA_MouseTracking);
    setMinimumSize(kMinimumSize);
    // A helper of the program's: neither does it keep the program running, nor does its end end the program.
    setAttribute(Qt::WA_QuitOnClose, false);
    buildToolBar();
    placeToolBar();
    m_toolbar->show();
    loadStyleSheet();
    platform::prepareAsOverlay(*this);
    // One answer for both: by it goes what is taken away before a grab, and what is painted onto it.
    m_isExcluded = platform::excludeTogether({m_toolbar.get(), this});
}

SCScreenshotWindow::~SCScreenshotWindow() = default;

void SCScreenshotWindow::buildToolBar()
{
    m_toolbar = std::make_unique<QWidget>(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    m_toolbar->setObjectName(QStringLiteral("buttonBackground"));
    m_toolbar->setAttribute(Qt::WA_AlwaysShowToolTips);
    m_toolbar->installEventFilter(this);
    m_toolbar->setFixedHeight(kButtonPx);
    auto* const layout = new QHBoxLayout(m_toolbar.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_saveButton = addButton("saveButton", "capture");
    m_drawButton = addButton("drawButton", "pen");
    m_drawButton->setCheckable(true);
    m_clearButton = addButton("clearButton", "clear");
    layout->addStretch();
    m_cancelButton = addButton("cancelButton", "close");
    connect(m_saveButton, &QPushButton::clicked, this, &SCScreenshotWindow::saveScreenshot);
    connect(m_drawButton, &QPushButton::clicked, this, &SCScreenshotWindow::drawOnScreenshot);
    connect(m_clearButton, &QPushButton::clicked, this, &SCScreenshotWindow::clearDraw);
    connect(m_cancelButton, &QPushButton::clicked, this, &SCScreenshotWindow::cancelScreenshot);
    retranslate();
    m_toolbar->adjustSize();
    platform::prepareAsOverlay(*m_toolbar);
    platform::setExcludedFromCapture(*m_toolbar, true);
}

QPushButton* SCScreenshotWindow::addButton(const char* name, const char* icon)
{
    auto* const button = new QPushButton(QString(), m_toolbar.get());
    button->setObjectName(QLatin1String(name));
    button->setProperty("iconName", QLatin1String(icon));
    button->setIcon(icons::named(QLatin1String(icon)));
    button->setFixedSize(kButtonPx, kButtonPx);
    button->installEventFilter(this);
    // The keyboard stays with the frame.
    button->setFocusPolicy(Qt::NoFocus);
    static_cast<QHBoxLayout*>(m_toolbar->layout())->addWidget(button);
    return button;
}

void SCScreenshotWindow::loadStyleSheet()
{
    applyStyleSheet({this, m_toolbar.get(), m_saveButton, m_cancelButton},
                    QStringLiteral(":/res/style/screenshot-window.qss"),
                    QStringLiteral("screenshot window stylesheet"));
}

void SCScreenshotWindow::retranslate()
{
    setWindowTitle(tr("Screenshot"));
    describe(*m_saveButton, tr("Capture"));
    describe(*m_drawButton, tr("Start Drawing"));
    describe(*m_clearButton, tr("Clear Drawing"));
    describe(*m_cancelButton, tr("Close Window"));
}

void SCScreenshotWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void SCScreenshotWindow::setButtonsVisible(bool visible)
{
    for (QPushButton* const button : {m_saveButton, m_cancelButton, m_drawButton})
        button->setVisible(visible);
    m_toolbar->setVisible(visible);
}

void SCScreenshotWindow::hide()
{
    QWidget::hide();
    setButtonsVisible(false);
}

void SCScreenshotWindow::show()
{
    QWidget::show();
    setButtonsVisible(true);
    placeToolBar();
    raise();
    m_toolbar->raise();
    activateWindow();
}

void SCScreenshotWindow::closeEvent(QCloseEvent* event)
{
    // Left alone, the tool bar would go on moving a frame that nobody sees.
    setButtonsVisible(false);
    QWidget::closeEvent(event);
}

void SCScreenshotWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_isCompositing = platform::isCompositing();
    updateOpening();
}

void SCScreenshotWindow::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    updateOpening();
}

void SCScreenshotWindow::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    placeToolBar();
}

void SCScreenshotWindow::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeToolBar();
    updateOpening();
    // Only what is new would be painted by itself, and the border would stay where it was.
    update();
}

QPoint SCScreenshotWindow::toolBarPlace() const
{
    const QRect frame = geometry();
    const QPoint inside(frame.right() - kInsetPx - m_toolbar->width(), frame.top() + kInsetPx);
    if (m_fullScreen)
        return inside;
    const QPoint below(frame.right() - m_toolbar->width(), frame.bottom() + kGapPx);
    // A window as high as the screen would leave the user without a button to press.
    const bool isReachable = QGuiApplication::screenAt(QRect(below, m_toolbar->size()).center()) != nullptr;
    return isReachable ? below : inside;
}

void SCScreenshotWindow::placeToolBar()
{
    m_toolbar->move(toolBarPlace());
    if (isVisible() && !m_capturing)
        m_toolbar->show();
}

bool SCScreenshotWindow::event(QEvent* event)
{
    if (event->type() == QEvent::WindowBlocked || event->type() == QEvent::WindowUnblocked) {
        m_isBlocked = event->type() == QEvent::WindowBlocked;
        updateOpening();
        update();
    }
    return QWidget::event(event);
}

bool SCScreenshotWindow::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::Leave:
        showHoverIcon(*watched, event->type() == QEvent::Enter);
        return false;
    case QEvent::MouseButtonPress: {
        const auto& press = static_cast<const QMouseEvent&>(*event);
        if (press.button() == Qt::LeftButton)
            m_dragStartPos = press.globalPosition().toPoint();
        return watched == m_toolbar.get() && filterToolBar(press);
    }
    case QEvent::MouseMove:
        return watched == m_toolbar.get() && filterToolBar(static_cast<const QMouseEvent&>(*event));
    case QEvent::KeyPress:
        // On Windows a press on the bar takes the keyboard from the frame.
        if (watched == m_toolbar.get())
            keyPressEvent(static_cast<QKeyEvent*>(event));
        return watched == m_toolbar.get();
    default:
        return false;
    }
}

bool SCScreenshotWindow::filterToolBar(const QMouseEvent& event)
{
    if (event.type() == QEvent::MouseButtonPress) {
        if (event.button() == Qt::LeftButton)
            m_dragStartGeometry = geometry();
        return false;
    }
    if (!event.buttons().testFlag(Qt::LeftButton))
        return false;
    move(m_dragStartGeometry.topLeft() + event.globalPosition().toPoint() - m_dragStartPos);
    return true;
}

void SCScreenshotWindow::showHoverIcon(QObject& watched, bool hovered)
{
    auto* const button = qobject_cast<QPushButton*>(&watched);
    if (button != nullptr && !button->isChecked())
        button->setIcon(
            icons::named(button->property("iconName").toString(), hovered ? icons::Tone::Light : icons::Tone::Normal));
}

void SCScreenshotWindow::drawOnScreenshot()
{
    m_drawMode = !m_drawMode;
    m_drawButton->setChecked(m_drawMode);
    m_drawButton->setIcon(icons::named(QStringLiteral("pen"), m_drawMode ? icons::Tone::Light : icons::Tone::Normal));
    setCursor(m_drawMode ? Qt::CrossCursor : Qt::ArrowCursor);
    m_isCompositing = platform::isCompositing();
    updateOpening();
    update();
}

void SCScreenshotWindow::clearDraw()
{
    m_drawPath = QPainterPath();
    m_paths.clear();
    m_strokes.clear();
    m_currentStroke.clear();
    updateOpening();
    update();
}

void SCScreenshotWindow::cancelScreenshot()
{
    emit screenshotCancelled();
    hide();
}

void SCScreenshotWindow::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        cancelScreenshot();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        saveScreenshot();
        break;
    default:
        QWidget::keyPressEvent(event);
        break;
    }
}

HitArea SCScreenshotWindow::hitAreaAt(const QPoint& place) const
{
    if (m_drawMode)
        return HitArea::Drawing;
    const HitArea area = framegeometry::hitAreaAt(place, size());
    // The inside moves nothing: it belongs to the windows below.
    return framegeometry::isResize(area) ? area : HitArea::None;
}

void SCScreenshotWindow::mousePressEvent(QMouseEvent* event)
{
    QWidget::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    activateWindow();
    m_dragStartPos = event->globalPosition().toPoint();
    m_dragStartGeometry = geometry();
    m_resizeRegion = hitAreaAt(event->position().toPoint());
    if (m_resizeRegion == HitArea::Drawing)
        m_currentStroke = {event->position()};
    m_pressed = true;
}

void SCScreenshotWindow::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_pressed || !event->buttons().testFlag(Qt::LeftButton)) {
        setCursor(framegeometry::cursorOf(hitAreaAt(event->position().toPoint())));
    } else if (m_resizeRegion == HitArea::Drawing && m_drawMode) {
        m_currentStroke.append(event->position());
        updateOpening();
        update();
        return;
    } else {
        drag(event->globalPosition().toPoint());
    }
    QWidget::mouseMoveEvent(event);
}

void SCScreenshotWindow::drag(const QPoint& cursor)
{
    setGeometry(
        framegeometry::resized(m_resizeRegion, m_dragStartGeometry, cursor - m_dragStartPos, minimumSize(), false));
    placeToolBar();
}

void SCScreenshotWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_pressed = false;
        if (m_resizeRegion == HitArea::Drawing && m_drawMode) {
            endStroke(event->position());
        } else {
            m_resizeRegion = HitArea::None;
            setCursor(Qt::ArrowCursor);
        }
    }
    QWidget::mouseReleaseEvent(event);
}

void SCScreenshotWindow::endStroke(const QPointF& place)
{
    // Where the pointer has not moved there is no line.
    if (!m_currentStroke.isEmpty() && m_currentStroke.constLast() != place)
        m_currentStroke.append(place);
    if (m_currentStroke.size() > 1) {
        m_strokes.append(m_currentStroke);
        m_currentStroke.clear();
    }
    updateOpening();
    update();
}

void SCScreenshotWindow::saveScreenshot()
{
    if (m_capturing)
        return;
    const bool wasShown = isVisible();
    const QScopedValueRollback<bool> capturing(m_capturing, true);
    m_isCompositing = platform::isCompositing();
    updateOpening();
    repaint();
    const bool hidMore = clearTheView();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    waitUntilUnseen(hidMore);
    // A hotkey may have begun something else meanwhile, which is not to be disturbed by a shot.
    if (wasShown && !isVisible())
        return;
    const QPixmap picture = grab();
    const bool isSaved = !picture.isNull() && m_screenshot.saveScreenshot(picture, QString());
    m_capturing = false;
    if (isSaved) {
        hide();
        emit screenshotSaved(m_screenshot.lastSavedPath());
        return;
    }
    comeBack();
}

void SCScreenshotWindow::comeBack()
{
    updateOpening();
    update();
    placeToolBar();
    // Whoever told the user what went wrong had the keyboard.
    activateWindow();
}

/// Takes away what stands over the frame and would be in the picture. Whether there was anything.
bool SCScreenshotWindow::clearTheView()
{
    bool hidSomething = false;
    QWidget* const tip = visibleToolTip();
    for (QWidget* const window : {tip, m_isExcluded ? nullptr : m_toolbar.get()}) {
        if (window == nullptr || !window->isVisible() || !withShadow(*window).intersects(geometry()))
            continue;
        window->hide();
        hidSomething = true;
    }
    return hidSomething;
}

void SCScreenshotWindow::waitUntilUnseen(bool hadMore)
{
    if (m_isExcluded && !hadMore)
        return;
    const qint64 shortest = hadMore && m_isCompositing ? kFadeMs : kRepaintMs;
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < shortest || (waited.elapsed() < kLongestWaitMs && isBorderSeen())) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QThread::msleep(kPollMs);
    }
}

bool SCScreenshotWindow::isBorderSeen() const
{
    QScreen* const shown = screenOfGrab();
    if (m_isExcluded || shown == nullptr)
        return false;
    const std::array<QRect, 4> edges = edgesOf(geometry());
    return std::ranges::any_of(edges, [this, shown](const QRect& edge) { return isBorder(m_grabber(*shown, edge)); });
}

QScreen* SCScreenshotWindow::screenOfGrab() const
{
    QScreen* const holding = QGuiApplication::screenAt(geometry().topLeft());
    return holding != nullptr ? holding : QGuiApplication::primaryScreen();
}

QPixmap SCScreenshotWindow::grab() const
{
    QScreen* const shown = screenOfGrab();
    if (shown == nullptr)
        return {};
    QPixmap picture = m_grabber(*shown, geometry());
    if (m_isExcluded && m_drawMode && !picture.isNull()) {
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        paintDrawing(painter);
    }
    return picture;
}

/// What there is to be seen, as far as whole logical pixels can say it.
QRegion SCScreenshotWindow::paintedRegion() const
{
    QRegion painted;
    if (m_drawMode) {
        QBitmap covered(size());
        covered.clear();
        QPainter painter(&covered);
        paintDrawing(painter);
        painter.end();
        painted = QRegion(covered);
    }
    if (!m_capturing)
        painted += QRegion(rect()) - rect().adjusted(kRingPx, kRingPx, -kRingPx, -kRingPx);
    return painted.isEmpty() ? maskOfNothing() : painted;
}

void SCScreenshotWindow::updateOpening()
{
    using Pointer = platform::WindowOpening::Pointer;
    m_opening.update(takesPointer() ? Pointer::IsTaken : Pointer::PassesThrough, m_isCompositing,
                     [this] { return paintedRegion(); });
}

void SCScreenshotWindow::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    if (m_isCompositing)
        paintMixed(painter);
    else
        paintCut(painter);
}

void SCScreenshotWindow::paintMixed(QPainter& painter) const
{
    if (m_drawMode) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        // The tool bar counts from the desktop's corner, the frame from its own.
        const QRegion filled = m_capturing ? QRegion(rect()) : QRegion(rect()) - m_toolbar->geometry();
        for (const QRect& part : filled)
            painter.fillRect(part, takesPointer() ? kUnseen : QColor(Qt::transparent));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        paintDrawing(painter);
    }
    if (!m_capturing)
        paintBorder(painter);
}

/// The window has the shape of border and drawing, and whatever of it is not fully covered would be black: more than
/// there is to see is painted everywhere.
void SCScreenshotWindow::paintCut(QPainter& painter) const
{
    painter.fillRect(rect().adjusted(-1, -1, 1, 1), m_capturing ? m_penColor : kBorder);
    if (!m_drawMode)
        return;
    painter.fillRect(rect().adjusted(kRingPx, kRingPx, -kRingPx, -kRingPx), m_penColor);
    paintDrawing(painter);
}

void SCScreenshotWindow::paintBorder(QPainter& painter) const
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kBorder, kBorderPenPx, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void SCScreenshotWindow::paintDrawing(QPainter& painter) const
{
    const QPen pen(m_penColor, m_penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    for (const ColouredPath& entry : m_paths) {
        painter.setPen(QPen(entry.color, entry.widthPx));
        painter.drawPath(entry.path);
    }
    painter.setPen(pen);
    for (const QPolygonF& stroke : m_strokes)
        painter.drawPolyline(stroke);
    if (m_currentStroke.size() > 1)
        painter.drawPolyline(m_currentStroke);
    if (!m_drawPath.isEmpty())
        painter.drawPath(m_drawPath);
}
