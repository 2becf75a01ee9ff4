#pragma once

#include <QByteArray>
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
    QRect place; ///< Pixels of the desktop.
    bool isVisible = false;
    bool isMinimised = false;
    bool isForeground = false;
    bool isTopmost = false;
    std::optional<Layer> layer;
};

/// A Windows desktop that fills the test's X display, made by Wine, with programs that look at it from inside. Keys and
/// pointer of the display reach it. One at a time.
///
/// tools/test-windows prepares what it needs and says in the environment where: WINEPREFIX and what goes with it,
/// KESTRANO_WINDOWS_BUILD (the folder of the Windows build) and KESTRANO_WINDOWS_PROGRAM (the folder of the program,
/// laid out so that Wine can run it).
class WineDesktop
{
public:
    WineDesktop() = default;
    ~WineDesktop();
    WineDesktop(const WineDesktop&) = delete;
    WineDesktop& operator=(const WineDesktop&) = delete;

    /// Makes the desktop. Empty on success, else what went wrong.
    QString begin();

    /// The path as a Windows program has to be told it.
    static QString windowsPath(const QString& path);
    /// The path that a Windows program says, as this system knows it.
    static QString unixPath(const QString& windowsPath);
    /// One of the test programs of the Windows build.
    static QString tool(const QString& name);
    static QString program();

    /// Starts a test program that says "READY". Empty on success.
    static QString launch(QProcess& process, const QString& name, const QStringList& arguments);

    /// Puts the lines of a registry file's body into the registry.
    static bool importRegistry(const QString& lines);
    /// What the registry has below a key, in the form of a registry file.
    static QString exportRegistry(const QString& key);

    /// All top-level windows, from the front to the back.
    static QList<WindowsWindow> windows();
    /// The visible window of the program with this title, once there is one; an empty title: any.
    static std::optional<WindowsWindow> visibleWindow(const QString& title, int timeoutMs);
    /// Runs the probe; whether it succeeded.
    static bool probe(const QStringList& arguments, QByteArray* answer = nullptr);

    /// How far the clock of the Windows programs is ahead of CLOCK_MONOTONIC, in nanoseconds.
    static int64_t clockAheadNs();

private:
    QProcess m_explorer;
};
