// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <functional>

/// One sentence for the user, translated, with the reason in plain words.
struct Notice
{
    QString text;
    /// The label of its action; empty without one.
    QString actionText = {};
    std::function<void()> action = {};
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
