// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/screenvideo.h"
#include "engine/core/rawvideo.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <obs.h>
#include <util/platform.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace {

constexpr int kFps = 100;
constexpr int kTimeoutMs = 20'000;
const QSize kSize(34, 18);

/// What a source was asked, and what it does.
struct Script
{
    std::atomic<int> updates{0};
    std::atomic<int> originX{0};
    std::atomic<bool> showsPointer{true};
    std::atomic<bool> isGone{false};
    /// Whether updates wait, and one does.
    std::atomic<bool> hangs{false};
    std::atomic<bool> isHanging{false};
    /// Milliseconds that the next update takes.
    std::atomic<int> nextUpdateMs{0};
    /// The number of the update that took so long.
    std::atomic<int> slowUpdate{0};
};

/// Writes the number of its last update into the luma of each frame.
class NumberedFrames : public FrameSource
{
public:
    explicit NumberedFrames(Script& script) : m_script(script) {}
    ~NumberedFrames() override { m_script.isGone = true; }

    void setOrigin(const QPoint& origin) override { m_script.originX = origin.x(); }
    void setPointer(const FramePointer& pointer) override { m_script.showsPointer = pointer.isShown; }
    void update(std::uint64_t) override
    {
        ++m_script.updates;
        while (m_script.hangs) {
            m_script.isHanging = true;
            os_sleep_ms(1);
        }
        const int sleepMs = m_script.nextUpdateMs.exchange(0);
        if (sleepMs == 0)
            return;
        m_script.slowUpdate = m_script.updates.load();
        os_sleep_ms(static_cast<uint32_t>(sleepMs));
    }
    void write(const I420View& frame) override
    {
        for (int y = 0; y < kSize.height(); ++y)
            std::fill_n(frame.planes[0] + static_cast<std::ptrdiff_t>(y) * frame.stridesBytes[0], kSize.width(),
                        static_cast<std::uint8_t>(m_script.updates));
    }

private:
    Script& m_script;
};

/// Collects the frames of a video.
class Listener
{
public:
    struct Frame
    {
        std::uint64_t timestampNs;
        std::uint8_t first;
        std::uint8_t last;
    };

    explicit Listener(video_t* video) : m_video(video) { connectRawVideo(m_video, &Listener::onFrame, this); }
    ~Listener() { disconnectRawVideo(m_video, &Listener::onFrame, this); }

    bool waitFor(std::size_t count)
    {
        return QTest::qWaitFor([&] { return frames().size() >= count; }, kTimeoutMs);
    }

    std::vector<Frame> frames()
    {
        const std::lock_guard lock(m_mutex);
        return m_frames;
    }

private:
    static void onFrame(void* param, video_data* frame)
    {
        auto& self = *static_cast<Listener*>(param);
        const auto* const last =
            frame->data[0] + static_cast<std::ptrdiff_t>(frame->linesize[0]) * (kSize.height() - 1);
        const std::lock_guard lock(self.m_mutex);
        self.m_frames.push_back({frame->timestamp, frame->data[0][0], last[kSize.width() - 1]});
    }

    video_t* m_video;
    std::mutex m_mutex;
    std::vector<Frame> m_frames;
};

} // namespace

class TestScreenVideo : public QObject
{
    Q_OBJECT

private slots:
    /// Video outputs take a profile of their threads with the core.
    void initTestCase() { QVERIFY(obs_startup("en-US", nullptr, nullptr)); }
    void cleanupTestCase() { obs_shutdown(); }

    void init()
    {
        m_script = std::make_unique<Script>();
        m_video = ScreenVideo::open(std::make_unique<NumberedFrames>(*m_script), kSize, kFps);
        QVERIFY(m_video);
    }

    void cleanup()
    {
        m_video.reset();
        QTRY_VERIFY_WITH_TIMEOUT(m_areStopped || m_script->isGone, kTimeoutMs);
    }

    void formatIsThatOfTheEngine()
    {
        const video_output_info& info = *video_output_get_info(m_video->video());
        QCOMPARE(info.format, VIDEO_FORMAT_I420);
        QCOMPARE(info.colorspace, VIDEO_CS_709);
        QCOMPARE(info.range, VIDEO_RANGE_FULL);
        // No multiple of 4, as libobs' own has to be.
        QCOMPARE(QSize(static_cast<int>(info.width), static_cast<int>(info.height)), kSize);
        QCOMPARE(video_output_get_frame_time(m_video->video()), 10'000'000U);
    }

    void framesAreMadeWhileSomebodyListens()
    {
        QTest::qWait(50);
        QCOMPARE(m_script->updates, 0);
        {
            Listener listener(m_video->video());
            QVERIFY(listener.waitFor(5));
        }
        // The one that is being made may still come.
        const int updates = m_script->updates + 1;
        QTest::qWait(50);
        QVERIFY(m_script->updates <= updates);
        Listener listener(m_video->video());
        QVERIFY(listener.waitFor(5));
    }

    void framesArriveWholeInOrderAndOneIntervalApart()
    {
        // Their numbers have eight bits.
        constexpr std::size_t kFrames = 30;
        Listener listener(m_video->video());
        QVERIFY(listener.waitFor(kFrames));
        const std::vector<Listener::Frame> frames = listener.frames();
        for (std::size_t i = 1; i < kFrames; ++i) {
            QCOMPARE(frames[i].timestampNs - frames[i - 1].timestampNs, 10'000'000U);
            QCOMPARE(frames[i].last, frames[i].first);
            QVERIFY(frames[i].first >= frames[i - 1].first);
        }
    }

    void missedFramesShowWhatTheScreenShowedBefore()
    {
        Listener listener(m_video->video());
        QVERIFY(listener.waitFor(3));
        const std::uint64_t before = m_video->laggedFrames();
        m_script->nextUpdateMs = 105;
        QTRY_VERIFY_WITH_TIMEOUT(m_video->laggedFrames() >= before + 9, kTimeoutMs);
        QVERIFY(listener.waitFor(listener.frames().size() + 20));
        const std::vector<Listener::Frame> frames = listener.frames();
        std::map<int, int> intervals;
        for (std::size_t i = 1; i < frames.size(); ++i) {
            // The pace is kept all the same.
            QCOMPARE(frames[i].timestampNs - frames[i - 1].timestampNs, 10'000'000U);
            ++intervals[frames[i].first];
        }
        QVERIFY(intervals[m_script->slowUpdate % 256] >= 10);
    }

    void finishedVideoMakesNoFrames()
    {
        Listener listener(m_video->video());
        QVERIFY(listener.waitFor(3));
        m_video->finish();
        // The one that is being made may still come.
        const int updates = m_script->updates + 1;
        QTest::qWait(50);
        QVERIFY(m_script->updates <= updates);
    }

    void originAndPointerReachTheSourceBeforeTheNextFrame()
    {
        m_video->setOrigin(QPoint(77, 0));
        m_video->setPointer(FramePointer{.isShown = false, .effects = {}});
        Listener listener(m_video->video());
        QVERIFY(listener.waitFor(1));
        QCOMPARE(m_script->originX, 77);
        QVERIFY(!m_script->showsPointer);
        m_video->setOrigin(QPoint(78, 0));
        QTRY_COMPARE(m_script->originX, 78);
        QVERIFY(!m_script->showsPointer);
    }

    void itGoesAtAnyMoment()
    {
        for (int round = 0; round < 30; ++round) {
            Script script;
            {
                const auto video = ScreenVideo::open(std::make_unique<NumberedFrames>(script), kSize, 1000);
                if (round % 3 != 0) {
                    Listener listener(video->video());
                    QVERIFY(round % 3 == 2 || listener.waitFor(static_cast<std::size_t>(round)));
                }
            }
            QTRY_VERIFY_WITH_TIMEOUT(script.isGone, kTimeoutMs);
        }
    }

    void sourceThatHangsHoldsNobodyUp()
    {
        Script script;
        auto hanging = ScreenVideo::open(std::make_unique<NumberedFrames>(script), kSize, kFps);
        script.hangs = true;
        {
            const Listener first(hanging->video());
            QTRY_VERIFY_WITH_TIMEOUT(script.isHanging, kTimeoutMs);
            Listener second(m_video->video());
            QVERIFY(second.waitFor(5));
        }
        hanging.reset();
        QVERIFY(!script.isGone);
        script.hangs = false;
        QTRY_VERIFY_WITH_TIMEOUT(script.isGone, kTimeoutMs);
    }

    /// Last: no video makes frames any more.
    void endOfTheProcessDoesNotWaitForASourceThatHangs()
    {
        // Its video stays, as they do in exit().
        static Script script;
        auto hanging = ScreenVideo::open(std::make_unique<NumberedFrames>(script), kSize, kFps);
        script.hangs = true;
        {
            const Listener listener(m_video->video());
            Listener hangingListener(hanging->video());
            QTRY_VERIFY_WITH_TIMEOUT(script.isHanging && m_script->updates > 3, kTimeoutMs);
            ScreenVideo::stopForGood();
            m_areStopped = true;
            const int updates = m_script->updates;
            script.hangs = false;
            QTest::qWait(50);
            QCOMPARE(m_script->updates, updates);
            QVERIFY(hangingListener.frames().empty());
        }
        // Gives the destruction its time.
        hanging.reset();
        QVERIFY(!script.isGone);
    }

private:
    bool m_areStopped = false;
    std::unique_ptr<Script> m_script;
    std::shared_ptr<ScreenVideo> m_video;
};

REGISTER_TEST(testrun::core<TestScreenVideo>);

#include "test_screenvideo.moc"
