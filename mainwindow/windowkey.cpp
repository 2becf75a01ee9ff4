// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/windowkey.h"

#include "app/sclogger.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/notices/notices.h"
#include "platform/input/global_hotkey.h"
#include "platform/windowing/window_activation.h"
#include "widgets/keyboardwindow.h"

#include <QApplication>
#include <QEvent>
#include <QKeySequence>
#include <QWidget>
#include <QWindow>

#include <utility>

#include <algorithm>

using platform::GlobalHotkey;

namespace {

struct Offer
{
    KeyboardWindow* window;
    std::pair<int, int> place;
};

/// In reading order.
QList<Offer> offers()
{
    QList<Offer> found;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        auto* const window = dynamic_cast<KeyboardWindow*>(widget);
        if (window != nullptr && window->offersKeyboard())
            found.append({window, {widget->y(), widget->x()}});
    }
    std::ranges::sort(found, {}, &Offer::place);
    return found;
}

} // namespace

WindowKey::WindowKey(Hotkeys& hotkeys, Notices& notices)
    : QObject(&hotkeys), m_hotkeys(hotkeys), m_notices(notices), m_key(new GlobalHotkey(this))
{
    connect(&hotkeys, &Hotkeys::recordingKeyChanged, this, &WindowKey::follow);
    connect(m_key, &GlobalHotkey::activated, this, &WindowKey::giveOn);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &WindowKey::noteKeyboard);
    connect(m_key, &GlobalHotkey::availabilityChanged, this, &WindowKey::onAvailabilityChanged);
    qApp->installEventFilter(this);
}

WindowKey::~WindowKey()
{
    qApp->removeEventFilter(this);
}

bool WindowKey::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    const bool isChange = type == QEvent::Show || type == QEvent::Hide || type == KeyboardWindow::offerEvent();
    const auto* const window =
        isChange && watched->isWidgetType() ? dynamic_cast<KeyboardWindow*>(static_cast<QWidget*>(watched)) : nullptr;
    if (window == nullptr)
        return false;
    // Queued: its owner may be about to show another one, and its own state is behind its events.
    if (type == QEvent::Hide && window == m_current) {
        m_current = nullptr;
        QMetaObject::invokeMethod(this, &WindowKey::onHidden, Qt::QueuedConnection);
    }
    QMetaObject::invokeMethod(this, &WindowKey::follow, Qt::QueuedConnection);
    return false;
}

void WindowKey::noteKeyboard()
{
    const QList<Offer> all = offers();
    const auto current = std::ranges::find_if(all, [](const Offer& offer) { return offer.window->hasKeyboard(); });
    m_current = current == all.cend() ? nullptr : current->window;
}

void WindowKey::follow()
{
    const QString key = offers().isEmpty() ? QString() : m_hotkeys.recordingKey();
    if (std::exchange(m_followed, key) == key)
        return;
    m_before = 0;
    m_name = key.isEmpty() ? key : QLatin1String("Ctrl+Shift+") + key;
    if (!m_key->registerKey(QKeySequence(m_name, QKeySequence::PortableText)))
        report(m_key->failureReason());
    else if (!key.isEmpty())
        m_reported.clear();
}

void WindowKey::onAvailabilityChanged(bool available, const QString& reason)
{
    if (!available) {
        report(reason);
        return;
    }
    SCLogger::info(QStringLiteral("The hotkey \"%1\" works again").arg(m_name));
    m_reported.clear();
}

/// The windows can be reached by the pointer all the same: in a notice once, not with every window.
void WindowKey::report(const QString& reason)
{
    SCLogger::warning(QStringLiteral("The hotkey \"%1\" cannot be used: %2").arg(m_name, reason));
    const QString text = Hotkeys::unusableText(m_name);
    if (std::exchange(m_reported, text) != text)
        m_notices.post({.text = text, .isOfTheMoment = true});
}

void WindowKey::giveOn()
{
    const QList<Offer> all = offers();
    // A dialog keeps the keyboard.
    if (all.isEmpty() || QApplication::activeModalWidget() != nullptr)
        return;
    const auto current = std::ranges::find_if(all, [](const Offer& offer) { return offer.window->hasKeyboard(); });
    const bool isFirst = current == all.cend();
    if (isFirst)
        m_before = platform::activeWindow();
    const auto next = isFirst ? all.cbegin() : std::next(current);
    if (next != all.cend())
        next->window->takeKeyboard();
    else if (!giveToFormer() && !giveToMainWindow())
        all.constFirst().window->takeKeyboard();
}

/// The system would give it to nobody.
void WindowKey::onHidden()
{
    if (QApplication::activeWindow() == nullptr && !giveToMainWindow())
        giveToFormer();
}

bool WindowKey::giveToFormer()
{
    const quint64 window = std::exchange(m_before, 0);
    // It would be restored.
    return !platform::isMinimized(window) && platform::activateWindow(window);
}

bool WindowKey::giveToMainWindow() const
{
    auto* const main = qobject_cast<QWidget*>(m_hotkeys.parent());
    if (main == nullptr || !main->isVisible() || main->isMinimized())
        return false;
    main->activateWindow();
    return true;
}
