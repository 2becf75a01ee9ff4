// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// Notes the program's calls of libobs in their order. The functions are defined once more in the test program, which
/// comes before the library when names are looked up; each notes its name with what matters of its arguments and goes
/// on to the real one.
namespace obsspy {

/// The calls since the last clear(), for example "obs_reset_video 640x480".
QStringList calls();
void clear();

/// Lets the function of this name fail until restored, without calling the real one; called again, further ones
/// as well. Only those that return a result which says so.
void failAt(const QString& function);
void failNowhere();

/// How many outputs were released while libobs still ended them. It may then wait for ever for an end that has passed.
int outputsReleasedWhileActive();

/// From now on, the first is called before and the second after the program connects to an output's "stop" for the
/// second time; neither where it is empty.
void aroundSecondStopConnection(std::function<void()> before, std::function<void()> after);

} // namespace obsspy
