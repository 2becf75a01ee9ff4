// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingnotices.h"

#include "widgets/desktopservices.h"

#include <QFileInfo>

#include <utility>

namespace {

/// Another folder may do better.
bool isAboutFolder(StopCause cause)
{
    return cause == StopCause::CannotOpen || cause == StopCause::CannotWrite || cause == StopCause::DiskFull ||
           cause == StopCause::FolderGone;
}

/// An output that could not open its file says so after it has started.
bool hasNotStarted(const RecordingOutcome& outcome)
{
    return outcome.kind == RecordingOutcome::Kind::NotStarted ||
           (outcome.kind == RecordingOutcome::Kind::EndedByItself &&
            (outcome.cause == StopCause::CannotOpen || outcome.cause == StopCause::Unsupported));
}

} // namespace

RecordingNotices::RecordingNotices(std::function<void()> chooseFolder) : m_chooseFolder(std::move(chooseFolder)) {}

Notice RecordingNotices::asOutcome(Notice notice)
{
    notice.turn = NoticeTurn::First;
    return notice;
}

QString RecordingNotices::reason(StopCause cause)
{
    switch (cause) {
    case StopCause::CannotOpen:
        return tr("The file could not be opened");
    case StopCause::CannotWrite:
        return tr("The file could not be written");
    case StopCause::DiskFull:
        return tr("The disk is full");
    case StopCause::FolderGone:
        return tr("The folder of the recording went away");
    case StopCause::CannotEncode:
        return tr("Video or sound could not be encoded");
    case StopCause::Unsupported:
        return tr("The format is not supported on this computer");
    case StopCause::AsAsked:
    case StopCause::Unknown:
        break;
    }
    return tr("The recorder failed");
}

std::optional<Notice> RecordingNotices::ofOutcome(const RecordingOutcome& outcome) const
{
    using Kind = RecordingOutcome::Kind;
    if (hasNotStarted(outcome))
        return ofFailure(tr("%1: the recording did not start."), outcome.cause);
    switch (outcome.kind) {
    case Kind::NotPrepared:
        return asOutcome({tr("The screen could not be captured: the recording did not start.")});
    case Kind::EndedByItself:
        return ofFailure(tr("%1: the recording has ended."), outcome.cause);
    case Kind::EndMissing:
        return ofFailure(tr("%1: the end of the recording is missing."), outcome.cause);
    case Kind::Shortened:
        return withFolder(tr("The disk is nearly full: the recording was ended and is saved."), outcome.path);
    case Kind::FolderGone:
        return withFolder(tr("The file could not be reached for a while: the recording was ended and is saved."),
                          outcome.path);
    case Kind::Complete:
    case Kind::NotStarted:
        break;
    }
    return std::nullopt;
}

Notice RecordingNotices::windowsMissing() const
{
    return {tr("This is a Wayland session: windows of other programs may be missing from recordings. "
               "An X11 session has them all.")};
}

Notice RecordingNotices::littleSpace(qint64 minutes) const
{
    Notice notice = withChoice(minutes > 0 ? tr("The disk is nearly full: there is room for about %1 min.").arg(minutes)
                                           : tr("The disk is nearly full: there is room for less than a minute."));
    notice.turn = NoticeTurn::UntilRecordingEnds;
    return notice;
}

Notice RecordingNotices::moved(const QString& path) const
{
    return withFolder(tr("The folder of the recording was moved: the recording was ended and is saved."), path);
}

Notice RecordingNotices::saved(const QString& path) const
{
    return withFolder(tr("The folder of the recording went away: what was recorded is saved in the default folder."),
                      path);
}

Notice RecordingNotices::savedAsChosen(const QString& path) const
{
    return withFolder(tr("What was recorded is saved in the chosen folder."), path);
}

Notice RecordingNotices::lost() const
{
    return asOutcome(withChoice(
        tr("The folder of the recording went away: what was recorded could not be saved, or not all of it.")));
}

Notice RecordingNotices::ofFailure(const QString& frame, StopCause cause) const
{
    const QString text = frame.arg(reason(cause));
    return asOutcome(isAboutFolder(cause) ? withChoice(text) : Notice{text});
}

Notice RecordingNotices::withFolder(const QString& text, const QString& path)
{
    return asOutcome({text, tr("Open Folder"), [path] { openFile(QFileInfo(path).path()); }});
}

Notice RecordingNotices::withChoice(const QString& text) const
{
    return {text, tr("Choose Another Folder"), m_chooseFolder};
}
