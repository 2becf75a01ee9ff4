// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/programundertest.h"

#include <QString>

/// Short recordings in one run of the program, each in the format that follows the last one's, which is chosen with
/// the keyboard.
class FormatCycle
{
public:
    /// @param program runs, and has MP4 chosen
    explicit FormatCycle(ProgramUnderTest& program) : m_program(program) {}

    /// Empty on success, else what went wrong.
    QString record(int milliseconds);
    int count() const { return m_count; }

private:
    bool chooseFormat();

    ProgramUnderTest& m_program;
    int m_count = 0;
};
