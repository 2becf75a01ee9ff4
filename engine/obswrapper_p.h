#pragma once

#include "engine/obswrapper.h"

// What the implementation files of ObsWrapper share.

inline constexpr uint32_t kVideoChannel = 0;
inline constexpr uint32_t kDesktopChannel = 1;
inline constexpr uint32_t kMicrophoneChannel = 2;

inline constexpr char kDeviceKey[] = "device_id";
inline constexpr char kDefaultDevice[] = "default";
inline constexpr char kNoDevice[] = "disabled";

/// Where one of the two volume meters writes its levels. Lives on the user-interface thread; onLevels() is called on
/// libobs' audio thread, only between listen() and the destruction.
struct ObsWrapper::MeterContext
{
    MeterContext(MeterKind meterKind, ObsWrapper* owner, obs_volmeter_t* volmeter);
    ~MeterContext();
    MeterContext(const MeterContext&) = delete;
    MeterContext& operator=(const MeterContext&) = delete;

    void listen();
    static void onLevels(void* param, const float* magnitude, const float* peak, const float* inputPeak);

    MeterKind kind;
    ObsWrapper* wrapper;
    obs_volmeter_t* meter;
};

/// One of the two kinds of sound device with everything that goes with it.
struct ObsWrapper::AudioDevice
{
    MeterKind kind;
    const char* typeId;
    const char* sourceName;
    uint32_t channel;
    ObsSourceHandle& source;
    obs_fader_t* fader;
    obs_volmeter_t* meter;
    Levels& levels;
};
