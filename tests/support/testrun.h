// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/appidentity.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"

#include <QApplication>
#include <QTest>

/// What test classes run in: a profile of their own, the program's identity, and an application object.
namespace testrun {

/// For logic: no windows.
template <typename Test>
int core(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    const QCoreApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

/// For windows: the application does not end with its last one.
template <typename Test>
int gui(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace testrun
