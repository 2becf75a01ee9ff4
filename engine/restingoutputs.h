#pragma once

#include "engine/obshandles.h"

#include <QTimer>

#include <cstdint>
#include <vector>

/// Keeps outputs that ended by themselves until they have surely done with their files.
///
/// Such an output says that it has ended and only then closes its file, on a thread that libobs does not wait for; the
/// index of a long file on a slow disk takes seconds. Released before, it would go from under that thread. Belongs to
/// the user-interface thread, which is never made to wait while it runs its event loop.
class RestingOutputs
{
public:
    RestingOutputs();
    /// Releases what is left. Whatever ended less than a second ago is waited for.
    ~RestingOutputs();
    RestingOutputs(const RestingOutputs&) = delete;
    RestingOutputs& operator=(const RestingOutputs&) = delete;

    /// Takes an output over and releases it ten seconds after its end.
    ///
    /// @param endedNs when it said that it has ended, on libobs' clock
    void keep(ObsOutputHandle output, std::uint64_t endedNs);

private:
    struct Resting
    {
        ObsOutputHandle output;
        std::uint64_t endedNs = 0;
    };

    void releaseRested();

    std::vector<Resting> m_resting;
    QTimer m_timer;
};
