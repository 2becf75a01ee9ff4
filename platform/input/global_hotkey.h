// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>
#include <QObject>
#include <QString>

#include <memory>

namespace platform {

/// One key, with its modifiers, that works wherever the keyboard focus is. User-interface thread.
///
/// Num Lock, Caps Lock and Scroll Lock make no difference; a key that is held down counts once. Uses QHotkey where the
/// build found it, else passive grabs on X11 and RegisterHotKey on Windows.
class GlobalHotkey : public QObject
{
    Q_OBJECT

public:
    explicit GlobalHotkey(QObject* parent);
    ~GlobalHotkey() override;

    /// Takes the first key of the sequence, releasing the present one. An empty sequence only releases.
    ///
    /// @return whether the key is taken (true for an empty sequence); failureReason() has the words for the log.
    bool registerKey(const QKeySequence& sequence);

    /// In plain words to follow "cannot be used: "; empty after success.
    QString failureReason() const { return m_failureReason; }

    /// How one system, or QHotkey, takes a key. Known to the implementations only.
    class Backend;

signals:
    void activated();

    /// A key that was taken is lost with a new keyboard layout (available is false, reason says why), or works again.
    void availabilityChanged(bool available, const QString& reason);

private:
    std::unique_ptr<Backend> m_backend;
    QString m_failureReason;
};

} // namespace platform
