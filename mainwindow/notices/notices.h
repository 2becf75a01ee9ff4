// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <functional>

enum class NoticeTurn
{
    InOrder,
    /// Before all that wait or are shown: what has become of a recording.
    First,
    /// In order; of no use any more once the recording has ended.
    UntilRecordingEnds
};

/// One sentence for the user, translated, with the reason in plain words.
struct Notice
{
    QString text;
    /// The label of its action; empty without one.
    QString actionText = {};
    std::function<void()> action = {};
    NoticeTurn turn = NoticeTurn::InOrder;
    /// What it says of a recording that is under way is wrong afterwards.
    bool isOfTheMoment = false;
};

/// Where the program reports what the user has to know and no dialog may interrupt. User-interface thread.
class Notices : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Also writes the text to the log.
    void post(const Notice& notice);

signals:
    void posted(const Notice& notice);
};
