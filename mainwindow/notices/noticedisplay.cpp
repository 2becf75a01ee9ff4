// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/noticedisplay.h"

#include "mainwindow/activity.h"
#include "mainwindow/notices/noticebar.h"
#include "mainwindow/recording/recordingview.h"
#include "platform/windowing/desktop_notification.h"
#include "widgets/shownname.h"

#include <QEvent>
#include <QGuiApplication>
#include <QTimer>
#include <QWidget>

NoticeDisplay::NoticeDisplay(const Notices& notices, QWidget& pages, RecordingView& view, const Activity& activity,
                             const Durations& durations)
    : QObject(pages.window())
    , m_pages(pages)
    , m_view(view)
    , m_activity(activity)
    , m_bar(new NoticeBar(pages.parentWidget(), durations))
    , m_desktop(new platform::DesktopNotifier(this))
{
    connect(&notices, &Notices::posted, this, &NoticeDisplay::show);
    connect(m_bar, &NoticeBar::changed, this, &NoticeDisplay::place);
    connect(m_desktop, &platform::DesktopNotifier::activated, this, &NoticeDisplay::onMessageClicked);
    connect(&m_view.session(), &RecordingSession::stateChanged, this, &NoticeDisplay::onRecordingState);
    m_pages.installEventFilter(this);
    m_bar->installEventFilter(this);
}

void NoticeDisplay::show(const Notice& notice)
{
    const bool isWorthKeeping = !notice.isOfTheMoment || m_activity.isIdle();
    const bool isNew = isWorthKeeping && m_bar->add(notice);
    // Whoever posts it may be about to restore the window.
    QTimer::singleShot(0, this, [this, notice, isNew] { showElsewhere(notice, isNew); });
}

void NoticeDisplay::showElsewhere(const Notice& notice, bool isNew)
{
    if (!m_activity.isIdle()) {
        m_view.showNotice(notice);
        return;
    }
    const QWidget& window = *m_pages.window();
    const bool isAway = window.isMinimized() || !window.isVisible();
    // Not into a screenshot.
    if (isNew && isAway && m_activity.mayOpenUnasked(true))
        m_desktop->show(QGuiApplication::applicationDisplayName(), shownName(notice.text));
}

void NoticeDisplay::onRecordingState(RecordingState state)
{
    if (state == RecordingState::Ended)
        m_bar->dropWhatTheRecordingHad();
    else if (state != RecordingState::Idle)
        m_desktop->closeAll();
}

/// Perhaps long after it was sent.
void NoticeDisplay::onMessageClicked()
{
    if (m_activity.isIdle() && m_activity.mayOpenUnasked(true))
        m_view.restoreWindow();
}

void NoticeDisplay::place()
{
    const QRect page = m_pages.geometry();
    m_bar->setGeometry(page.x(), page.y(), page.width(), m_bar->heightForWidth(page.width()));
    m_bar->raise();
}

bool NoticeDisplay::eventFilter(QObject* watched, QEvent* event)
{
    const bool isPageMoved = watched == &m_pages && (event->type() == QEvent::Resize || event->type() == QEvent::Move);
    // Only then do its parts have the font of the style sheet.
    const bool isBarShown = watched == m_bar && event->type() == QEvent::Show;
    if (isPageMoved || isBarShown)
        place();
    return QObject::eventFilter(watched, event);
}
