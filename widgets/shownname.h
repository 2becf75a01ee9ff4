// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// A text with names of files in it as it is shown: the characters that change the direction of what follows, and could
/// make a file's ending look like another one, are replaced by their number, as in "[U+202E]".
QString shownName(const QString& text);
