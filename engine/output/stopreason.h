// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Why a recording ended.
struct StopReason
{
    /// libobs' output code: 0 for an end that was asked for, negative for a failure.
    int code = 0;
    /// The output's own words, often empty and always English; meant for the log.
    QString text;
};

/// In plain words, for example "the disk is full", with the output's own in brackets where there are any.
QString describe(const StopReason& reason);
