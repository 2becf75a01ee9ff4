#include "tests/windows/winedesktop.h"

#include <QDir>
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

#include <ctime>

namespace {

constexpr int kToolTimeoutMs = 30'000;
constexpr int kStartTimeoutMs = 60'000;
constexpr int kPollMs = 100;

bool runWine(const QStringList& arguments, QByteArray* output = nullptr)
{
    QProcess process;
    process.start(QStringLiteral("wine"), arguments);
    const bool ended = process.waitForFinished(kToolTimeoutMs);
    if (output != nullptr)
        *output = process.readAllStandardOutput();
    return ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

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
    const QJsonObject place = object.value(QLatin1String("place")).toObject();
    const auto pixels = [&place](const char* name) { return place.value(QLatin1String(name)).toInt(); };
    WindowsWindow window;
    window.handle = object.value(QLatin1String("handle")).toInteger();
    window.process = object.value(QLatin1String("process")).toInteger();
    window.program = object.value(QLatin1String("program")).toString();
    window.title = object.value(QLatin1String("title")).toString();
    window.place = QRect(pixels("left"), pixels("top"), pixels("width"), pixels("height"));
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

} // namespace

WineDesktop::~WineDesktop()
{
    QProcess::execute(QStringLiteral("wineserver"), {QStringLiteral("-k")});
    m_explorer.kill();
    m_explorer.waitForFinished();
    QProcess::execute(QStringLiteral("wineserver"), {QStringLiteral("-w")});
}

QString WineDesktop::begin()
{
    for (const char* variable : {"WINEPREFIX", "KESTRANO_WINDOWS_BUILD", "KESTRANO_WINDOWS_PROGRAM"})
        if (!qEnvironmentVariableIsSet(variable))
            return QLatin1String(variable) + QLatin1String(" is not set: tools/test-windows runs this test");
    const QSize size = QGuiApplication::primaryScreen()->size();
    if (!importRegistry(desktopSettings(size)))
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
    return {};
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

bool WineDesktop::importRegistry(const QString& lines)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("settings.reg")));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QStringEncoder encoder(QStringEncoder::Utf16LE, QStringEncoder::Flag::WriteBom);
    const QByteArray bytes = encoder(QLatin1String("Windows Registry Editor Version 5.00\n\n") + lines);
    file.write(bytes);
    file.close();
    return runWine({QStringLiteral("regedit"), QStringLiteral("/S"), windowsPath(file.fileName())});
}

QString WineDesktop::exportRegistry(const QString& key)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("settings.reg")));
    if (!runWine({QStringLiteral("reg"), QStringLiteral("export"), key, windowsPath(file.fileName()),
                  QStringLiteral("/y")}) ||
        !file.open(QIODevice::ReadOnly))
        return {};
    QStringDecoder decoder(QStringDecoder::Utf16LE);
    return QString(decoder(file.readAll())).remove(QLatin1Char('\r'));
}

bool WineDesktop::probe(const QStringList& arguments, QByteArray* answer)
{
    return runWine(QStringList{tool(QStringLiteral("kestrano_test_windowprobe"))} + arguments, answer);
}

QList<WindowsWindow> WineDesktop::windows()
{
    QByteArray answer;
    probe({QStringLiteral("windows")}, &answer);
    QList<WindowsWindow> windows;
    const QJsonArray array = QJsonDocument::fromJson(answer).array();
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

int64_t WineDesktop::clockAheadNs()
{
    return nanoseconds(CLOCK_MONOTONIC_RAW) - nanoseconds(CLOCK_MONOTONIC);
}
