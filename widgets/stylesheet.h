// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtContainerFwd>

class QString;
class QWidget;

/// Sets the style-sheet resource at path (":/res/style/....qss"). Logs "Loaded stylesheet from:", or two warnings.
bool applyStyleSheet(QWidget& widget, const QString& path);

/// The same for several widgets, each of which gets the whole style sheet. name replaces "stylesheet" in the log.
bool applyStyleSheet(const QList<QWidget*>& widgets, const QString& path, const QString& name);

/// Applies the style sheet again after a change of properties that it selects by.
void restyle(QWidget& widget);

/// As applyStyleSheet(), without logging.
void applyStyleSheetIfReadable(QWidget& widget, const QString& path);
