#include "platform/explorer_arguments.h"

namespace platform {

std::optional<QString> explorerArguments(const QString& path)
{
    // No file's name holds a quote; one that came from somewhere else could end the argument early.
    if (path.isEmpty() || path.contains(u'"'))
        return {};
    QString native = path;
    native.replace(u'/', u'\\');
    // Explorer splits unquoted arguments at commas, hence quotes also where there is no blank, which an argument list
    // would leave out.
    return QStringLiteral("/select, \"%1\"").arg(native);
}

} // namespace platform
