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

/// Opens the user's settings store. The one place that does: it knows the container (the registry on Windows, elsewhere
/// "Tolvaran/Kestrano.conf" in the user's configuration folder) and turns the system-wide fallbacks off.
///
/// Any number may be open at once; within the process they see each other's writes at once. Read by key alone, without
/// a default of your own: applyDefaultSettings() has filled in what was missing, and an absent key is false or the
/// empty string. Never fails: a store that cannot be read or written gets one warning in the log per process, and what
/// is written to it lives as long as the process. A store whose file is no settings file is set aside under the file's
/// name with ".unreadable" added, and started anew.
std::unique_ptr<QSettings> openSettings();

/// What keeps a store from being read or written, in plain words for the log; empty when all is well.
QString settingsTrouble(const QSettings& settings);

/// The defaults of all fifteen keys, in ascending order of the keys. The two folders are computed now and not created.
std::map<QString, QVariant> defaultSettings();

/// Writes the default of every key that the store does not hold. A value that is there stays, even when it is not an
/// entry of its table.
void applyDefaultSettings(QSettings& settings);
