// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/stopreason.h"

#include <obs-defs.h>

namespace {

const char* wordsFor(int code)
{
    switch (code) {
    case OBS_OUTPUT_SUCCESS:
        return "the recording was ended as asked";
    case OBS_OUTPUT_BAD_PATH:
        return "the path of the file is not valid";
    case OBS_OUTPUT_CONNECT_FAILED:
        return "the file could not be opened for writing, or its encoder not be started";
    case OBS_OUTPUT_INVALID_STREAM:
        return "the file was refused as not valid";
    case OBS_OUTPUT_ERROR:
        return "the file could not be written";
    case OBS_OUTPUT_DISCONNECTED:
        return "the folder of the file went away";
    case OBS_OUTPUT_UNSUPPORTED:
        return "the format is not supported on this computer";
    case OBS_OUTPUT_NO_SPACE:
        return "the disk is full";
    case OBS_OUTPUT_ENCODE_ERROR:
        return "the video or the audio could not be encoded";
    default:
        return "the engine gave no known reason";
    }
}

} // namespace

StopCause causeOf(const StopReason& reason)
{
    switch (reason.code) {
    case OBS_OUTPUT_SUCCESS:
        return StopCause::AsAsked;
    case OBS_OUTPUT_BAD_PATH:
    case OBS_OUTPUT_CONNECT_FAILED:
        return StopCause::CannotOpen;
    case OBS_OUTPUT_ERROR:
        return StopCause::CannotWrite;
    case OBS_OUTPUT_DISCONNECTED:
        return StopCause::FolderGone;
    case OBS_OUTPUT_UNSUPPORTED:
        return StopCause::Unsupported;
    case OBS_OUTPUT_NO_SPACE:
        return StopCause::DiskFull;
    case OBS_OUTPUT_ENCODE_ERROR:
        return StopCause::CannotEncode;
    default:
        return StopCause::Unknown;
    }
}

QString describe(const StopReason& reason)
{
    const QString words = QLatin1String(wordsFor(reason.code));
    return reason.text.isEmpty() ? words : QStringLiteral("%1 (%2)").arg(words, reason.text);
}
