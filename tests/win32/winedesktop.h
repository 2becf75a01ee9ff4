// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QMap>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

/// A top-level window as Windows knows it.
struct WindowsWindow
{
    /// What SetLayeredWindowAttributes() was given.
    struct Layer
    {
        int64_t key = 0;
        int alpha = 0;
        int64_t flags = 0;
    };

    int64_t handle = 0;
    int64_t process = 0;
    QString program; ///< File name of the program that it belongs to.
    QString title;
    QRect position; ///< Pixels of the desktop.
    bool isVisible = false;
    bool isMinimised = false;
    bool isForeground = false;
    bool isTopmost = false;
    std::optional<Layer> layer;
};

/// A Windows desktop that fills the test's X display, made by Wine, with a program that looks at it from inside. Keys
/// and pointer of the display reach it. One at a time.
///
/// tools/test-windows prepares what it needs and says in the environment where: WINEPREFIX and what goes with it,
/// KESTRANO_WINDOWS_BUILD (the folder of the Windows build) and KESTRANO_WINDOWS_PROGRAM (the folder of the program,
/// laid out for Wine).
class WineDesktop
{
public:
    WineDesktop() = default;
    ~WineDesktop();
    WineDesktop(const WineDesktop&) = delete;
    WineDesktop& operator=(const WineDesktop&) = delete;

    /// Makes the desktop. Empty on success, else what went wrong.
    QString begin();

    /// The path as a Windows program takes it.
    static QString windowsPath(const QString& path);
    /// The path that a Windows program says, as this system knows it.
    static QString unixPath(const QString& windowsPath);
    /// One of the test programs of the Windows build.
    static QString tool(const QString& name);
    static QString program();

    /// Starts a test program that says "READY". Empty on success.
    static QString launch(QProcess& process, const QString& name, const QStringList& arguments);

    /// Asks the probe (kestrano_test_win32probe says what there is to ask). Nothing when the question failed.
    static std::optional<QJsonValue> ask(const QStringList& question);
    /// The same, where the answer has nothing to say.
    static bool request(const QStringList& question) { return ask(question).has_value(); }

    /// All top-level windows, from the front to the back.
    static QList<WindowsWindow> windows();
    /// The visible window of the program with this title, once there is one; an empty title: any.
    static std::optional<WindowsWindow> visibleWindow(const QString& title, int timeoutMs);
    /// Whether the X display shows a window at that position in its full size. Windows knows of a window before it is
    /// shown, and until then the pointer goes to what lies below.
    static bool isShown(const QRect& position);
    /// Moves the pointer and waits until Windows has heard of it, which it does later than of a button.
    static bool pointTo(const QPoint& position);

    /// The values at and below a key of the user's registry, by their names with those of the keys before them
    /// ("general/language"). One that is no text is empty.
    static QMap<QString, QString> stored(const QString& key);

    /// How far the clock of the Windows programs is ahead of CLOCK_MONOTONIC, in nanoseconds.
    static int64_t clockAheadNs();

private:
    QProcess m_explorer;
    QProcess m_probe;
};
