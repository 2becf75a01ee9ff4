// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/activity.h"

#include <QObject>
#include <QString>

class Notices;
class QSettings;

namespace platform {
class GlobalHotkey;
}

/// The two system-wide hotkeys, and the window key. What one cannot do, and one that cannot be had, is reported in a
/// notice. User-interface thread.
class Hotkeys : public QObject
{
    Q_OBJECT

public:
    /// All else must outlive this object.
    Hotkeys(QObject* parent, const Activity& activity, Notices& notices);

    /// Registers the stored keys; one that stays the same stays registered.
    void apply(const QSettings& settings);

    /// Empty when there is none or it is not registered.
    QString recordingKey() const;

    /// For a notice.
    static QString unusableText(const QString& key);

signals:
    /// May be carried out now.
    void recordingPressed();
    void screenshotPressed();
    void recordingKeyChanged();
    /// The user wants other keys.
    void settingsRequested();

private:
    struct Hotkey
    {
        platform::GlobalHotkey* key;
        /// Empty when none is wanted.
        QString wanted;
        bool taken = false;
        /// Why the wanted key cannot be taken, as the user has been told.
        QString reported = {};
    };

    void onPressed(const Hotkey& hotkey, Activity::Refusal refusal, void (Hotkeys::*pressed)());
    void want(Hotkey& hotkey, const QString& stored);
    void take(Hotkey& hotkey);
    void onAvailabilityChanged(Hotkey& hotkey, bool available, const QString& reason);
    void postUnusable(const Hotkey& hotkey);

    const Activity& m_activity;
    Notices& m_notices;
    Hotkey m_recording;
    Hotkey m_screenshot;
};
