// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/fixedtable.h"

#include <QString>

/// Positions in the user interface's lists and the texts that the settings store holds for them.
///
/// A look-up throws std::out_of_range for what is not in the table: who looks up a stored value, which the user may
/// have edited, catches it.
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
