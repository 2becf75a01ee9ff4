// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/stopreason.h"

#include <QString>

/// How a recording came to its end.
struct RecordingOutcome
{
    enum class Kind
    {
        /// As the user asked; also where the countdown was cancelled.
        Complete,
        /// The screen could not be captured.
        NotPrepared,
        NotStarted,
        EndedByItself,
        EndMissing,
        /// Ended in order while the disk had some room.
        Shortened,
        FolderGone
    };

    Kind kind = Kind::Complete;
    StopCause cause = StopCause::AsAsked;
    /// Empty where none was chosen.
    QString path;
};
