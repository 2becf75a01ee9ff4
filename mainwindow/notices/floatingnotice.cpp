// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/floatingnotice.h"

#include "mainwindow/notices/noticebar.h"
#include "platform/windowing/frame_exclusion.h"
#include "platform/windowing/overlay_window.h"
#include "widgets/tooltip.h"
#include "widgets/windowmask.h"

#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

namespace {

constexpr int kWidthPx = 440;
constexpr auto kWindowFlags =
    Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus;

} // namespace

FloatingNotice::FloatingNotice(const Durations& durations)
    : QWidget(nullptr, kWindowFlags), m_line(new NoticeBar(this, durations))
{
    setWindowTitle(QStringLiteral("Recording Notice"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setFixedWidth(kWidthPx);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_line);
    platform::prepareAsOverlay(*this);
    platform::setExcludedFromFrames(*this, true);
    connect(m_line, &NoticeBar::changed, this, &FloatingNotice::place);
}

void FloatingNotice::add(const Notice& notice)
{
    m_line->add({notice.text});
}

void FloatingNotice::clear()
{
    m_line->clear();
}

void FloatingNotice::placeBeside(const QRect& bar, const QRect& recorded)
{
    m_bar = bar;
    m_recorded = recorded;
    place();
}

void FloatingNotice::setConcealed(bool concealed)
{
    // A hidden window's time would begin again.
    if (concealed)
        setMask(maskOfNothing());
    else
        clearMask();
}

void FloatingNotice::place()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!m_line->hasNotice() || m_bar.isEmpty() || screen == nullptr) {
        hide();
        return;
    }
    fit();
    const int left = m_bar.x() + (m_bar.width() - width()) / 2;
    const auto position = bartip::positionFor(size(), m_bar, left, screen->geometry(), m_recorded);
    if (position)
        move(*position);
    setVisible(position.has_value());
}

void FloatingNotice::fit()
{
    m_line->ensurePolished();
    setFixedHeight(m_line->heightForWidth(width()));
}

/// Only now do all parts have the font of the style sheet.
void FloatingNotice::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    fit();
}
