// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QRect>
#include <QSize>
#include <QString>

#include <array>

/// What the screen shows, and which part of it is recorded.
struct Workload
{
    const char* name;
    /// The program that shows it, and what of it.
    const char* program;
    const char* option;
    /// Numbers a second that the counter shows; 0 where nothing changes.
    int numbersPerSecond;
    /// Size of the part in the middle of the screen that is recorded; empty for all of it.
    QSize part;

    /// What is recorded, in pixels of the screen.
    QRect area(const QSize& screen) const;
};

/// The region shows a part of the film, for comparison with all of it.
inline constexpr std::array<Workload, 6> kWorkloads{{{"pattern", "kestrano_test_pattern", "--motion", 30, {}},
                                                     {"pattern15", "kestrano_test_pattern", "--motion", 15, {}},
                                                     {"film", "kestrano_bench_screen", "--film", 30, {}},
                                                     {"region", "kestrano_bench_screen", "--film", 30, QSize(640, 360)},
                                                     {"typing", "kestrano_bench_screen", "--page", 30, {}},
                                                     {"unchanged", "kestrano_bench_screen", "--page", 0, {}}}};

/// A workload on the screen and the test tone on the default sink, for as long as the object lives.
class Show
{
public:
    Show() = default;
    ~Show();
    Show(const Show&) = delete;
    Show& operator=(const Show&) = delete;

    /// Shows and plays. Empty on success, else what went wrong.
    QString begin(const Workload& workload, const QSize& screen);

private:
    QProcess m_screen;
    QProcess m_tone;
};
