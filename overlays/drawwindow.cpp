#include "overlays/drawwindow.h"

#include "platform/windowing/overlay_window.h"
#include "widgets/bartip.h"
#include "widgets/icons.h"
#include "widgets/stylesheet.h"
#include "widgets/windowmask.h"

#include <QApplication>
#include <QBitmap>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineF>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>

#include <utility>

#include <algorithm>

using framegeometry::HitArea;

namespace {

constexpr QSize kMinimumSize(200, 150);
constexpr QRect kFirstGeometry(100, 100, 800, 600);
constexpr QSize kButtonSize(30, 30);
constexpr QSize kTimeSize(100, 30);
constexpr QColor kBorder(0, 122, 204, 255);
/// Nothing to the eye, but enough for the system to give the window the pointer.
constexpr QColor kUnseen(0, 0, 0, 1);
constexpr int kStrokePx = 2;

QPen strokePen()
{
    return QPen(Qt::red, kStrokePx);
}

/// All the pixels that a part of a stroke may touch, with its caps and corners.
QRect boundsOf(const QLineF& part)
{
    constexpr int kReachPx = 2 * kStrokePx;
    return QRectF(part.p1(), part.p2()).normalized().toAlignedRect().adjusted(-kReachPx, -kReachPx, kReachPx, kReachPx);
}

/// The pixels that a part of a stroke covers.
QRegion regionOf(const QLineF& part)
{
    const QRect bounds = boundsOf(part);
    QBitmap covered(bounds.size());
    covered.clear();
    QPainter painter(&covered);
    painter.translate(-bounds.topLeft());
    painter.setPen(strokePen());
    painter.drawPolyline(QPolygonF({part.p1(), part.p2()}));
    painter.end();
    return QRegion(covered).translated(bounds.topLeft());
}

/// Says what a button does, to the eye and to those who read the screen aloud.
void describe(QPushButton& button, const QString& text)
{
    button.setToolTip(text);
    button.setAccessibleName(text);
}

} // namespace

DrawWindow::DrawWindow(QWidget* parent) : QWidget(parent), m_opening(*this)
{
    setMinimumSize(kMinimumSize);
    setWindowTitle(QStringLiteral("Drawing Window"));
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowFlags(Qt::SubWindow | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_StaticContents);
    setMouseTracking(true);
    // A helper of the program's: neither does it keep the program running, nor does its end end the program.
    setAttribute(Qt::WA_QuitOnClose, false);
    buildToolBar();
    placeToolBar();
    if (QGuiApplication::primaryScreen() != nullptr)
        setGeometry(kFirstGeometry);
    loadStyleSheet();
    platform::prepareAsOverlay(*this);
    platform::prepareAsOverlay(*m_toolBar);
    connect(&m_unseenMove, &UnseenMove::concealed, this, [this] { setConcealed(true); });
    connect(&m_unseenMove, &UnseenMove::moved, this, &DrawWindow::dragByToolBar);
    connect(&m_unseenMove, &UnseenMove::ended, this, &DrawWindow::endToolBarDrag);
    connect(&m_unseenMove, &UnseenMove::revealed, this, [this] { setConcealed(false); });
}

DrawWindow::~DrawWindow() = default;

void DrawWindow::buildToolBar()
{
    m_toolBar = std::make_unique<QWidget>(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    m_toolBar->setObjectName(QStringLiteral("buttonBackground"));
    m_toolBar->setAttribute(Qt::WA_AlwaysShowToolTips);
    m_toolBar->installEventFilter(this);
    auto* const layout = new QHBoxLayout(m_toolBar.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setAlignment(Qt::AlignLeft);
    m_drawToggleButton = addButton(QStringLiteral("drawToggleButton"), QStringLiteral("pen"));
    m_drawToggleButton->setCheckable(true);
    m_clearButton = addButton(QStringLiteral("clearButton"), QStringLiteral("clear"));
    m_timerLabel = new QLabel(QStringLiteral("00:00:00"), m_toolBar.get());
    m_timerLabel->setObjectName(QStringLiteral("timerLabel"));
    m_timerLabel->setAlignment(Qt::AlignCenter);
    m_timerLabel->setFixedSize(kTimeSize);
    layout->addWidget(m_timerLabel, 0, Qt::AlignCenter);
    m_startButton = addButton(QStringLiteral("startButton"), QStringLiteral("start-recording"));
    m_startButton->setCheckable(true);
    m_closeButton = addButton(QStringLiteral("closeButton"), QStringLiteral("close"));
    connect(m_drawToggleButton, &QPushButton::toggled, this, &DrawWindow::setDrawing);
    connect(m_clearButton, &QPushButton::clicked, this, &DrawWindow::clearDrawing);
    connect(m_startButton, &QPushButton::clicked, this, &DrawWindow::onStartButton);
    connect(m_closeButton, &QPushButton::clicked, this, &DrawWindow::onCloseButton);
    retranslate();
}

QPushButton* DrawWindow::addButton(const QString& name, const QString& iconName)
{
    auto* const button = new QPushButton(icons::named(iconName), QString(), m_toolBar.get());
    button->setObjectName(name);
    button->setFixedSize(kButtonSize);
    button->setAttribute(Qt::WA_Hover);
    button->installEventFilter(this);
    // The keyboard stays with what is being recorded.
    button->setFocusPolicy(Qt::NoFocus);
    m_toolBar->layout()->addWidget(button);
    button->show();
    return button;
}

void DrawWindow::loadStyleSheet()
{
    applyStyleSheet(
        {this, m_toolBar.get(), m_drawToggleButton, m_clearButton, m_closeButton, m_startButton, m_timerLabel},
        QStringLiteral(":/res/style/draw-window.qss"), QStringLiteral("draw window stylesheet"));
}

void DrawWindow::retranslate()
{
    describe(*m_drawToggleButton, tr("Start Drawing"));
    describe(*m_clearButton, tr("Clear Drawing"));
    describe(*m_startButton, m_recording ? tr("Stop Recording") : tr("Start Recording"));
    describe(*m_closeButton, tr("Close Window"));
}

void DrawWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void DrawWindow::setBorderWidth(int widthPx)
{
    m_borderWidth = widthPx;
    updateOpening();
    update();
}

void DrawWindow::setLockRatio(bool lock)
{
    m_lockRatio = lock;
}

void DrawWindow::setRecording(bool recording)
{
    m_recording = recording;
    m_startButton->setIcon(
        icons::named(recording ? QStringLiteral("stop-recording") : QStringLiteral("start-recording")));
    m_startButton->setChecked(recording);
    describe(*m_startButton, recording ? tr("Stop Recording") : tr("Start Recording"));
    update();
}

void DrawWindow::setInsideRecorded(bool recorded)
{
    m_insideRecorded = recorded;
    if (!recorded)
        m_unseenMove.giveUp();
}

void DrawWindow::setConcealed(bool concealed)
{
    m_concealed = concealed;
    // The bar has the mouse until the button is let go, wherever it is to be seen.
    if (concealed)
        m_toolBar->setMask(maskOfNothing());
    else
        m_toolBar->clearMask();
    updateOpening();
    update();
    emit concealedChanged(concealed);
}

void DrawWindow::setTimeText(const QString& text)
{
    m_timerLabel->setText(text);
}

void DrawWindow::setPartsVisible(bool visible)
{
    for (QWidget* const part : {m_toolBar.get(), static_cast<QWidget*>(m_drawToggleButton),
                                static_cast<QWidget*>(m_clearButton), static_cast<QWidget*>(m_timerLabel),
                                static_cast<QWidget*>(m_startButton), static_cast<QWidget*>(m_closeButton)})
        part->setVisible(visible);
}

void DrawWindow::hide()
{
    QWidget::hide();
    setPartsVisible(false);
}

void DrawWindow::show()
{
    QWidget::show();
    setPartsVisible(true);
    placeToolBar();
}

void DrawWindow::closeEvent(QCloseEvent* event)
{
    // Left alone, the tool bar would go on moving a frame that nobody sees.
    setPartsVisible(false);
    QWidget::closeEvent(event);
}

void DrawWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_isCompositing = platform::isCompositing();
    updateOpening();
}

void DrawWindow::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    // The button that was held is let go of elsewhere.
    m_toolBarDragging = false;
    m_dragMode = HitArea::None;
    m_unseenMove.giveUp();
    updateOpening();
}

void DrawWindow::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    placeToolBar();
}

void DrawWindow::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeToolBar();
    updateOpening();
    // Only what is new would be painted by itself, and the border would stay where it was.
    update();
}

void DrawWindow::placeToolBar()
{
    m_toolBar->setFixedSize(width(), m_toolBar->sizeHint().height());
    m_toolBar->move(x() + (width() - m_toolBar->width()) / 2, y() - m_toolBar->height());
}

void DrawWindow::setDrawing(bool drawing)
{
    m_drawing = drawing;
    m_isCompositing = platform::isCompositing();
    setCursor(drawing ? Qt::CrossCursor : Qt::ArrowCursor);
    placeToolBar();
    updateOpening();
    update();
    m_drawToggleButton->setIcon(
        icons::named(QStringLiteral("pen"), drawing ? icons::Tone::Light : icons::Tone::Normal));
}

void DrawWindow::clearDrawing()
{
    m_strokes.clear();
    m_currentStroke.clear();
    m_strokesRegion = QRegion();
    m_drawingInProgress = false;
    updateOpening();
    update();
}

void DrawWindow::onStartButton()
{
    setRecording(!m_recording);
    if (m_recording)
        emit startRecording();
    else
        emit stopRecording();
}

void DrawWindow::onCloseButton()
{
    if (m_recording)
        onStartButton();
    m_drawToggleButton->setChecked(false);
    clearDrawing();
    emit hideDrawWindow();
    hide();
}

bool DrawWindow::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::Leave:
        showHoverIcon(watched, event->type() == QEvent::Enter);
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return watched == m_toolBar.get() && filterToolBar(static_cast<const QMouseEvent&>(*event));
    case QEvent::ToolTip:
        if (watched == m_toolBar.get())
            return false;
        bartip::show(static_cast<QWidget&>(*watched), m_recording ? geometry() : QRect());
        return true;
    default:
        return false;
    }
}

void DrawWindow::showHoverIcon(const QObject* button, bool hovered)
{
    const icons::Tone tone = hovered ? icons::Tone::Light : icons::Tone::Normal;
    if (button == m_closeButton)
        m_closeButton->setIcon(icons::named(QStringLiteral("close"), tone));
    else if (button == m_clearButton)
        m_clearButton->setIcon(icons::named(QStringLiteral("clear"), tone));
    else if (button == m_drawToggleButton && !m_drawToggleButton->isChecked())
        m_drawToggleButton->setIcon(icons::named(QStringLiteral("pen"), tone));
}

bool DrawWindow::filterToolBar(const QMouseEvent& event)
{
    const QPoint cursor = event.globalPosition().toPoint();
    if (event.type() == QEvent::MouseButtonPress && event.button() == Qt::LeftButton) {
        m_toolBarDragging = true;
        m_pressPoint = cursor - frameGeometry().topLeft();
    } else if (event.type() == QEvent::MouseMove && m_toolBarDragging) {
        if (m_insideRecorded)
            m_unseenMove.moveTo(cursor);
        else
            dragByToolBar(cursor);
        return true;
    } else if (event.type() == QEvent::MouseButtonRelease && event.button() == Qt::LeftButton && m_toolBarDragging) {
        m_toolBarDragging = false;
        m_unseenMove.end();
    }
    return false;
}

void DrawWindow::endToolBarDrag()
{
    reportGeometry(false);
}

void DrawWindow::dragByToolBar(const QPoint& cursor)
{
    if (const QScreen* const screen = screenOfDrag()) {
        const QRect available = screen->availableGeometry();
        const QPoint place = cursor - m_pressPoint;
        const int rightmost = available.left() + available.width() - width();
        move(std::max(available.left(), std::min(rightmost, place.x())), place.y());
        placeToolBar();
    }
    reportGeometry(true);
}

void DrawWindow::reportGeometry(bool isMoving)
{
    const QRect inside = geometry().marginsRemoved(borders());
    emit windowGeometryChanged(isMoving, inside.topLeft(), inside.bottomRight());
}

QMargins DrawWindow::borders() const
{
    return {m_borderWidth, m_borderWidth, m_borderWidth, m_borderWidth};
}

const QScreen* DrawWindow::screenOfDrag() const
{
    const QScreen* const own = screen();
    return own != nullptr ? own : QGuiApplication::primaryScreen();
}

HitArea DrawWindow::hitAreaAt(const QPoint& place) const
{
    if (m_drawing)
        return HitArea::Drawing;
    return m_insideRecorded ? HitArea::None : framegeometry::hitAreaAt(place, size());
}

void DrawWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton) {
        close();
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    m_pressPoint = event->globalPosition().toPoint();
    m_dragMode = hitAreaAt(event->position().toPoint());
    m_startGeometry = geometry();
    if (m_dragMode == HitArea::Drawing) {
        m_drawingInProgress = true;
        dropCurrentStroke();
        m_currentStroke = {event->position()};
        m_isCompositing = platform::isCompositing();
        updateOpening();
    }
    update();
}

void DrawWindow::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragMode == HitArea::None || !event->buttons().testFlag(Qt::LeftButton)) {
        setCursor(framegeometry::cursorOf(hitAreaAt(event->position().toPoint())));
        return;
    }
    if (const QScreen* const screen = screenOfDrag())
        drag(*event, screen->availableGeometry());
}

void DrawWindow::drag(const QMouseEvent& event, const QRect& available)
{
    if (m_dragMode == HitArea::Drawing) {
        draw(event.position());
        return;
    }
    const QPoint delta = event.globalPosition().toPoint() - m_pressPoint;
    if (m_dragMode == HitArea::Move)
        move(framegeometry::moved(m_startGeometry, delta, available, m_toolBar->height()));
    else
        setGeometry(framegeometry::resized(m_dragMode, m_startGeometry, delta, minimumSize(), m_lockRatio));
    placeToolBar();
}

/// There is one at a press where the last was broken off: the window was hidden, or the pen put down, under way.
void DrawWindow::dropCurrentStroke()
{
    if (std::exchange(m_currentStroke, {}).isEmpty())
        return;
    m_strokesRegion = QRegion();
    for (const QPolygonF& stroke : m_strokes) {
        for (qsizetype end = 1; end < stroke.size(); ++end)
            m_strokesRegion += regionOf({stroke.at(end - 1), stroke.at(end)});
    }
}

void DrawWindow::draw(const QPointF& place)
{
    // Nothing is drawn any more once the stroke was cleared under way.
    if (!m_drawing || !m_drawingInProgress)
        return;
    const QLineF added(m_currentStroke.constLast(), place);
    m_currentStroke.append(place);
    m_strokesRegion += regionOf(added);
    updateOpening();
    // The cap of what was the end gives way to a corner.
    update(boundsOf(added));
}

void DrawWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (m_drawingInProgress && m_drawing) {
        draw(event->position());
        m_strokes.append(std::exchange(m_currentStroke, {}));
        m_drawingInProgress = false;
    }
    if (framegeometry::isResize(m_dragMode) || m_dragMode == HitArea::Move)
        reportGeometry(false);
    m_dragMode = HitArea::None;
    setCursor(framegeometry::cursorOf(hitAreaAt(event->position().toPoint())));
    update();
}

/// What there is to be seen, as far as whole logical pixels can say it.
QRegion DrawWindow::paintedRegion() const
{
    const QRegion border = m_concealed ? maskOfNothing() : QRegion(rect()) - rect().marginsRemoved(borders());
    return m_drawing ? border + m_strokesRegion : border;
}

void DrawWindow::updateOpening()
{
    using Pointer = platform::WindowOpening::Pointer;
    m_opening.update(m_drawing ? Pointer::IsTaken : Pointer::PassesThrough, m_isCompositing,
                     [this] { return paintedRegion(); });
}

void DrawWindow::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    if (m_isCompositing)
        paintMixed(painter);
    else
        paintCut(painter);
}

void DrawWindow::paintMixed(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_drawing) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), kUnseen);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    if (!m_concealed)
        paintBorder(painter);
    if (m_drawing)
        paintStrokes(painter);
}

/// The window has the shape of border and strokes, and whatever of it is not fully covered would be black: more than
/// there is to see is painted everywhere.
void DrawWindow::paintCut(QPainter& painter) const
{
    painter.fillRect(rect().adjusted(-1, -1, 1, 1), kBorder);
    if (!m_drawing)
        return;
    const QRect inside = rect().marginsRemoved(borders()).adjusted(1, 1, -1, -1);
    painter.fillRect(inside, Qt::red);
    for (const QRect& part : m_strokesRegion - inside)
        painter.fillRect(part, Qt::red);
}

void DrawWindow::paintBorder(QPainter& painter) const
{
    const int half = m_borderWidth / 2;
    painter.setPen(QPen(kBorder, m_borderWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(rect().adjusted(half, half, -half, -half));
}

void DrawWindow::paintStrokes(QPainter& painter) const
{
    painter.setPen(strokePen());
    for (const QPolygonF& stroke : m_strokes)
        painter.drawPolyline(stroke);
    if (!m_currentStroke.isEmpty())
        painter.drawPolyline(m_currentStroke);
}
