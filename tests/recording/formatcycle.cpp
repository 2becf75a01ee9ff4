// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/formatcycle.h"

#include "tests/recording/formatjudge.h"
#include "tests/recording/recordinghelpers.h"

#include <QFileInfo>

bool FormatCycle::chooseFormat()
{
    if (m_count == 0)
        return true;
    if (!goBackFromRecordButton(m_program, kStepsToFormat))
        return false;
    const auto formats = static_cast<int>(formatjudge::kFormats.size());
    ProgramUnderTest::pressKey(m_count % formats == 0 ? QStringLiteral("Home") : QStringLiteral("Down"));
    return true;
}

QString FormatCycle::record(int milliseconds)
{
    if (!chooseFormat())
        return QStringLiteral("there is no window");
    const auto& format = formatjudge::kFormats.at(static_cast<std::size_t>(m_count) % formatjudge::kFormats.size());
    const Take take = ::record(m_program, QLatin1String(format.extension), milliseconds);
    ++m_count;
    if (!take.failure.isEmpty())
        return take.failure;
    return QFileInfo(take.path).size() > 0 ? QString() : QStringLiteral("no recording: ") + take.path;
}
