// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <map>
#include <memory>

/// Every value is a boolean or a string.
namespace settingskeys {

inline constexpr QLatin1String kLanguage("general/language");
inline constexpr QLatin1String kFirstRun("general/firstRun");
inline constexpr QLatin1String kRecordingHotkey("hotkeys/recording");
inline constexpr QLatin1String kScreenshotHotkey("hotkeys/screenshot");
inline constexpr QLatin1String kScreenSwitch("recording/screenSwitch");
inline constexpr QLatin1String kSpeakerSwitch("recording/speakerSwitch");
inline constexpr QLatin1String kMicSwitch("recording/micSwitch");
/// Never read: the webcam is off after each start.
inline constexpr QLatin1String kWebcamSwitch("recording/webcamSwitch");
inline constexpr QLatin1String kRecordingFormat("recording/format");
inline constexpr QLatin1String kRecordingSaveLocation("recording/saveLocation");
inline constexpr QLatin1String kScreenshotFormat("screenshot/format");
inline constexpr QLatin1String kScreenshotSaveLocation("screenshot/saveLocation");
inline constexpr QLatin1String kMouseSwitch("mouse/switch");
inline constexpr QLatin1String kMouseShowCursor("mouse/showCursor");
inline constexpr QLatin1String kMouseShowHighlight("mouse/showHighlight");

} // namespace settingskeys

/// Opens the settings: the registry on Windows, elsewhere "Tolvaran/Kestrano.conf" in the user's configuration folder,
/// without system-wide fallbacks. All instances of the process see each other's writes at once. An absent key reads as
/// false or empty.
/// Never fails: settings that cannot be read or written give one warning in the log, and changes last until the process
/// ends. A file that is no settings file is kept with ".unreadable" added to its name. Main thread.
std::unique_ptr<QSettings> openSettings();

/// Why the settings cannot be read or written, for the log; or empty.
QString settingsTrouble(const QSettings& settings);

/// The two folders are computed now and not created.
std::map<QString, QVariant> defaultSettings();

/// Writes what is missing; values that are there stay.
void applyDefaultSettings(QSettings& settings);
