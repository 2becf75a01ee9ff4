// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system_failure.h"
#include "platform/windowing/desktop_notification.h"

#include <QApplication>
#include <QIcon>
#include <QSystemTrayIcon>
#include <QTimer>

namespace platform {

namespace {

/// Windows shows such a message for 5 s and more.
constexpr int kShownMs = 10'000;

} // namespace

class DesktopNotifier::Private : public QObject
{
public:
    explicit Private(DesktopNotifier& notifier)
    {
        m_timer.setSingleShot(true);
        m_timer.setInterval(kShownMs);
        connect(&m_timer, &QTimer::timeout, &m_icon, &QSystemTrayIcon::hide);
        connect(&m_icon, &QSystemTrayIcon::messageClicked, &notifier, &DesktopNotifier::activated);
        connect(&m_icon, &QSystemTrayIcon::activated, &notifier, [&notifier](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                emit notifier.activated();
        });
        connect(&notifier, &DesktopNotifier::activated, &m_icon, &QSystemTrayIcon::hide);
    }

    void show(const QString& title, const QString& text)
    {
        if (!QSystemTrayIcon::isSystemTrayAvailable() || !QSystemTrayIcon::supportsMessages()) {
            reportFailure(QStringLiteral("No message of the desktop: there is no notification area"));
            return;
        }
        m_icon.setIcon(QApplication::windowIcon());
        m_icon.show();
        m_icon.showMessage(title, text, QSystemTrayIcon::Information, kShownMs);
        m_timer.start();
    }

    void closeAll()
    {
        m_timer.stop();
        m_icon.hide();
    }

private:
    QSystemTrayIcon m_icon;
    QTimer m_timer;
};

DesktopNotifier::DesktopNotifier(QObject* parent) : QObject(parent), m_private(std::make_unique<Private>(*this)) {}

DesktopNotifier::~DesktopNotifier() = default;

void DesktopNotifier::show(const QString& title, const QString& text)
{
    m_private->show(title, text);
}

void DesktopNotifier::closeAll()
{
    m_private->closeAll();
}

} // namespace platform
