#pragma once

#include <QKeySequence>
#include <QObject>
#include <QString>

#include <memory>

namespace platform {

/// One key, with its modifiers, that works wherever the keyboard focus is. User-interface thread.
///
/// Num Lock, Caps Lock and Scroll Lock make no difference. A key that is held down counts once. The object keeps its
/// key until it is destroyed or takes another one.
///
/// Uses QHotkey where the build found it, else the system's own means: passive grabs on X11, RegisterHotKey on Windows.
class GlobalHotkey : public QObject
{
    Q_OBJECT

public:
    explicit GlobalHotkey(QObject* parent);
    ~GlobalHotkey() override;

    /// Takes the first key of the sequence, letting go of the present one. An empty sequence only lets go.
    ///
    /// @return whether the key is taken (true for an empty sequence). False when another program holds it, or the
    ///         keyboard or the system does not know it; failureReason() then has the words for the log.
    bool registerKey(const QKeySequence& sequence);

    /// Why the last registerKey() failed, in plain words to follow "cannot be used: "; empty when it did not.
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
