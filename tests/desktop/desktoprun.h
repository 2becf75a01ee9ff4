// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/desktop/desktopuser.h"
#include "tests/support/testrun.h"

#include <cstdlib>

namespace desktopuser {

/// testrun::gui() on a desktop that may have two screens, see splitDisplayWhereAsked().
template <typename Test>
int run(int argc, char* argv[])
{
    // Before Qt looks at the screens.
    return splitDisplayWhereAsked() ? testrun::gui<Test>(argc, argv) : EXIT_FAILURE;
}

} // namespace desktopuser
