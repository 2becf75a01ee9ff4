// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class OutputOptions;
class QSettings;

namespace Ui {
class SCMainWindow;
}

/// The tiles of the recording page. Window takes a screenshot of a window; recordings keep the area that they had.
enum class CaptureMode : int
{
    FullScreen = 0,
    Region = 1,
    Window = 2
};

/// The screen switch and the mode tiles, kept in agreement with the format: a format with video needs the screen
/// switched on, and without the screen the format is audio. User-interface thread.
class CaptureSelection : public QObject
{
    Q_OBJECT

public:
    CaptureSelection(Ui::SCMainWindow& ui, OutputOptions& output, QSettings& settings);

    /// Shows the stored screen switch. A stored format with video gives way, but stays stored.
    void restore();

    CaptureMode mode() const { return m_mode; }
    bool isScreenOn() const { return m_isScreenOn; }
    bool recordsVideo() const;

    /// Also switches the screen on.
    void choose(CaptureMode mode);

    /// On: also chooses full screen. Off: no tile is selected, but the mode stays.
    void switchScreen(bool on);

    /// Switches the screen on for a format with video.
    void fitScreenToFormat();

    /// Chooses the region mode; cancelRegion() restores what was chosen before.
    void beginRegion();
    /// Keeps a format that the user has chosen since beginRegion().
    void cancelRegion();

signals:
    /// By whatever, perhaps to what it was.
    void screenSwitched(bool on);

    /// A format with video has switched the screen on, in full screen.
    void screenSwitchedByFormat();

private:
    void setScreenOn(bool on);
    void setMode(CaptureMode mode);
    void chooseFullScreenForFormat();
    void fitFormat(bool screenOn);
    void showMode();

    struct Remembered
    {
        bool isScreenOn = true;
        int format = 0;
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
