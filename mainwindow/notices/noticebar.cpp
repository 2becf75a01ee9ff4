// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/noticebar.h"

#include "mainwindow/notices/noticequeue.h"
#include "widgets/icons.h"
#include "widgets/shownname.h"
#include "widgets/stylesheet.h"

#include <QAccessibleWidget>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>

#include <algorithm>

namespace {

constexpr int kHeightPx = 36;
constexpr int kButtonPx = 28;
constexpr int kIconPx = 16;
constexpr int kSpacingPx = 12;
constexpr int kTextMarginPx = 4;

QAccessibleInterface* makeAlert(const QString& className, QObject* object)
{
    const bool isBar = className == QLatin1String(NoticeBar::staticMetaObject.className());
    return isBar ? new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::AlertMessage) : nullptr;
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
void announce(QWidget& widget, const QString& text)
{
    QAccessibleAnnouncementEvent event(&widget, text);
    QAccessible::updateAccessibility(&event);
}
#else
/// The text is the widget's accessible name.
void announce(QWidget& widget, const QString& /*text*/)
{
    QAccessibleEvent event(&widget, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}
#endif

} // namespace

NoticeBar::NoticeBar(QWidget* parent, const Durations& durations)
    : QFrame(parent)
    , m_queue(new NoticeQueue(durations, this))
    , m_text(new QLabel(this))
    , m_action(new QPushButton(this))
    , m_close(new QPushButton(this))
{
    // Installed once, however often.
    QAccessible::installFactory(&makeAlert);
    setObjectName(QStringLiteral("noticeBar"));
    makeParts();
    retranslate();
    connect(m_queue, &NoticeQueue::currentChanged, this, &NoticeBar::showCurrent);
    connect(m_action, &QPushButton::clicked, this, &NoticeBar::act);
    connect(m_close, &QPushButton::clicked, m_queue, &NoticeQueue::next);
    window()->installEventFilter(this);
    m_action->installEventFilter(this);
    m_close->installEventFilter(this);
    hide();
}

void NoticeBar::makeParts()
{
    m_text->setObjectName(QStringLiteral("noticeText"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setContentsMargins(0, kTextMarginPx, 0, kTextMarginPx);
    m_action->setObjectName(QStringLiteral("noticeAction"));
    m_action->setMinimumHeight(kButtonPx);
    m_action->setCursor(Qt::PointingHandCursor);
    m_close->setObjectName(QStringLiteral("noticeClose"));
    m_close->setFixedSize(kButtonPx, kButtonPx);
    m_close->setIconSize({kIconPx, kIconPx});
    new HoverIcons(m_close, QStringLiteral("close"));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(kSpacingPx, 2, 4, 2);
    layout->setSpacing(kSpacingPx);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_action);
    layout->addWidget(m_close);
    setMinimumHeight(kHeightPx);
    applyStyleSheetIfReadable(*this, QStringLiteral(":/res/style/notice.qss"));
}

void NoticeBar::retranslate()
{
    m_close->setToolTip(tr("Close"));
    m_close->setAccessibleName(tr("Close"));
}

bool NoticeBar::add(const Notice& notice)
{
    return m_queue->add(notice);
}

void NoticeBar::clear()
{
    m_queue->clear();
}

void NoticeBar::dropWhatTheRecordingHad()
{
    m_queue->dropWhatTheRecordingHad();
}

bool NoticeBar::hasNotice() const
{
    return m_queue->current() != nullptr;
}

int NoticeBar::heightForWidth(int widthPx) const
{
    return std::max(kHeightPx, QFrame::heightForWidth(widthPx));
}

void NoticeBar::showCurrent()
{
    const Notice* const notice = m_queue->current();
    if (notice != nullptr) {
        m_text->setText(shownName(notice->text));
        setAccessibleName(m_text->text());
        m_action->setText(notice->actionText);
        m_action->setVisible(!notice->actionText.isEmpty());
    }
    m_isAnnounced = false;
    setVisible(notice != nullptr);
    updateTime();
    emit changed();
}

void NoticeBar::act()
{
    // Gone before its action is carried out, which may post another one or open a dialog.
    const auto action = hasNotice() ? m_queue->current()->action : nullptr;
    m_queue->next();
    if (action)
        action();
}

bool NoticeBar::isSeen() const
{
    return isVisible() && !window()->isMinimized() && !m_isBlocked;
}

void NoticeBar::updateTime()
{
    if (isSeen() && hasNotice() && !m_isAnnounced) {
        m_isAnnounced = true;
        announce(*this, m_text->text());
    }
    m_queue->setTimePasses(isSeen() && !m_isPointed && !m_action->hasFocus() && !m_close->hasFocus());
}

void NoticeBar::setPointed(bool pointed)
{
    m_isPointed = pointed;
    updateTime();
}

bool NoticeBar::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::WindowBlocked || type == QEvent::WindowUnblocked)
        m_isBlocked = type == QEvent::WindowBlocked;
    const bool isState = type == QEvent::WindowStateChange || type == QEvent::WindowBlocked ||
                         type == QEvent::WindowUnblocked || type == QEvent::FocusIn || type == QEvent::FocusOut;
    if (isState)
        updateTime();
    return QFrame::eventFilter(watched, event);
}

void NoticeBar::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QFrame::changeEvent(event);
}

void NoticeBar::enterEvent(QEnterEvent* event)
{
    setPointed(true);
    QFrame::enterEvent(event);
}

void NoticeBar::leaveEvent(QEvent* event)
{
    setPointed(false);
    QFrame::leaveEvent(event);
}

void NoticeBar::showEvent(QShowEvent* event)
{
    QFrame::showEvent(event);
    updateTime();
}

void NoticeBar::hideEvent(QHideEvent* event)
{
    QFrame::hideEvent(event);
    setPointed(false);
}

void NoticeBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        m_queue->next();
    else
        QFrame::keyPressEvent(event);
}

/// Consumed, as the release decides.
void NoticeBar::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

void NoticeBar::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        m_queue->next();
}
