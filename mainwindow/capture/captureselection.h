// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class OutputOptions;
class QSettings;

namespace Ui {
class SCMainWindow;
}

/// How the area was chosen; the values are the capture-mode numbers of the main window.
enum class CaptureMode : int
{
    FullScreen = 0,
    Region = 1,
    Window = 2
};

/// Whether the screen is recorded, and how its area is chosen: the screen switch and the mode tiles, which go together
/// with the format. A format with video has the screen switched on, the screen switched off has an audio format.
/// User-interface thread.
class CaptureSelection : public QObject
{
    Q_OBJECT

public:
    CaptureSelection(Ui::SCMainWindow& ui, OutputOptions& output, QSettings& settings);

    /// Shows the stored screen switch. A stored format with video gives way to it, and stays stored.
    void restore();

    CaptureMode mode() const { return m_mode; }
    bool recordsVideo() const;
    bool recordsRegion() const { return m_isScreenOn && m_mode == CaptureMode::Region; }

    /// Also switches the screen on.
    void choose(CaptureMode mode);

    /// As the screen switch does: the mode is full screen then.
    void switchScreen(bool on);

    /// Switches the screen on for a format with video: whoever chooses one wants the screen recorded.
    void fitScreenToFormat();

    /// Remembers what is chosen, and chooses the region mode.
    void beginRegion();
    /// Takes beginRegion() back, except for a format that the user has chosen since.
    void cancelRegion();

private:
    void setScreenOn(bool on);
    void setMode(CaptureMode mode);
    void fitFormat(bool screenOn);
    void showMode();

    struct Remembered
    {
        bool isScreenOn = true;
        int format = 0;
        /// As beginRegion() has left it.
        int formatMeanwhile = 0;
        CaptureMode mode = CaptureMode::FullScreen;
    };

    Ui::SCMainWindow& m_ui;
    OutputOptions& m_output;
    QSettings& m_settings;
    bool m_isScreenOn = true;
    CaptureMode m_mode = CaptureMode::FullScreen;
    Remembered m_remembered;
};
