// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/obswrapper.h"

/// Whether one of the engine's two meters shows audio at present.
class Loudness
{
public:
    using Signal = void (ObsWrapper::*)(const float*, const float*, const float*);

    Loudness(const ObsWrapper& engine, Signal levels)
    {
        QObject::connect(&engine, levels, &m_context, [this](const float* magnitudeDb, const float*, const float*) {
            // Zero stands for no level at all.
            m_isHeard = *magnitudeDb < 0.0F && *magnitudeDb > kAudibleDb;
        });
    }

    bool isHeard() const { return m_isHeard; }

private:
    static constexpr float kAudibleDb = -30.0F;

    bool m_isHeard = false;
    QObject m_context;
};
