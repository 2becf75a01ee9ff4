#include "widgets/icons.h"

namespace icons {

QString path(const QString& name, Tone tone)
{
    return QStringLiteral(":/res/forms/images/%1%2.svg").arg(name, QLatin1String(tone == Tone::Light ? "-white" : ""));
}

QIcon named(const QString& name, Tone tone)
{
    return QIcon(path(name, tone));
}

} // namespace icons
