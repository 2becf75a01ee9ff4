// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/hotkeys.h"

#include "app/sclogger.h"
#include "app/settings.h"
#include "dialogs/hotkeychoices.h"
#include "platform/input/global_hotkey.h"

#include <QKeySequence>

#include <utility>

using platform::GlobalHotkey;

Hotkeys::Hotkeys(QObject* parent)
    : QObject(parent), m_recording{new GlobalHotkey(this), {}}, m_screenshot{new GlobalHotkey(this), {}}
{
    connect(m_recording.key, &GlobalHotkey::activated, this, &Hotkeys::recordingPressed);
    connect(m_screenshot.key, &GlobalHotkey::activated, this, &Hotkeys::screenshotPressed);
    for (Hotkey* const hotkey : {&m_recording, &m_screenshot}) {
        connect(hotkey->key, &GlobalHotkey::availabilityChanged, this,
                [this, hotkey](bool available, const QString& reason) {
                    onAvailabilityChanged(*hotkey, available, reason);
                });
    }
}

QList<Hotkeys::Failure> Hotkeys::apply(const QSettings& settings)
{
    // Both are released before one is taken: they may have been exchanged.
    want(m_recording, settings.value(settingskeys::kRecordingHotkey).toString());
    want(m_screenshot, settings.value(settingskeys::kScreenshotHotkey).toString());
    QList<Failure> failures = take(m_recording) + take(m_screenshot);
    for (const Failure& failure : std::as_const(failures))
        SCLogger::warning(QStringLiteral("The hotkey \"%1\" cannot be used: %2").arg(failure.key, failure.reason));
    emit recordingKeyChanged();
    return failures;
}

QString Hotkeys::recordingKey() const
{
    return m_recording.taken ? m_recording.wanted : QString();
}

void Hotkeys::want(Hotkey& hotkey, const QString& stored)
{
    const QString wanted = stored == QLatin1String(hotkeychoices::kNone) ? QString() : stored;
    if (hotkey.taken && hotkey.wanted == wanted)
        return;
    hotkey.key->registerKey({});
    hotkey.wanted = wanted;
    hotkey.taken = false;
}

QList<Hotkeys::Failure> Hotkeys::take(Hotkey& hotkey)
{
    if (hotkey.taken || hotkey.wanted.isEmpty())
        return {};
    hotkey.taken = hotkey.key->registerKey(QKeySequence::fromString(hotkey.wanted, QKeySequence::PortableText));
    return hotkey.taken ? QList<Failure>() : QList<Failure>{{hotkey.wanted, hotkey.key->failureReason()}};
}

void Hotkeys::onAvailabilityChanged(Hotkey& hotkey, bool available, const QString& reason)
{
    hotkey.taken = available;
    if (available)
        SCLogger::info(QStringLiteral("The hotkey \"%1\" works again").arg(hotkey.wanted));
    else
        SCLogger::warning(
            QStringLiteral("The hotkey \"%1\" is lost with the new keyboard layout: %2").arg(hotkey.wanted, reason));
    emit recordingKeyChanged();
}
