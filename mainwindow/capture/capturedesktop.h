// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/capture/capturearea.h"

#include <QList>

/// The screens, and what can be recorded of a region on them. Logical pixels of the desktop.
class CaptureDesktop
{
public:
    /// As it is at present.
    /// @param engineSpans whether the engine can record parts of several screens
    static CaptureDesktop present(bool engineSpans);

    /// @param screens the primary one first
    /// @param spans whether a recording can show parts of several screens, which are contiguous then
    CaptureDesktop(const QList<CaptureScreen>& screens, bool spans) : m_screens(screens), m_spans(spans) {}

    /// The one that holds most of the area; of several, and where none holds any, the one that is nearest to its
    /// centre. Empty in a session without a screen.
    CaptureScreen screenOf(const QRect& area) const;

    /// What an area can be on: the screen that holds most of it or, where recordings span screens, the rectangle around
    /// all that hold any of it.
    CaptureScreen around(const QRect& area) const;

    /// What can be recorded of an area, empty where that is nothing. Between screens of different heights it may
    /// include what is on none.
    QRect visiblePart(const QRect& area) const;

    /// Whether a part of the area cannot be recorded because it is on another screen than most of it.
    bool isCutAt(const QRect& area) const;

private:
    QList<CaptureScreen> m_screens;
    bool m_spans;
};
