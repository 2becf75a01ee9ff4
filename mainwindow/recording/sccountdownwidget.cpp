// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/sccountdownwidget.h"

#include "app/settings.h"
#include "platform/windowing/frame_exclusion.h"
#include "platform/windowing/overlay_window.h"

#include <QEventLoop>
#include <QLabel>
#include <QSettings>
#include <QVBoxLayout>

namespace {

constexpr QSize kWidgetSize(200, 240);
constexpr QSize kCircleSize(200, 200);
constexpr QSize kHintSize(180, 30);
constexpr int kSpacing = 10;

const auto kNumberStyle =
    QStringLiteral("QLabel {color: #FFFFFF;background-color: #28282E;border: 2px solid #007ACC;border-radius: 100px;"
                   "width: 200px;height: 200px;}");
const auto kHintStyle = QStringLiteral("QWidget {background-color: #28282E;border-radius: 4px;}");
const auto kHintTextStyle = QStringLiteral("QLabel {color: #FFFFFF;background-color: transparent;padding: 4px 12px;}");

} // namespace

SCCountdownWidget::SCCountdownWidget(QWidget* parent, int stepMs)
    : QWidget(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::SubWindow)
    , m_timer(new QTimer(this))
    , m_settings(openSettings())
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFixedSize(kWidgetSize);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kSpacing);
    layout->addWidget(buildCircle(), 0, Qt::AlignCenter);
    const QString hotkey = m_settings->value(settingskeys::kRecordingHotkey).toString();
    if (hotkey != QLatin1String("None"))
        layout->addWidget(buildHint(hotkey), 0, Qt::AlignCenter);
    m_timer->setInterval(stepMs);
    connect(m_timer, &QTimer::timeout, this, &SCCountdownWidget::updateCountdown);
}

SCCountdownWidget::~SCCountdownWidget() = default;

QWidget* SCCountdownWidget::buildCircle()
{
    auto* const circle = new QWidget(this);
    circle->setFixedSize(kCircleSize);
    m_numberLabel = new QLabel(circle);
    m_numberLabel->setObjectName(QStringLiteral("numberLabel"));
    m_numberLabel->setFixedSize(kCircleSize);
    m_numberLabel->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    m_numberLabel->setFont(QFont(QStringLiteral("Segoe UI"), 60, QFont::Bold));
    m_numberLabel->setStyleSheet(kNumberStyle);
    return circle;
}

QWidget* SCCountdownWidget::buildHint(const QString& hotkey)
{
    auto* const hint = new QWidget(this);
    hint->setFixedSize(kHintSize);
    hint->setAttribute(Qt::WA_StyledBackground);
    hint->setStyleSheet(kHintStyle);
    m_hintLabel = new QLabel(QStringLiteral("%1: %2").arg(tr("Start/Stop"), hotkey), hint);
    m_hintLabel->setObjectName(QStringLiteral("hintLabel"));
    m_hintLabel->setFixedSize(kHintSize);
    m_hintLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_hintLabel->setFont(QFont(QStringLiteral("Segoe UI"), 10));
    m_hintLabel->setStyleSheet(kHintTextStyle);
    return hint;
}

void SCCountdownWidget::start(int count)
{
    if (count <= 0) {
        emit countdownFinished();
        return;
    }
    m_count = count;
    updateCountdown();
    platform::prepareAsOverlay(*this);
    platform::setExcludedFromFrames(*this, true);
    show();
    m_timer->start();
}

void SCCountdownWidget::exec()
{
    if (!m_timer->isActive())
        return;
    m_waiting = new QEventLoop(this);
    m_waiting->exec();
    delete m_waiting;
    m_waiting = nullptr;
}

void SCCountdownWidget::cancel()
{
    if (!m_timer->isActive())
        return;
    m_timer->stop();
    if (m_waiting != nullptr)
        m_waiting->quit();
}

bool SCCountdownWidget::isCounting() const
{
    return m_timer->isActive();
}

void SCCountdownWidget::updateCountdown()
{
    m_numberLabel->setNum(m_count);
    --m_count;
    if (m_count < 0)
        finish();
}

void SCCountdownWidget::finish()
{
    m_timer->stop();
    hide();
    emit countdownFinished();
    if (m_waiting != nullptr)
        m_waiting->quit();
}

void SCCountdownWidget::closeEvent(QCloseEvent* event)
{
    // Not refused: that would keep the whole program from quitting.
    QWidget::closeEvent(event);
    emit closed();
}

void SCCountdownWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (platform::isCompositing())
        return;
    QRegion outline;
    for (const QWidget* part : {m_numberLabel->parentWidget(), m_hintLabel ? m_hintLabel->parentWidget() : nullptr}) {
        if (part != nullptr)
            outline +=
                QRegion(part->geometry(), part->width() == part->height() ? QRegion::Ellipse : QRegion::Rectangle);
    }
    setMask(outline);
}
