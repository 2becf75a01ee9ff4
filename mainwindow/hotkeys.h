// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QSettings;

namespace platform {
class GlobalHotkey;
}

/// The two system-wide hotkeys. User-interface thread.
class Hotkeys : public QObject
{
    Q_OBJECT

public:
    struct Failure
    {
        QString key;
        QString reason;
    };

    explicit Hotkeys(QObject* parent);

    /// Registers the stored keys; one that stays the same stays registered.
    /// @return what could not be registered, which is logged
    QList<Failure> apply(const QSettings& settings);

    /// Empty when there is none or it is not registered.
    QString recordingKey() const;

signals:
    void recordingPressed();
    void screenshotPressed();
    void recordingKeyChanged();

private:
    struct Hotkey
    {
        platform::GlobalHotkey* key;
        /// Empty when none is wanted.
        QString wanted;
        bool taken = false;
    };

    void want(Hotkey& hotkey, const QString& stored);
    static QList<Failure> take(Hotkey& hotkey);
    void onAvailabilityChanged(Hotkey& hotkey, bool available, const QString& reason);

    Hotkey m_recording;
    Hotkey m_screenshot;
};
