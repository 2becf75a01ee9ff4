// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The style sheet of the program's menus, with texts of the size that its windows have.
QString menuStyleSheet();
