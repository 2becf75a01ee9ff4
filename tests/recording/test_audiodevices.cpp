// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/heldkeyboard.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"
#include "tests/support/testtone.h"

#include <QProcess>
#include <QTest>

#include <utility>

#include <cmath>
#include <memory>

namespace {

constexpr int kTimeoutMs = 30'000;
constexpr int kStretchMs = 2500;
/// Before the end of a stretch, for the half second that is judged.
constexpr double kJudgedBeforeEnd = 0.8;
/// Heard by the headphones, and by the headset's microphone.
constexpr int kFrequencyHz = 720;

QString pactl(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("pactl"), arguments);
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

/// Headphones with a microphone beside the default devices, which both hear a tone, for as long as the object lives.
/// They are the last ones in their lists.
class Headset
{
public:
    Headset()
    {
        m_sink = pactl({"load-module", "module-null-sink", "sink_name=headphones", "rate=48000",
                        "sink_properties=device.description=Headphones"});
        m_source = pactl({"load-module", "module-remap-source", "source_name=headset", "master=headphones.monitor",
                          "source_properties=device.description=Headset"});
        const QString tone = QStringLiteral("sine=frequency=%1:sample_rate=48000").arg(kFrequencyHz);
        m_player.start(QStringLiteral("ffmpeg"), {"-hide_banner", "-nostdin", "-re", "-f", "lavfi", "-i", tone, "-f",
                                                  "pulse", "-device", "headphones", "music"});
    }

    ~Headset()
    {
        m_player.kill();
        m_player.waitForFinished();
        unplug();
    }

    bool isHeard() { return m_player.waitForStarted() && m_player.state() == QProcess::Running; }

    void unplug()
    {
        for (const QString& module : {std::exchange(m_source, {}), std::exchange(m_sink, {})})
            if (!module.isEmpty())
                pactl({"unload-module", module});
    }

private:
    QString m_sink;
    QString m_source;
    QProcess m_player;
};

/// Chooses the last device of a menu with the keyboard. @param steps to its button from the record button
bool chooseLastDevice(ProgramUnderTest& program, int steps, const QString& name)
{
    if (!goBackFromRecordButton(program, steps))
        return false;
    const qsizetype from = program.messages().size();
    ProgramUnderTest::pressKey(QStringLiteral("space"));
    if (!QTest::qWaitFor(&heldkeyboard::isHeld, kTimeoutMs))
        return false;
    // From the first one.
    for (const char* key : {"Up", "Return"})
        ProgramUnderTest::pressKey(QLatin1String(key));
    return program.waitForMessage(QLatin1String("Audio device: ") + name, kTimeoutMs, from).has_value();
}

/// What is heard in a file of two frequencies.
class Heard
{
public:
    explicit Heard(const QString& path) : m_samples(MediaFile(path).samples(testtone::kSamplesPerSecond)) {}

    double seconds() const { return static_cast<double>(m_samples.size()) / testtone::kSamplesPerSecond; }
    double headset(double atSeconds) const { return loudness(atSeconds, kFrequencyHz); }
    double desktop(double atSeconds) const { return loudness(atSeconds, testtone::kBaseFrequencyHz); }

private:
    double loudness(double atSeconds, double frequencyHz) const
    {
        const auto first = static_cast<qsizetype>(atSeconds * testtone::kSamplesPerSecond);
        return testtone::amplitude(m_samples, first, testtone::kSamplesPerSecond / 2, frequencyHz,
                                   testtone::kSamplesPerSecond);
    }

    QList<float> m_samples;
};

constexpr double kLoud = 0.05;
constexpr double kSilent = 0.005;

} // namespace

/// Microphone and speaker that the user of the running program has chosen, and one that goes while it is recorded.
class TestAudioDevices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_performance.begin(), QString()); }

    void init()
    {
        m_headset = std::make_unique<Headset>();
        QVERIFY(m_headset->isHeard());
    }

    void cleanup() { m_headset.reset(); }

    void chosenDeviceIsRecorded_data()
    {
        QTest::addColumn<int>("steps");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isDesktopHeard");
        QTest::newRow("speaker") << kStepsToSpeakers << "Headphones" << false;
        QTest::newRow("microphone") << kStepsToMicrophones << "Headset" << true;
    }

    void chosenDeviceIsRecorded()
    {
        QFETCH(const int, steps);
        QFETCH(const QString, name);
        QFETCH(const bool, isDesktopHeard);
        ProgramUnderTest program;
        program.setSetting(QStringLiteral("recording/micSwitch"), isDesktopHeard);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY2(chooseLastDevice(program, steps, name), qPrintable(program.transcript()));
        const Take take = record(program, QStringLiteral("mp4"), kStretchMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const Heard heard(take.path);
        const double middle = heard.seconds() - 1.0;
        QVERIFY2(heard.headset(middle) > kLoud, qPrintable(QString::number(heard.headset(middle))));
        const double desktop = heard.desktop(middle);
        QVERIFY2(isDesktopHeard ? desktop > kLoud : desktop < kSilent, qPrintable(QString::number(desktop)));
    }

    void speakerThatGoesWhileItIsRecordedIsReplacedByTheDefaultOne()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY2(chooseLastDevice(program, kStepsToSpeakers, QStringLiteral("Headphones")),
                 qPrintable(program.transcript()));
        Take take = beginTake(program, QStringLiteral("mp4"));
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kStretchMs);
        const double unplugged = secondsInto(take);
        m_headset->unplug();
        for (const char* text : {"The chosen speaker has vanished: the default one is used",
                                 "Headphones is gone: the sound of the default speaker is used."})
            QVERIFY2(program.waitForMessage(QLatin1String(text), kTimeoutMs), qPrintable(program.transcript()));
        const double replaced = secondsInto(take);
        QTest::qWait(kStretchMs);
        const double end = secondsInto(take);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

        const Heard heard(take.path);
        QVERIFY2(heard.headset(unplugged - kJudgedBeforeEnd) > kLoud, "before");
        QVERIFY2(heard.desktop(unplugged - kJudgedBeforeEnd) < kSilent, "before");
        const double between = (unplugged + replaced) / 2;
        QVERIFY2(heard.headset(between) < kSilent && heard.desktop(between) < kSilent, "between");
        QVERIFY2(heard.desktop(end - kJudgedBeforeEnd) > kLoud, "after");
        const MediaFile file(take.path);
        QVERIFY(file.video());
        QVERIFY(std::abs(heard.seconds() - file.video()->durationSeconds) < 0.3);
    }

private:
    static double secondsInto(const Take& take) { return static_cast<double>(monotonicNow() - take.startedNs) / 1e9; }

    std::unique_ptr<Headset> m_headset;
    Performance m_performance;
};

REGISTER_TEST(testrun::core<TestAudioDevices>);

#include "test_audiodevices.moc"
