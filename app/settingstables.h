// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/fixedtable.h"

#include <QString>

/// Indices in lists and the texts stored for them, which stay for ever. A stored value may have been edited: callers
/// catch std::out_of_range.
namespace settingstables {

using PositionToText = FixedTable<int, QString>;
using TextToPosition = FixedTable<QString, int>;

/// Also shown, untranslated; the index is the RecordingFormat.
extern const PositionToText kRecordingFormats;
extern const TextToPosition kRecordingFormatPositions;

/// Also shown, untranslated.
extern const PositionToText kScreenshotFormats;
extern const TextToPosition kScreenshotFormatPositions;

/// As stored and as the translations are named. French is "oc_FR".
extern const PositionToText kLanguageCodes;
extern const TextToPosition kLanguagePositions;

/// Names of the languages, in themselves; indices as kLanguageCodes.
extern const PositionToText kLanguageMenuNames;
extern const TextToPosition kLanguageMenuPositions;

} // namespace settingstables
