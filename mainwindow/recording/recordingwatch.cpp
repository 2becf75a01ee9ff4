// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingwatch.h"

#include "platform/files/held_file.h"

#include <QFileInfo>
#include <QFutureWatcher>
#include <QPromise>
#include <QThreadPool>

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
    : m_intervalMs(intervalMs), m_freeBytes(std::move(freeBytes)), m_threads(std::make_unique<QThreadPool>())
{
    // One, and some for later recordings while looks of earlier ones hang.
    constexpr int kThreads = 4;
    connect(&m_timer, &QTimer::timeout, this, &RecordingWatch::look);
    m_threads->setMaxThreadCount(kThreads);
}

RecordingWatch::~RecordingWatch()
{
    constexpr int kLimitMs = 2000;
    // The process is about to end.
    if (!m_threads->waitForDone(kLimitMs))
        (void)m_threads.release();
}

void RecordingWatch::start(const QString& path)
{
    stop();
    m_path = path;
    m_isLooking = false;
    m_timesMissing = 0;
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
    const auto promise = std::make_shared<QPromise<Look>>();
    auto* const answer = new QFutureWatcher<Look>(this);
    connect(answer, &QFutureWatcherBase::finished, this, [this, answer, recording = m_recording] {
        answer->deleteLater();
        onLooked(recording, answer->result());
    });
    promise->start();
    answer->setFuture(promise->future());
    m_threads->start([promise, path = m_path, file = m_file, freeBytes = m_freeBytes] {
        promise->addResult(lookAt(path, file, freeBytes));
        promise->finish();
    });
}

void RecordingWatch::onLooked(int recording, const Look& seen)
{
    if (recording != m_recording)
        return;
    m_isLooking = false;
    judge(seen);
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
    // A disk or a network may fail to answer once.
    m_timesMissing = seen.isInPlace ? 0 : m_timesMissing + 1;
    if (m_timesMissing == 1 || (seen.isInPlace && !isTight))
        return;
    m_timer.stop();
    if (seen.isInPlace)
        emit spaceRunsOut();
    else
        emit fileGone();
}
