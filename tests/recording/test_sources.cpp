// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"
#include "tests/support/testtone.h"

#include <QProcess>
#include <QTest>

namespace {

const auto kMp4 = QStringLiteral("mp4");
constexpr int kShortMs = 1500;

/// A tone that the microphone hears, for as long as the object lives.
class VoiceAtTheMicrophone
{
public:
    static constexpr int kFrequencyHz = 720;

    VoiceAtTheMicrophone()
    {
        const QString tone = QStringLiteral("sine=frequency=%1:sample_rate=48000").arg(kFrequencyHz);
        m_player.start(QStringLiteral("ffmpeg"),
                       {"-hide_banner", "-nostdin", "-re", "-f", "lavfi", "-i", tone, "-f", "pulse", "-device",
                        qEnvironmentVariable("KESTRANO_TEST_MICROPHONE_SINK"), "voice"});
    }

    ~VoiceAtTheMicrophone()
    {
        m_player.kill();
        m_player.waitForFinished();
    }

    bool isHeard() { return m_player.waitForStarted() && m_player.state() == QProcess::Running; }

private:
    QProcess m_player;
};

} // namespace

/// What the running program records, where it is not the one screen and its sound.
class TestSources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_performance.begin(), QString()); }

    void theMicrophoneIsHeardWhereItIsSwitchedOn_data()
    {
        QTest::addColumn<bool>("on");
        QTest::newRow("on") << true;
        QTest::newRow("off") << false;
    }

    void theMicrophoneIsHeardWhereItIsSwitchedOn()
    {
        QFETCH(const bool, on);
        VoiceAtTheMicrophone voice;
        QVERIFY(voice.isHeard());
        ProgramUnderTest program;
        program.setSetting(QStringLiteral("recording/micSwitch"), on);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const Take take = record(program, kMp4, 2 * kShortMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY(voice.isHeard());
        constexpr int kSpan = testtone::kSamplesPerSecond / 2;
        const QList<float> samples = MediaFile(take.path).samples(testtone::kSamplesPerSecond);
        const auto loudness = [&samples](double frequencyHz) {
            return testtone::amplitude(samples, samples.size() / 2, kSpan, frequencyHz, testtone::kSamplesPerSecond);
        };
        const double heard = loudness(VoiceAtTheMicrophone::kFrequencyHz);
        QVERIFY2(on ? heard > 0.05 : heard < 0.005, qPrintable(QString::number(heard)));
        // The sound of the computer is in the file beside it.
        QVERIFY2(loudness(testtone::kBaseFrequencyHz) > 0.05, qPrintable(QString::number(loudness(440.0))));
    }

    void aPrimaryScreenOffTheOriginIsRecorded()
    {
        const TwoScreens screens({640, 360});
        QVERIFY(screens.areMade());
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const Take take = record(program, kMp4, kShortMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const MediaFile file(take.path);
        QVERIFY2(file.isReadable() && file.video(), qPrintable(file.error()));
        QCOMPARE(file.video()->size, screens.primary().size());
        const QImage image = file.frameAt(file.durationSeconds() / 2);
        int compared = 0;
        const QList<TestPattern::Patch> patches = TestPattern({640, 360}).patches();
        for (const TestPattern::Patch& patch : patches) {
            if (!screens.primary().contains(patch.area))
                continue;
            const QColor found = meanColour(image, patch.area.center() - screens.primary().topLeft(), 4);
            QVERIFY2(colourDistance(found, patch.colour) <= 12,
                     qPrintable(patch.colour.name() + QLatin1String(" came out as ") + found.name()));
            ++compared;
        }
        QCOMPARE(compared, 4);
    }

private:
    Performance m_performance;
};

REGISTER_TEST(testrun::core<TestSources>);
#include "test_sources.moc"
