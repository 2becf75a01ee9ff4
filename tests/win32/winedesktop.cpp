// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/win32/winedesktop.h"

#include "tests/recording/recordinghelpers.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScreen>
#include <QStringConverter>
#include <QTemporaryDir>
#include <QTest>

#include <xcb/xcb.h>

#include <cstdlib>
#include <ctime>
#include <memory>

namespace {

constexpr int kToolTimeoutMs = 30'000;
constexpr int kStartTimeoutMs = 60'000;
constexpr int kPollMs = 50;

/// That of the desktop that there is.
QProcess* currentProbe = nullptr;

template <typename T>
struct Free
{
    void operator()(T* pointer) const { std::free(pointer); }
};

template <typename T>
using Reply = std::unique_ptr<T, Free<T>>;

int64_t nanoseconds(clockid_t clock)
{
    constexpr int64_t kPerSecond = 1'000'000'000;
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * kPerSecond + now.tv_nsec;
}

WindowsWindow::Layer layerFrom(const QJsonObject& layer)
{
    return {layer.value(QLatin1String("key")).toInteger(), layer.value(QLatin1String("alpha")).toInt(),
            layer.value(QLatin1String("flags")).toInteger()};
}

WindowsWindow windowFrom(const QJsonObject& object)
{
    const auto flag = [&object](const char* name) { return object.value(QLatin1String(name)).toBool(); };
    const QJsonObject position = object.value(QLatin1String("position")).toObject();
    const auto pixels = [&position](const char* name) { return position.value(QLatin1String(name)).toInt(); };
    WindowsWindow window;
    window.handle = object.value(QLatin1String("handle")).toInteger();
    window.process = object.value(QLatin1String("process")).toInteger();
    window.program = object.value(QLatin1String("program")).toString();
    window.title = object.value(QLatin1String("title")).toString();
    window.position = QRect(pixels("left"), pixels("top"), pixels("width"), pixels("height"));
    window.isVisible = flag("visible");
    window.isMinimised = flag("minimised");
    window.isForeground = flag("foreground");
    window.isTopmost = flag("topmost");
    if (const QJsonValue layer = object.value(QLatin1String("layer")); layer.isObject())
        window.layer = layerFrom(layer.toObject());
    return window;
}

QString desktopSettings(const QSize& size)
{
    return QStringLiteral("[HKEY_CURRENT_USER\\Software\\Wine\\Explorer]\n\"Desktop\"=\"kestrano\"\n"
                          "[HKEY_CURRENT_USER\\Software\\Wine\\Explorer\\Desktops]\n\"kestrano\"=\"%1x%2\"\n")
        .arg(size.width())
        .arg(size.height());
}

/// Before the desktop is there: a program that runs already would make one of another size.
bool storeDesktopSettings(const QSize& size)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("settings.reg")));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QStringEncoder encoder(QStringEncoder::Utf16LE, QStringEncoder::Flag::WriteBom);
    const QByteArray bytes = encoder(QLatin1String("Windows Registry Editor Version 5.00\n\n") + desktopSettings(size));
    file.write(bytes);
    file.close();
    QProcess regedit;
    regedit.start(QStringLiteral("wine"),
                  {QStringLiteral("regedit"), QStringLiteral("/S"), WineDesktop::windowsPath(file.fileName())});
    return regedit.waitForFinished(kToolTimeoutMs) && regedit.exitStatus() == QProcess::NormalExit &&
           regedit.exitCode() == 0;
}

/// Whether the window or one in it is there to be seen at that position, from the parent's top left corner.
bool isShownIn(xcb_connection_t* connection, xcb_window_t parent, const QRect& position)
{
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, parent), nullptr));
    if (!tree)
        return false;
    const xcb_window_t* const children = xcb_query_tree_children(tree.get());
    for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index) {
        const xcb_window_t child = children[index];
        const Reply<xcb_get_geometry_reply_t> is(
            xcb_get_geometry_reply(connection, xcb_get_geometry(connection, child), nullptr));
        const Reply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, child), nullptr));
        if (!is || !attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
            continue;
        if (QRect(is->x, is->y, is->width, is->height) == position ||
            isShownIn(connection, child, position.translated(-is->x, -is->y)))
            return true;
    }
    return false;
}

} // namespace

WineDesktop::~WineDesktop()
{
    currentProbe = nullptr;
    QProcess::execute(QStringLiteral("wineserver"), {QStringLiteral("-k")});
    for (QProcess* process : {&m_probe, &m_explorer}) {
        process->kill();
        process->waitForFinished();
    }
    QProcess::execute(QStringLiteral("wineserver"), {QStringLiteral("-w")});
}

QString WineDesktop::begin()
{
    for (const char* variable : {"WINEPREFIX", "KESTRANO_WINDOWS_BUILD", "KESTRANO_WINDOWS_PROGRAM"})
        if (!qEnvironmentVariableIsSet(variable))
            return QLatin1String(variable) + QLatin1String(" is not set: tools/test-windows runs this test");
    const QSize size = QGuiApplication::primaryScreen()->size();
    if (!storeDesktopSettings(size))
        return QStringLiteral("Wine's registry cannot be written");
    m_explorer.start(
        QStringLiteral("wine"),
        {QStringLiteral("explorer"), QStringLiteral("/desktop=kestrano,%1x%2").arg(size.width()).arg(size.height())});
    if (!m_explorer.waitForStarted())
        return m_explorer.errorString();
    QElapsedTimer waited;
    waited.start();
    while (
        QProcess::execute(QStringLiteral("xdotool"), {"search", "--onlyvisible", "--name", "kestrano - Wine desktop"}))
        if (waited.hasExpired(kStartTimeoutMs))
            return QStringLiteral("there is no Wine desktop");
    m_probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QString failure = launch(m_probe, QStringLiteral("kestrano_test_win32probe"), {QStringLiteral("answer")});
    if (failure.isEmpty())
        currentProbe = &m_probe;
    return failure;
}

QString WineDesktop::windowsPath(const QString& path)
{
    return QLatin1String("Z:") + QString(path).replace(QLatin1Char('/'), QLatin1Char('\\'));
}

QString WineDesktop::unixPath(const QString& windowsPath)
{
    return windowsPath.section(QLatin1Char(':'), 1).replace(QLatin1Char('\\'), QLatin1Char('/'));
}

QString WineDesktop::tool(const QString& name)
{
    return qEnvironmentVariable("KESTRANO_WINDOWS_BUILD") + QLatin1Char('/') + name + QLatin1String(".exe");
}

QString WineDesktop::program()
{
    return qEnvironmentVariable("KESTRANO_WINDOWS_PROGRAM") + QLatin1String("/kestrano.exe");
}

QString WineDesktop::launch(QProcess& process, const QString& name, const QStringList& arguments)
{
    process.start(QStringLiteral("wine"), QStringList{tool(name)} + arguments);
    while (!process.canReadLine())
        if (!process.waitForReadyRead(kStartTimeoutMs))
            return name + QLatin1String(" did not get ready: ") + process.errorString() +
                   QString::fromLocal8Bit(process.readAllStandardError());
    return process.readLine().startsWith("READY") ? QString() : name + QLatin1String(" is not ready");
}

std::optional<QJsonValue> WineDesktop::ask(const QStringList& question)
{
    if (currentProbe == nullptr)
        return std::nullopt;
    currentProbe->readAllStandardOutput();
    currentProbe->write(QJsonDocument(QJsonArray::fromStringList(question)).toJson(QJsonDocument::Compact) + '\n');
    while (!currentProbe->canReadLine())
        if (!currentProbe->waitForReadyRead(kToolTimeoutMs))
            return std::nullopt;
    const QJsonArray answer = QJsonDocument::fromJson(currentProbe->readLine()).array();
    return answer.isEmpty() ? std::nullopt : std::optional(answer.first());
}

QList<WindowsWindow> WineDesktop::windows()
{
    QList<WindowsWindow> windows;
    const QJsonArray array = ask({QStringLiteral("windows")}).value_or(QJsonValue()).toArray();
    for (const auto& window : array)
        windows.append(windowFrom(window.toObject()));
    return windows;
}

std::optional<WindowsWindow> WineDesktop::visibleWindow(const QString& title, int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    do {
        const QList<WindowsWindow> candidates = windows();
        for (const WindowsWindow& window : candidates)
            if (window.isVisible && window.program == QLatin1String("kestrano.exe") &&
                (title.isEmpty() || window.title == title))
                return window;
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(timeoutMs));
    return std::nullopt;
}

bool WineDesktop::isShown(const QRect& position)
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(xcb_connect(nullptr, nullptr),
                                                                                  &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0)
        return false;
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    return isShownIn(connection.get(), screen->root, position);
}

bool WineDesktop::pointTo(const QPoint& position)
{
    const auto input = [] { return ask({QStringLiteral("input")}).value_or(QJsonValue()).toObject(); };
    const auto isThere = [&position](const QJsonObject& now) {
        return QPoint(now.value(QLatin1String("x")).toInt(-1), now.value(QLatin1String("y")).toInt(-1)) == position;
    };
    const QJsonObject before = input();
    if (isThere(before))
        return true;
    if (!::pointTo(position))
        return false;
    QElapsedTimer waited;
    waited.start();
    do {
        const QJsonObject now = input();
        if (isThere(now) && now.value(QLatin1String("moment")) != before.value(QLatin1String("moment")))
            return true;
        QTest::qWait(kPollMs / 5);
    } while (!waited.hasExpired(kToolTimeoutMs));
    return false;
}

QMap<QString, QString> WineDesktop::stored(const QString& key)
{
    QMap<QString, QString> values;
    const QJsonObject object = ask({QStringLiteral("stored"), key}).value_or(QJsonValue()).toObject();
    for (auto value = object.begin(); value != object.end(); ++value)
        values.insert(value.key(), value.value().toString());
    return values;
}

int64_t WineDesktop::clockAheadNs()
{
    return nanoseconds(CLOCK_MONOTONIC_RAW) - nanoseconds(CLOCK_MONOTONIC);
}
