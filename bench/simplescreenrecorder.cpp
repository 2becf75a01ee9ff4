// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/recorders.h"
#include "bench/recordertools.h"
#include "tests/support/testpattern.h"

#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTest>

namespace {

/// The area, the program's encoders and bit rates, and the sound of the default sink.
void writeSettings(const QString& path, const Job& job, const QString& file)
{
    const QRect area = job.area();
    QSettings settings(path, QSettings::IniFormat);
    settings.setValue("input/video_area", "fixed");
    settings.setValue("input/video_x", area.x());
    settings.setValue("input/video_y", area.y());
    settings.setValue("input/video_w", area.width());
    settings.setValue("input/video_h", area.height());
    settings.setValue("input/video_frame_rate", kRecordedFps);
    settings.setValue("input/audio_backend", "pulseaudio");
    settings.setValue("input/audio_pulseaudio_source", qEnvironmentVariable("KESTRANO_TEST_SINK") + ".monitor");
    settings.setValue("output/file", file);
    settings.setValue("output/add_timestamp", false);
    settings.setValue("output/container", "mp4");
    // Its own entry for H.264 has a quality where the program has a bit rate.
    settings.setValue("output/video_codec", "other");
    settings.setValue("output/video_codec_av", "libx264");
    settings.setValue("output/video_kbit_rate", kVideoBitrateKbit);
    settings.setValue("output/video_options", "preset=veryfast,g=300");
    settings.setValue("output/audio_codec", "aac");
    settings.setValue("output/audio_kbit_rate", kAudioBitrateKbit);
}

} // namespace

Measurement measureSimpleScreenRecorder(const Job& job)
{
    const QString settings = job.folder + QLatin1String("/simplescreenrecorder.conf");
    const QString path = job.folder + QLatin1String("/simplescreenrecorder.mp4");
    // It takes another name where there is such a file.
    QFile::remove(path);
    writeSettings(settings, job, path);
    Measurement measurement;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("simplescreenrecorder"),
                  {"--settingsfile=" + settings, "--no-systray", "--start-hidden", "--start-recording"});
    QByteArray output;
    if (!waitForText(process, output, "Started input.", kToolTimeoutMs)) {
        measurement.failure = QString::fromLocal8Bit(output);
        return measurement;
    }
    QTest::qWait(kSettleMs);
    const CpuMeter meter(process.processId());
    QTest::qWait(job.seconds * 1000 - kSettleMs);
    meter.writeTo(measurement);
    const int64_t requested = monotonicNow();
    process.write("record-save\n");
    const bool isSaved = waitForText(process, output, "Stopped page.", kToolTimeoutMs).has_value();
    measurement.stopMs = static_cast<double>(monotonicNow() - requested) / kNsPerMs;
    process.write("quit\n");
    if (!process.waitForFinished(kToolTimeoutMs) || !isSaved) {
        measurement.failure = QString::fromLocal8Bit(output);
        return measurement;
    }
    judgeFile(measurement, job, path);
    return measurement;
}
