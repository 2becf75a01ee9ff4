// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system_failure.h"

#include <QDebug>

#include <atomic>

namespace platform {

namespace {

/// Set on the main thread, read on any.
std::atomic<FailureSink> g_sink = nullptr;

} // namespace

void setFailureSink(FailureSink sink)
{
    g_sink = sink;
}

void reportFailure(const QString& sentence)
{
    if (const FailureSink sink = g_sink)
        sink(sentence);
    else
        qWarning().noquote() << sentence;
}

void reportSystemFailure(const char* call, unsigned long error)
{
    reportFailure(QStringLiteral("%1 failed: %2").arg(QLatin1String(call), systemErrorText(error)));
}

QString systemErrorText(unsigned long error)
{
    return QStringLiteral("%1 (error %2)").arg(qt_error_string(static_cast<int>(error)).trimmed()).arg(error);
}

} // namespace platform
