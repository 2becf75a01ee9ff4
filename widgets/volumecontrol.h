// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMutex>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <array>

/// Level of an audio source as a row of segments that light up from the left: blue, green from the middle, orange from
/// three quarters on. The first channel's magnitude is the length; peaks distinguish silence from no level.
/// User-interface thread.
class VolumeControl : public QWidget
{
    Q_OBJECT

public:
    /// libobs' maximum.
    static constexpr int kMaxChannels = 8;
    static constexpr int kRepaintIntervalMs = 40;

    explicit VolumeControl(QWidget* parent);

    /// In dB, kMaxChannels entries each; the timer repaints.
    void setLevels(const float* magnitudeDb, const float* peakDb, const float* inputPeakDb);

    void resetLevels();

    /// Of the first channel, for who does not see the row: in dB, the minimum where the row is empty.
    double level() const;
    double minimumLevel() const { return m_minimumLevelDb; }

    /// An inactive row stays empty.
    void setActive(bool active);
    bool isActive() const { return m_active; }

    /// Whether an empty row means the minimum level (-90 dB) or 0 dB. Does not repaint.
    void setFillFromMinimum(bool fill);

    /// Of the engine's meter, kMaxChannels at most.
    void setChannelCount(int count);
    int channelCount() const { return m_channelCount; }

    /// Of the engine's audio output.
    void setAudioChannelCount(int count);
    int audioChannelCount() const { return m_audioChannelCount; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    using Levels = std::array<float, kMaxChannels>;

    void followParent();
    QImage background(qreal devicePixelRatio) const;
    void makeEmptyRow(qreal devicePixelRatio);
    void paintFrame(QPainter& painter) const;
    int segmentCount() const;
    void paintSegment(QPainter& painter, int index, const QColor& color) const;
    int barLengthPx(double magnitudeDb) const;
    int litSegmentCount(int segmentCount) const;
    bool isEmpty() const;

    int m_channelCount = kMaxChannels;
    int m_audioChannelCount = 0;
    bool m_fillFromMinimum = false;
    bool m_active = true;
    // m_levelLock is held for writing; painting reads without it: a torn read is one odd repaint.
    Levels m_magnitude{};
    Levels m_peak{};
    Levels m_inputPeak{};
    QMutex m_levelLock;
    /// Ballistics of the meter, not used yet.
    [[maybe_unused]] double m_peakHoldSeconds = 20.0;
    [[maybe_unused]] double m_inputPeakHoldSeconds = 1.0;
    [[maybe_unused]] double m_integrationSeconds = 0.3;
    double m_minimumLevelDb = -90.0;
    QTimer m_repaintTimer;
    /// The frame with its empty segments; on the parent's background where that covers everything below. Null where it
    /// has to be made again.
    QPixmap m_emptyRow;
};
