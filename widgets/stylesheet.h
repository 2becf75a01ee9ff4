#pragma once

#include <QtContainerFwd>

class QString;
class QWidget;

/// Loads the style-sheet resource at path (":/res/style/....qss") and sets it on widget.
///
/// Sends "Loaded stylesheet from:" and the path to the debug output. When the resource cannot be opened, warns
/// "Failed to load stylesheet from:" with the path and "Error:" with the file's error text, and the widget keeps its
/// look.
///
/// @return whether the style sheet was set.
bool applyStyleSheet(QWidget& widget, const QString& path);

/// The same for several widgets at once, each of which gets the whole style sheet. The messages call it by the given
/// name ("Loaded <name> from:").
bool applyStyleSheet(const QList<QWidget*>& widgets, const QString& path, const QString& name);

/// Applies the style sheet in force to widget once more: it looks at properties only when it is applied.
void restyle(QWidget& widget);

/// Sets the style-sheet resource at path on widget if there is one that can be read, without a word either way.
void applyStyleSheetIfReadable(QWidget& widget, const QString& path);
