// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The tests of one executable. Each test source registers one class, and main() runs the one that the first argument
/// names: a process for each class: no test sees what another has left in the process.
namespace testregistry {

/// Makes the application object and runs a test class; the arguments are those of main() without the test's name.
using Run = int (*)(int argc, char* argv[]);

/// Registers a test for as long as the process runs.
class Registration
{
public:
    /// @param sourceFile path of the test's source; the file's name without suffix is the test's name.
    Registration(const char* sourceFile, Run run);
};

} // namespace testregistry

/// Registers the test of this source file.
#define REGISTER_TEST(run) static const testregistry::Registration kRegistration(__FILE__, run)
