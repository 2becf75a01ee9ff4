// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// A path for the log: below the user's home with "~" in its place, which says who the user is no more than it has to.
QString shownPath(const QString& path);
