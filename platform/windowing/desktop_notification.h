// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class QString;

namespace platform {

/// Messages of the desktop: on Linux by "org.freedesktop.Notifications" on the session's message bus or, without that,
/// the desktop portal; on Windows from an icon in the notification area, which is there as long as the message.
/// User-interface thread; nothing waits.
class DesktopNotifier : public QObject
{
    Q_OBJECT

public:
    explicit DesktopNotifier(QObject* parent);
    ~DesktopNotifier() override;

    /// Plain text. A desktop without messages is reported as a failure, and shows nothing.
    void show(const QString& title, const QString& text);

    /// Takes away what is shown, as far as the desktop still knows it.
    void closeAll();

signals:
    /// The user has clicked one. Not with the portal.
    void activated();

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
