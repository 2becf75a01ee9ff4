// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>
#include <QObject>
#include <QString>

#include <memory>

namespace platform {

/// One key, with modifiers, wherever the keyboard focus is, and while a menu or another program holds the keyboard: by
/// QHotkey where the build found it, else by passive grabs on X11 and RegisterHotKey on Windows; on X11 by raw events
/// as well. Caps, Num and Scroll Lock make no difference; a key that is held down counts once. User-interface thread.
class GlobalHotkey : public QObject
{
    Q_OBJECT

public:
    /// What is done about a key that another program holds.
    enum class WhenHeld
    {
        Fail,
        /// It is heard beside the other program, where the system can: on X11.
        Listen
    };

    explicit GlobalHotkey(QObject* parent, WhenHeld whenHeld = WhenHeld::Fail);
    ~GlobalHotkey() override;

    /// Takes the first key of the sequence, releasing the present one. An empty sequence only releases, and succeeds.
    bool registerKey(const QKeySequence& sequence);

    /// Follows "cannot be used: "; empty after success.
    QString failureReason() const { return m_failureReason; }

    WhenHeld whenHeld() const { return m_whenHeld; }

    class Backend;

signals:
    void activated();

    /// A taken key is lost with a new keyboard layout (reason says why), or works again.
    void availabilityChanged(bool available, const QString& reason);

private:
    WhenHeld m_whenHeld;
    std::unique_ptr<Backend> m_backend;
    QString m_failureReason;
};

} // namespace platform
