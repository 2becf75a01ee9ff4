// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/hotkeys.h"

#include "app/sclogger.h"
#include "app/settings.h"
#include "dialogs/hotkeychoices.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/windowkey.h"
#include "platform/input/global_hotkey.h"

#include <QKeySequence>

#include <utility>

using platform::GlobalHotkey;

namespace {

/// Empty where there is none.
QString explained(Activity::Refusal refusal, const QString& key)
{
    switch (refusal) {
    case Activity::Refusal::None:
        return {};
    case Activity::Refusal::RecordingUnderWay:
        return Hotkeys::tr("A recording is running: screenshots can be taken when it has ended.");
    case Activity::Refusal::RecordingEnding:
        return Hotkeys::tr("The last recording is still being saved: press %1 again in a moment.").arg(key);
    case Activity::Refusal::ScreenshotUnderWay:
        return Hotkeys::tr("A screenshot is being taken: press %1 again in a moment.").arg(key);
    }
    return {};
}

} // namespace

Hotkeys::Hotkeys(QObject* parent, const Activity& activity, Notices& notices)
    : QObject(parent)
    , m_activity(activity)
    , m_notices(notices)
    , m_recording{new GlobalHotkey(this), {}}
    , m_screenshot{new GlobalHotkey(this), {}}
{
    connect(m_recording.key, &GlobalHotkey::activated, this,
            [this] { onPressed(m_recording, m_activity.recordingRefusal(), &Hotkeys::recordingPressed); });
    connect(m_screenshot.key, &GlobalHotkey::activated, this,
            [this] { onPressed(m_screenshot, m_activity.screenshotRefusal(), &Hotkeys::screenshotPressed); });
    for (Hotkey* const hotkey : {&m_recording, &m_screenshot}) {
        connect(hotkey->key, &GlobalHotkey::availabilityChanged, this,
                [this, hotkey](bool available, const QString& reason) {
                    onAvailabilityChanged(*hotkey, available, reason);
                });
    }
    new WindowKey(*this, notices);
}

void Hotkeys::onPressed(const Hotkey& hotkey, Activity::Refusal refusal, void (Hotkeys::*pressed)())
{
    if (refusal == Activity::Refusal::None)
        emit(this->*pressed)();
    else
        m_notices.post({.text = explained(refusal, hotkey.wanted), .isOfTheMoment = true});
}

void Hotkeys::apply(const QSettings& settings)
{
    // Both are released before one is taken: they may have been exchanged.
    want(m_recording, settings.value(settingskeys::kRecordingHotkey).toString());
    want(m_screenshot, settings.value(settingskeys::kScreenshotHotkey).toString());
    take(m_recording);
    take(m_screenshot);
    emit recordingKeyChanged();
}

QString Hotkeys::recordingKey() const
{
    return m_recording.taken ? m_recording.wanted : QString();
}

QString Hotkeys::unusableText(const QString& key)
{
    return tr("The hotkey %1 cannot be used. Another program may hold it.").arg(key);
}

void Hotkeys::want(Hotkey& hotkey, const QString& stored)
{
    const QString wanted = stored == QLatin1String(hotkeychoices::kNone) ? QString() : stored;
    if (hotkey.taken && hotkey.wanted == wanted)
        return;
    hotkey.key->registerKey({});
    if (hotkey.wanted != wanted)
        hotkey.reported.clear();
    hotkey.wanted = wanted;
    hotkey.taken = false;
}

void Hotkeys::take(Hotkey& hotkey)
{
    if (hotkey.taken || hotkey.wanted.isEmpty())
        return;
    hotkey.taken = hotkey.key->registerKey(QKeySequence::fromString(hotkey.wanted, QKeySequence::PortableText));
    const QString reason = hotkey.key->failureReason();
    // Once, not with every change of other settings.
    const bool isReported = std::exchange(hotkey.reported, reason) == reason;
    if (hotkey.taken || isReported)
        return;
    SCLogger::warning(QStringLiteral("The hotkey \"%1\" cannot be used: %2").arg(hotkey.wanted, reason));
    postUnusable(hotkey);
}

void Hotkeys::onAvailabilityChanged(Hotkey& hotkey, bool available, const QString& reason)
{
    hotkey.taken = available;
    hotkey.reported = reason;
    if (available) {
        SCLogger::info(QStringLiteral("The hotkey \"%1\" works again").arg(hotkey.wanted));
    } else {
        SCLogger::warning(
            QStringLiteral("The hotkey \"%1\" is lost with the new keyboard layout: %2").arg(hotkey.wanted, reason));
        postUnusable(hotkey);
    }
    emit recordingKeyChanged();
}

/// Queued: at the start of the program nothing shows notices yet.
void Hotkeys::postUnusable(const Hotkey& hotkey)
{
    const QString key = hotkey.wanted;
    const Notice notice{unusableText(key), tr("Settings"), [this] {
                            if (m_activity.isIdle())
                                emit settingsRequested();
                        }};
    QMetaObject::invokeMethod(
        this,
        [this, &hotkey, key, notice] {
            if (!hotkey.taken && hotkey.wanted == key)
                m_notices.post(notice);
        },
        Qt::QueuedConnection);
}
