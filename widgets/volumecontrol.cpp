// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/volumecontrol.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QImage>
#include <QMutexLocker>
#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// The frame's share of the width, on both sides together.
constexpr int kFrameWidthPx = 4;
/// Up to this width there is nothing but the frame.
constexpr int kNarrowestRowPx = 10;
constexpr int kGapPx = 3;
/// A segment and its gap, at the narrowest.
constexpr int kSegmentStepPx = 6;
constexpr double kSilentDb = -60.0;
constexpr double kQuietDb = -40.0;
constexpr float kFrameRadius = 4.0F;
constexpr float kSegmentRadius = 1.0F;

/// Truncates towards zero; what does not fit is the nearest value that does.
int saturated(float value)
{
    if (value >= 2147483648.0F)
        return std::numeric_limits<int>::max();
    if (value < -2147483648.0F)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

/// A value that a user reads, between two others.
class AccessibleMeter : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit AccessibleMeter(VolumeControl& meter) : QAccessibleWidget(&meter, QAccessible::ProgressBar), m_meter(meter)
    {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        return state;
    }

    QVariant currentValue() const override { return m_meter.level(); }
    void setCurrentValue(const QVariant& /*value*/) override {}
    QVariant maximumValue() const override { return 0.0; }
    QVariant minimumValue() const override { return m_meter.minimumLevel(); }
    QVariant minimumStepSize() const override { return 1.0; }

private:
    const VolumeControl& m_meter;
};

QAccessibleInterface* makeMeter(const QString& className, QObject* object)
{
    const bool isMeter = className == QLatin1String(VolumeControl::staticMetaObject.className());
    return isMeter ? new AccessibleMeter(*static_cast<VolumeControl*>(object)) : nullptr;
}

bool isOpaque(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 255)
                return false;
        }
    }
    return true;
}

/// The colour of a lit segment at a position in the row, from 0 to 1.
QColor litColor(float position)
{
    if (position < 0.5F)
        return QColor(89, 103, 242).lighter(static_cast<int>(position * 40.0F + 100.0F));
    if (position < 0.75F)
        return QColor(76, 175, 80).lighter(static_cast<int>((position - 0.5F) * 60.0F + 100.0F));
    return QColor(255, 152, 0).darker(static_cast<int>((position - 0.75F) * 100.0F + 100.0F));
}

} // namespace

VolumeControl::VolumeControl(QWidget* parent) : QWidget(parent)
{
    // Installed once, however often.
    QAccessible::installFactory(&makeMeter);
    m_repaintTimer.setInterval(kRepaintIntervalMs);
    m_repaintTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_repaintTimer, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    m_repaintTimer.start();
    followParent();
}

void VolumeControl::followParent()
{
    if (parentWidget() != nullptr)
        parentWidget()->installEventFilter(this);
}

/// A parent that paints has perhaps something else below the meter, and Qt does not have it painted there.
bool VolumeControl::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && event->type() == QEvent::Paint && testAttribute(Qt::WA_OpaquePaintEvent))
        m_emptyRow = QPixmap();
    return QWidget::eventFilter(watched, event);
}

void VolumeControl::setLevels(const float* magnitudeDb, const float* peakDb, const float* inputPeakDb)
{
    const QMutexLocker locker(&m_levelLock);
    std::copy_n(magnitudeDb, kMaxChannels, m_magnitude.begin());
    std::copy_n(peakDb, kMaxChannels, m_peak.begin());
    std::copy_n(inputPeakDb, kMaxChannels, m_inputPeak.begin());
}

void VolumeControl::resetLevels()
{
    const QMutexLocker locker(&m_levelLock);
    m_magnitude.fill(0.0F);
    m_peak.fill(0.0F);
    m_inputPeak.fill(0.0F);
    update();
}

void VolumeControl::setActive(bool active)
{
    m_active = active;
    update();
}

void VolumeControl::setFillFromMinimum(bool fill)
{
    m_fillFromMinimum = fill;
}

void VolumeControl::setChannelCount(int count)
{
    m_channelCount = std::min(count, kMaxChannels);
}

void VolumeControl::setAudioChannelCount(int count)
{
    m_audioChannelCount = count;
}

bool VolumeControl::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::ParentAboutToChange:
        if (parentWidget() != nullptr)
            parentWidget()->removeEventFilter(this);
        break;
    case QEvent::ParentChange:
        followParent();
        m_emptyRow = QPixmap();
        break;
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::StyleChange:
    case QEvent::PaletteChange:
    case QEvent::EnabledChange:
        m_emptyRow = QPixmap();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void VolumeControl::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    // What is painted on may not be the widget's own screen.
    const qreal ratio = painter.paintEngine()->paintDevice()->devicePixelRatioF();
    if (m_emptyRow.isNull() || m_emptyRow.devicePixelRatio() != ratio)
        makeEmptyRow(ratio);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawPixmap(0, 0, m_emptyRow);
    if (width() <= kNarrowestRowPx)
        return;
    const int count = segmentCount();
    const int lit = litSegmentCount(count);
    for (int segment = 0; segment < lit; ++segment)
        paintSegment(painter, segment, litColor(static_cast<float>(segment) / static_cast<float>(count)));
}

/// What the parent itself paints below the meter.
QImage VolumeControl::background(qreal devicePixelRatio) const
{
    QImage image(size() * devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    if (parentWidget() != nullptr)
        parentWidget()->render(&painter, QPoint(), QRegion(geometry()), QWidget::RenderFlags());
    return image;
}

/// A meter that covers all of its rectangle is repainted without what lies below, which costs many times as much.
void VolumeControl::makeEmptyRow(qreal devicePixelRatio)
{
    QImage row = background(devicePixelRatio);
    // Between whole pixels the edges are blended with what was there.
    const bool covers = isOpaque(row) && devicePixelRatio == std::floor(devicePixelRatio);
    setAttribute(Qt::WA_OpaquePaintEvent, covers);
    if (!covers)
        row.fill(Qt::transparent);
    QPainter painter(&row);
    painter.setRenderHint(QPainter::Antialiasing);
    paintFrame(painter);
    if (width() > kNarrowestRowPx) {
        for (int segment = 0; segment < segmentCount(); ++segment)
            paintSegment(painter, segment, QColor(57, 57, 61));
    }
    painter.end();
    m_emptyRow = QPixmap::fromImage(row);
}

void VolumeControl::paintFrame(QPainter& painter) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(40, 40, 46));
    painter.drawRoundedRect(rect(), kFrameRadius, kFrameRadius);
    painter.setPen(QPen(QColor(30, 30, 30), 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), kFrameRadius, kFrameRadius);
}

int VolumeControl::segmentCount() const
{
    return (width() + kGapPx) / kSegmentStepPx;
}

void VolumeControl::paintSegment(QPainter& painter, int index, const QColor& color) const
{
    const int count = segmentCount();
    const float segmentWidth = static_cast<float>(width() - (count - 1) * kGapPx) / static_cast<float>(count);
    const double left = static_cast<double>(static_cast<float>(index) * (segmentWidth + kGapPx));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(left, 2.0, segmentWidth, height() - 3), kSegmentRadius, kSegmentRadius);
}

/// The length of the lit bar, in logical pixels, within the frame.
int VolumeControl::barLengthPx(double magnitudeDb) const
{
    const int innerWidth = width() - kFrameWidthPx;
    const qint64 raw = saturated(static_cast<float>(innerWidth / m_minimumLevelDb * magnitudeDb));
    return static_cast<int>(std::clamp<qint64>(m_fillFromMinimum ? innerWidth - raw : raw, 0, innerWidth));
}

bool VolumeControl::isEmpty() const
{
    const bool isReset = m_magnitude[0] == 0.0F && m_peak[0] == 0.0F && m_inputPeak[0] == 0.0F;
    return !m_active || isReset || m_magnitude[0] <= kSilentDb;
}

double VolumeControl::level() const
{
    return isEmpty() ? m_minimumLevelDb : std::min<double>(m_magnitude[0], 0.0);
}

int VolumeControl::litSegmentCount(int segmentCount) const
{
    const double magnitudeDb = m_magnitude[0];
    if (isEmpty())
        return 0;
    const int candidate = std::min(barLengthPx(magnitudeDb) / kSegmentStepPx, segmentCount);
    if (magnitudeDb > kQuietDb)
        return candidate;
    // Between silent and quiet the row fades in instead of jumping.
    const double share = (magnitudeDb - kSilentDb) / (kQuietDb - kSilentDb);
    return std::max(1, static_cast<int>(static_cast<float>(candidate * share)));
}
