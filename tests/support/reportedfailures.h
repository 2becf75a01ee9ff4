// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/system_failure.h"

#include <QStringList>

/// Keeps what the platform layer reports for as long as the object lives. One at a time, and from one thread.
class ReportedFailures
{
public:
    ReportedFailures()
    {
        clear();
        platform::setFailureSink([](const QString& sentence) { kept().append(sentence); });
    }
    ~ReportedFailures() { platform::setFailureSink(nullptr); }
    ReportedFailures(const ReportedFailures&) = delete;
    ReportedFailures& operator=(const ReportedFailures&) = delete;

    const QStringList& sentences() const { return kept(); }
    void clear() { kept().clear(); }

private:
    /// The layer's way out is a plain function, which knows no object.
    static QStringList& kept()
    {
        static QStringList sentences;
        return sentences;
    }
};
