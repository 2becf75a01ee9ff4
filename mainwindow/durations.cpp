// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/durations.h"

#include "app/sclogger.h"

#include <QString>

Durations durationsFromEnvironment()
{
    constexpr const char* kCountdownStep = "KESTRANO_COUNTDOWN_STEP_MS";
    constexpr int kLongestStepMs = 60'000;
    Durations durations;
    if (!qEnvironmentVariableIsSet(kCountdownStep))
        return durations;
    bool isNumber = false;
    const QString text = qEnvironmentVariable(kCountdownStep);
    const int stepMs = text.toInt(&isNumber);
    if (isNumber && stepMs > 0 && stepMs <= kLongestStepMs) {
        durations.countdownStepMs = stepMs;
        SCLogger::info(
            QStringLiteral("%1: a step of the countdown takes %2 ms").arg(QLatin1String(kCountdownStep), text));
    } else {
        SCLogger::warning(QStringLiteral("%1 is ignored: %2 is not a number of milliseconds from 1 to %3")
                              .arg(QLatin1String(kCountdownStep), text)
                              .arg(kLongestStepMs));
    }
    return durations;
}
