// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct StopReason
{
    /// libobs' output code: 0 when asked for, negative for a failure.
    int code = 0;
    /// The output's own English words, often empty; for the log.
    QString text;
};

/// What the program tells apart, for the user.
enum class StopCause
{
    AsAsked,
    CannotOpen,
    CannotWrite,
    DiskFull,
    FolderGone,
    CannotEncode,
    Unsupported,
    Unknown
};

StopCause causeOf(const StopReason& reason);

/// In plain words ("the disk is full"), with the output's own in brackets.
QString describe(const StopReason& reason);
