// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <map>
#include <memory>

/// The keys of the settings store. Every value is a boolean or a string.
namespace settingskeys {

inline constexpr QLatin1String kLanguage("general/language");
inline constexpr QLatin1String kFirstRun("general/firstRun");
inline constexpr QLatin1String kRecordingHotkey("hotkeys/recording");
inline constexpr QLatin1String kScreenshotHotkey("hotkeys/screenshot");
inline constexpr QLatin1String kScreenSwitch("recording/screenSwitch");
inline constexpr QLatin1String kSpeakerSwitch("recording/speakerSwitch");
inline constexpr QLatin1String kMicSwitch("recording/micSwitch");
/// Seeded and never read: the webcam is off after each start, whatever was chosen before.
inline constexpr QLatin1String kWebcamSwitch("recording/webcamSwitch");
inline constexpr QLatin1String kRecordingFormat("recording/format");
inline constexpr QLatin1String kRecordingSaveLocation("recording/saveLocation");
inline constexpr QLatin1String kScreenshotFormat("screenshot/format");
inline constexpr QLatin1String kScreenshotSaveLocation("screenshot/saveLocation");
inline constexpr QLatin1String kMouseSwitch("mouse/switch");
inline constexpr QLatin1String kMouseShowCursor("mouse/showCursor");
inline constexpr QLatin1String kMouseShowHighlight("mouse/showHighlight");

} // namespace settingskeys

/// Opens the user's settings store, and is the one place that does: the registry on Windows, elsewhere
/// "Tolvaran/Kestrano.conf" in the user's configuration folder, without system-wide fallbacks.
///
/// Any number may be open; within the process they see each other's writes at once. Read by key alone: an absent key is
/// false or the empty string, and applyDefaultSettings() has filled in what was missing. Never fails: a store that
/// cannot be read or written gets one warning in the log, and its changes last until the process ends. A file that is
/// no settings file is kept under its name with ".unreadable" added.
std::unique_ptr<QSettings> openSettings();

/// What keeps a store from being read or written, in plain words for the log; empty when all is well.
QString settingsTrouble(const QSettings& settings);

/// The defaults of all fifteen keys, in ascending order of the keys. The two folders are computed now and not created.
std::map<QString, QVariant> defaultSettings();

/// Writes the default of every key that the store does not hold. A value that is there stays, even when it is not an
/// entry of its table.
void applyDefaultSettings(QSettings& settings);
