// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/stockengine.h"

#include "engine/capture/capturetargets.h"
#include "tests/support/testpattern.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTest>

namespace {

constexpr int kStartTimeoutMs = 10'000;
constexpr int kEndTimeoutMs = 10'000;
const auto kDefaultDevice = QStringLiteral("default");

} // namespace

StockEngine::~StockEngine()
{
    for (QProcess* process : {&m_patternProcess, &m_tone}) {
        process->terminate();
        process->waitForFinished();
    }
}

QString StockEngine::perform(QProcess& process, const char* name, const QStringList& arguments)
{
    process.close();
    process.start(QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name), arguments);
    return process.waitForReadyRead(kStartTimeoutMs) ? QString() : QLatin1String(name) + QLatin1String(" is not there");
}

QString StockEngine::showPattern()
{
    return perform(m_patternProcess, "kestrano_test_pattern",
                   {QStringLiteral("--rate"), QString::number(kPatternRate)});
}

QString StockEngine::playTone()
{
    return perform(m_tone, "kestrano_test_tone", {});
}

QString StockEngine::start(const EngineTimings& timings, const CapturePlatform& platform)
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    m_screen = QRect(screen->geometry().topLeft(), screen->size() * screen->devicePixelRatio());
    m_engine = std::make_unique<ObsWrapper>(platform, timings);
    if (!m_engine->initialize(m_screen.width(), m_screen.height(), kFps))
        return QStringLiteral("the engine does not start");
    if (m_engine->setupScene(ObsWrapper::kCaptureMonitor) != 0)
        return QStringLiteral("there is no scene");
    m_engine->setDesktopAudioDevice(true, kDefaultDevice);
    m_engine->refreshCaptureTargets(false);
    if (!setMargins(0, 0, 0, 0))
        return QStringLiteral("the screen is none of ") + m_engine->captureTargetNames().join(QLatin1Char('|'));
    m_engine->setCaptureCursor(true);
    return {};
}

bool StockEngine::setMargins(int left, int right, int top, int bottom)
{
    m_size = m_screen.marginsRemoved({left, top, right, bottom}).size();
    return m_engine->resetVideo(m_size.width(), m_size.height(), m_size.width(), m_size.height(), kFps) == 0 &&
           setTarget(left, right, top, bottom);
}

bool StockEngine::setTarget(int left, int right, int top, int bottom)
{
    const QString target = captureTargetForScreen(m_engine->captureTargetNames(), m_screen);
    return m_engine->setCaptureTarget(target.toUtf8().constData(), ObsWrapper::kCaptureMonitor,
                                      m_size != m_screen.size(), left, right, top, bottom);
}

QString StockEngine::begin(const QString& storePath, int format)
{
    m_engine->setupFFmpeg(storePath, m_size.width(), m_size.height(), kFps, kBitRate, format);
    if (m_engine->startRecording() != 0)
        return QStringLiteral("the recording does not start");
    // Opening the file takes its time on a busy machine.
    return QTest::qWaitFor([this] { return m_engine->recordedFrames() > 0; }, kStartTimeoutMs)
               ? QString()
               : QStringLiteral("no frame arrives");
}

QString StockEngine::end()
{
    m_engine->requestRecordingEnd();
    const bool reached = QTest::qWaitFor([this] { return m_engine->isRecordingEndReached(); }, kEndTimeoutMs);
    m_engine->stopRecording(false);
    return reached ? QString() : QStringLiteral("the end is not reached");
}

std::optional<uint32_t> StockEngine::numberOnScreen()
{
    const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    const TestPattern pattern(screen.size());
    QList<int> brightness;
    for (int i = 0; i < pattern.blockCount(); ++i)
        brightness << qGray(screen.pixel(pattern.block(i).center()));
    return TestPattern::numberFromBlocks(brightness);
}
