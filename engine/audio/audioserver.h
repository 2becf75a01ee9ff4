// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <optional>

/// What can be lost, and come back.
enum class AudioPart
{
    Server,
    Microphone,
    Desktop
};

/// A sound server: it may stop and start, and moves who listens to a device that vanishes to another one.
/// User-interface thread.
class AudioServer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// True until an attempt to connect has failed.
    virtual bool isRunning() const = 0;
    /// What the stream of this name hears, a microphone or what the computer plays; nothing where this process has no
    /// such stream.
    virtual std::optional<AudioPart> heardBy(const QString& stream) const = 0;

signals:
    /// It stopped or runs again, could not be reached again, or devices or streams have come, gone or been moved.
    void changed();
};
