// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/appidentity.h"
#include "tests/support/filelibrary.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"

#include <QApplication>
#include <QTest>

/// What the tests of the program's windows begin with.
namespace windowtest {

/// Every setting at its default, but the first start is over and no hotkey is taken.
void resetSettings();

/// What main() does for such a test: a profile and a list of files of its own, file dialogs of Qt instead of
/// the system's, and a program that goes on when its last window is closed.
template <typename Test>
int run(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    const LibraryRefuge refuge;
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace windowtest
