// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtContainerFwd>

class QString;
class QWidget;

/// Sets a style-sheet resource (":/res/style/....qss"). Sends "Loaded stylesheet from:" to the debug output, or logs
/// two warnings.
bool applyStyleSheet(QWidget& widget, const QString& path);

/// name replaces "stylesheet" in the log.
bool applyStyleSheet(const QList<QWidget*>& widgets, const QString& path, const QString& name);

/// After a change of properties that the style sheet selects by.
void restyle(QWidget& widget);

/// Without logging.
void applyStyleSheetIfReadable(QWidget& widget, const QString& path);
