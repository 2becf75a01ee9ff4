// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingwatch.h"

#include "platform/files/held_file.h"

#include <QFileInfo>
#include <QStorageInfo>

#include <utility>

namespace {

/// Until the file is there.
constexpr int kSearchMs = 100;

} // namespace

struct RecordingWatch::Look
{
    std::shared_ptr<platform::HeldFile> file;
    bool isInPlace = false;
    qint64 bytes = 0;
    qint64 freeBytes = -1;
};

RecordingWatch::RecordingWatch(int intervalMs, FreeBytes freeBytes)
    : m_intervalMs(intervalMs), m_freeBytes(std::move(freeBytes))
{
    connect(&m_timer, &QTimer::timeout, this, &RecordingWatch::look);
    m_thread.setMaxThreadCount(1);
}

RecordingWatch::~RecordingWatch() = default;

qint64 RecordingWatch::freeBytes(const QString& folder)
{
    return QStorageInfo(folder).bytesAvailable();
}

void RecordingWatch::start(const QString& path)
{
    stop();
    m_path = path;
    m_growth = {};
    m_recorded.start();
    m_timer.start(qMin(kSearchMs, m_intervalMs));
}

std::shared_ptr<platform::HeldFile> RecordingWatch::stop()
{
    m_timer.stop();
    ++m_recording;
    return std::exchange(m_file, nullptr);
}

RecordingWatch::Look RecordingWatch::lookAt(const QString& path, std::shared_ptr<platform::HeldFile> file,
                                            const FreeBytes& freeBytes)
{
    if (!file)
        file = platform::HeldFile::open(path);
    if (!file)
        return {};
    return {file, file->isInPlace(), file->bytes(), freeBytes(QFileInfo(path).path())};
}

void RecordingWatch::look()
{
    if (std::exchange(m_isLooking, true))
        return;
    m_thread.start([this, recording = m_recording, path = m_path, file = m_file] {
        const Look seen = lookAt(path, file, m_freeBytes);
        QMetaObject::invokeMethod(
            this,
            [this, recording, seen] {
                m_isLooking = false;
                if (recording == m_recording)
                    judge(seen);
            },
            Qt::QueuedConnection);
    });
}

void RecordingWatch::judge(const Look& seen)
{
    if (!seen.file)
        return;
    m_file = seen.file;
    m_timer.setInterval(m_intervalMs);
    m_growth.add(seen.bytes, m_recorded.elapsed());
    const bool isTight =
        seen.freeBytes >= 0 && seen.freeBytes < diskspace::reserve(m_growth.bytesPerSecond(), m_recorded.elapsed());
    if (seen.isInPlace && !isTight)
        return;
    m_timer.stop();
    if (seen.isInPlace)
        emit spaceRunsOut();
    else
        emit fileGone();
}
