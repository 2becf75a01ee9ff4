#pragma once

#include "app/fixedtable.h"

#include <QString>

/// The fixed tables between positions in the user interface's lists and the texts in the settings store. The store
/// holds the text, never the position.
///
/// Every lookup (FixedTable::at) of a position or text that is not in its table throws std::out_of_range; who looks up
/// a stored value, which the user may have edited, catches it.
namespace settingstables {

using PositionToText = FixedTable<int, QString>;
using TextToPosition = FixedTable<QString, int>;

/// Recording formats as stored, upper case; the position is the RecordingFormat.
const PositionToText& recordingFormats();
const TextToPosition& recordingFormatPositions();

/// Screenshot formats as stored, upper case.
const PositionToText& screenshotFormats();
const TextToPosition& screenshotFormatPositions();

/// Language codes as stored, and as the translation resources are named. French goes by "oc_FR".
const PositionToText& languageCodes();
const TextToPosition& languagePositions();

/// The languages' names in themselves, as the language menu shows them; same positions as languageCodes().
const PositionToText& languageMenuNames();
const TextToPosition& languageMenuPositions();

} // namespace settingstables
