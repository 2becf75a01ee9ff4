// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <vector>

class QJsonObject;
class QString;

/// How long some work takes, in milliseconds.
double millisecondsOf(const std::function<void()>& work);

/// The middle of several values; 0 of none.
double middleOf(std::vector<double> values);
/// The middle of what several measurements give.
double middleOfRuns(int repeat, const std::function<double()>& measure);

/// Writes the figures of a measurement to a file; false when that fails.
bool writeJson(const QString& path, const QJsonObject& figures);
