#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QSettings;

namespace platform {
class GlobalHotkey;
}

/// The program's two system-wide hotkeys, as the settings name them. A key is taken only while somebody listens to what
/// it does: until then it is left to other programs. User-interface thread.
class Hotkeys : public QObject
{
    Q_OBJECT

public:
    /// A key that was asked for and cannot be had.
    struct Failure
    {
        QString key;
        /// For the log, to follow "cannot be used: ".
        QString reason;
    };

    explicit Hotkeys(QObject* parent);
    ~Hotkeys() override;

    /// Takes the stored keys at once and lets go of those that were taken before, also when the two have changed
    /// places. A key that stays the same is not let go of. Each failure is logged.
    ///
    /// @return what could not be taken
    QList<Failure> apply(const QSettings& settings);

    /// The key that starts and stops a recording; empty when there is none, or it cannot be had.
    QString recordingKey() const;

signals:
    void recordingPressed();
    void screenshotPressed();
    /// Another key is in force, or none, with the settings or with the keyboard.
    void recordingKeyChanged();

private:
    /// One of the two.
    struct Hotkey
    {
        platform::GlobalHotkey* key;
        /// As stored; empty when none is wanted.
        QString wanted;
        bool taken = false;
    };

    void want(Hotkey& hotkey, const QString& stored, bool isHeard);
    static QList<Failure> take(Hotkey& hotkey);
    void onAvailabilityChanged(Hotkey& hotkey, bool available, const QString& reason);

    Hotkey m_recording;
    Hotkey m_screenshot;
};
