#include "platform/shell_path.h"

#include <QString>

QString platform::shellPath(const QString& path)
{
    return path;
}
