// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMutex>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <array>

/// Shows the live level of one audio source as a row of rounded segments that light up from the left: blue up to the
/// middle, green up to three quarters, orange above.
///
/// Only the first channel's magnitude sets the length; peaks only tell silence from sound. The meter repaints itself
/// every kRepaintIntervalMs. All operations belong to the user-interface thread; painting reads the levels without the
/// lock, a torn read is one odd repaint.
class VolumeControl : public QWidget
{
    Q_OBJECT

public:
    /// libobs' highest number of audio channels.
    static constexpr int kMaxChannels = 8;
    static constexpr int kRepaintIntervalMs = 40;

    explicit VolumeControl(QWidget* parent);
    ~VolumeControl() override;

    /// Takes over the levels of all channels, in dB; each array has kMaxChannels entries. The timer repaints.
    void setLevels(const float* magnitudeDb, const float* peakDb, const float* inputPeakDb);

    /// Forgets all levels and shows the empty row.
    void resetLevels();

    /// Whether levels are shown at all; without it the row stays empty whatever arrives.
    void setActive(bool active);
    bool isActive() const { return m_active; }

    /// Whether an empty row means the minimum level (-90 dB), and a full one 0 dB; else it is the other way round. Does
    /// not repaint.
    void setFillFromMinimum(bool fill);

    /// The number of channels of the engine's meter; more than kMaxChannels count as kMaxChannels.
    void setChannelCount(int count);
    int channelCount() const { return m_channelCount; }

    /// The number of channels of the engine's audio output.
    void setAudioChannelCount(int count);
    int audioChannelCount() const { return m_audioChannelCount; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    using Levels = std::array<float, kMaxChannels>;

    void paintFrame(QPainter& painter) const;
    int segmentCount() const;
    void paintSegment(QPainter& painter, int index, const QColor& color) const;
    QPixmap paintedEmptyRow(qreal devicePixelRatio) const;
    int barLengthPx(double magnitudeDb) const;
    int litSegmentCount(int segmentCount) const;

    int m_channelCount = kMaxChannels;
    int m_audioChannelCount = 0;
    bool m_fillFromMinimum = false;
    bool m_active = true;
    Levels m_magnitude{};
    Levels m_peak{};
    Levels m_inputPeak{};
    QMutex m_levelLock;
    // Tuning values of the meter's ballistics, which has no use for them yet.
    [[maybe_unused]] double m_peakHoldSeconds = 20.0;
    [[maybe_unused]] double m_inputPeakHoldSeconds = 1.0;
    [[maybe_unused]] double m_integrationSeconds = 0.3;
    /// What an empty row stands for, in dB.
    double m_minimumLevelDb = -90.0;
    QTimer m_repaintTimer;
    /// The frame with its empty segments, which never change: painted once for the widget's size.
    QPixmap m_emptyRow;
};
