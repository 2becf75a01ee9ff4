// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/captureplatform.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <obs.h>

#include <functional>

class ObsWrapper;

/// Stand-ins for the plug-ins of libobs: capture, audio, filter, transition, encoder and file output, registered in the
/// real core under the names that the Windows plug-ins use. They do nothing but note what libobs asks of them.
namespace standins {

/// One entry of a list property.
struct ListEntry
{
    const char* name;
    const char* value;
};

/// How the stand-ins behave; set before the call that it shall have an effect on.
struct Behaviour
{
    std::vector<ListEntry> microphones{{"Default", "default"}, {"Desk microphone", "mic-1"}};
    std::vector<ListEntry> speakers{{"Default", "default"}, {"Headphones", "out-1"}};
    std::vector<ListEntry> monitors{{"Left: 1280x720 @ 0,0", "\\\\.\\left"},
                                    {"Right: 1920x1080 @ 1280,0", "\\\\.\\right"}};
    std::vector<ListEntry> windows{{"[editor.exe]: notes", "notes:Editor:editor.exe"}};
    /// The monitor capture lists "monitor" as integers, as older ones do, instead of "monitor_id" as texts.
    bool monitorsAsIntegers = false;
    /// The capture source gets no data of its own: libobs makes a shell only.
    bool captureFails = false;
    bool outputStarts = true;
    const char* outputError = nullptr;
    /// Called inside the output's start.
    std::function<void(obs_output_t*)> duringStart;
    /// Called inside the output's stop, if set.
    std::function<void()> duringStop;
    /// How long the output takes to encode a frame.
    int encodeMs = 0;
    /// Bytes that the output says it has written.
    std::function<uint64_t()> bytesWritten;
};

Behaviour& behaviour();

/// What libobs asked of the stand-ins, in order, for example "update monitor_capture". Safe from any thread.
QStringList events();
void clearEvents();
/// How often an event was noted.
qsizetype countOf(const QString& event);

/// Settings that a source of this type was last created or updated with.
QJsonObject lastSettings(const QString& typeId);
/// Settings that the output was last updated with, and the output itself; null when there is none.
QJsonObject lastOutputSettings();
obs_output_t* currentOutput();
/// The moments, on libobs' clock, at which the frames were taken that the output has finished encoding.
std::vector<std::uint64_t> encodedFrames();
/// Frames that captures have taken, which they do while they are shown: one for each that the engine renders.
qsizetype capturedFrames();

QJsonObject toJson(obs_data_t* settings);

/// Starts the real core, without any module, at 320x240 with stereo audio.
bool startCore();

/// Register the stand-ins, for the life of the process. Each may be left out to see what its absence does.
void registerSources();
/// A transition without properties and one with; neither is the one that the program looks for.
void registerOtherTransitions();
/// May be called again.
void registerFadeTransition();
void registerOutputs();

/// The Windows table with the graphics module of the system the tests run on.
CapturePlatform platform();

} // namespace standins
