// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/fixedtable.h"

#include <QString>

/// Positions in lists and the texts stored for them. A stored value may have been edited: callers catch
/// std::out_of_range.
namespace settingstables {

using PositionToText = FixedTable<int, QString>;
using TextToPosition = FixedTable<QString, int>;

/// Upper case; the position is the RecordingFormat.
extern const PositionToText kRecordingFormats;
extern const TextToPosition kRecordingFormatPositions;

/// Upper case.
extern const PositionToText kScreenshotFormats;
extern const TextToPosition kScreenshotFormatPositions;

/// As stored and as the translations are named. French is "oc_FR".
extern const PositionToText kLanguageCodes;
extern const TextToPosition kLanguagePositions;

/// Names of the languages, in themselves; positions as kLanguageCodes.
extern const PositionToText kLanguageMenuNames;
extern const TextToPosition kLanguageMenuPositions;

} // namespace settingstables
