// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/messagecapture.h"

#include <QRegularExpression>

/// What the program writes to its log while the object lives, as "[LEVEL] message". One at a time.
class LogLines
{
public:
    QStringList all() const
    {
        return m_messages.texts().filter(QRegularExpression(QStringLiteral("^\\[(DEBUG|INFO|WARNING|ERROR)\\] ")));
    }

    qsizetype count(const QString& line) const { return all().count(line); }

private:
    MessageCapture m_messages;
};
