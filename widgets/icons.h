#pragma once

#include <QIcon>

/// The program's own icons: one drawing each, and a light twin for what is pointed at or chosen.
namespace icons {

enum class Tone
{
    Normal,
    Light
};

/// Where the icon called name lies among the resources: ":/res/forms/images/<name>.svg", its light twin
/// ":/res/forms/images/<name>-white.svg".
QString path(const QString& name, Tone tone = Tone::Normal);

/// For any number of pixels. A disabled control shows it fainter.
QIcon named(const QString& name, Tone tone = Tone::Normal);

} // namespace icons
