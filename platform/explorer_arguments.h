#pragma once

#include <QString>

#include <optional>

namespace platform {

/// What Windows' "explorer" is to be called with to show a file selected in its folder: "/select," and the path, as one
/// text in which the path cannot be taken for anything else. Nothing for a path that no file can have.
///
/// @param path absolute, with either separator.
std::optional<QString> explorerArguments(const QString& path);

} // namespace platform
