// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "engine/core/obshandles.h"
#include "tests/engine/loudness.h"
#include "tests/engine/stockengine.h"
#include "tests/support/mediafile.h"
#include "tests/support/testpattern.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "tests/support/testtone.h"

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kVoiceHz = 720;
constexpr int kTimeoutMs = 20'000;
constexpr int kStretchMs = 2500;
/// Seconds before the end of a stretch from which half a second is judged.
constexpr double kMeasuredBeforeEnd = 0.8;

QString pactl(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("pactl"), arguments);
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

/// The columns of every line of a list of the sound server's.
QList<QStringList> listed(const char* kind)
{
    QList<QStringList> lines;
    for (const QString& line : pactl({"list", "short", kind}).split(QLatin1Char('\n')))
        lines << line.split(QLatin1Char('\t'));
    return lines;
}

/// Whether somebody records from the source of this name.
bool isListenedTo(const QString& source)
{
    for (const QStringList& there : listed("sources")) {
        if (there.value(1) != source)
            continue;
        for (const QStringList& listener : listed("source-outputs"))
            if (listener.value(1) == there.value(0))
                return true;
    }
    return false;
}

/// The desktop's microphone, which can be pulled out and put in.
class Microphone
{
public:
    Microphone()
    {
        const QString name = qEnvironmentVariable("KESTRANO_TEST_MICROPHONE");
        for (const QString& line : pactl({"list", "short", "modules"}).split(QLatin1Char('\n')))
            if (line.contains(QLatin1String("source_name=") + name))
                m_module = line.section(QLatin1Char('\t'), 0, 0);
        const QString tone = QStringLiteral("sine=frequency=%1:sample_rate=48000").arg(kVoiceHz);
        m_voice.start(QStringLiteral("ffmpeg"), {"-hide_banner", "-nostdin", "-re", "-f", "lavfi", "-i", tone, "-f",
                                                 "pulse", "-device", sink(), "voice"});
    }

    ~Microphone()
    {
        m_voice.kill();
        m_voice.waitForFinished();
    }

    bool isThere() const { return !m_module.isEmpty(); }

    void pullOut()
    {
        pactl({"unload-module", m_module});
        m_module.clear();
    }

    void putIn()
    {
        m_module = pactl({"load-module", "module-remap-source",
                          QLatin1String("source_name=") + qEnvironmentVariable("KESTRANO_TEST_MICROPHONE"),
                          QStringLiteral("master=%1.monitor").arg(sink())});
    }

private:
    static QString sink() { return qEnvironmentVariable("KESTRANO_TEST_MICROPHONE_SINK"); }

    QString m_module;
    QProcess m_voice;
};

} // namespace

/// A microphone that vanishes while it is recorded, with the stock plug-ins and a real sound server.
class TestStockMicrophone : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_microphone.isThere());
        QCOMPARE(m_stock.showPattern(), QString());
        QCOMPARE(m_stock.playTone(), QString());
        QCOMPARE(m_stock.start(), QString());
        m_stock.engine().setMicDevice(true, QStringLiteral("default"));
        waitUntilAllIsHeard();
    }

    void cleanupTestCase() { m_stock.release(); }

    void microphoneThatVanishesIsUsedAgainWhenItComesBack()
    {
        const QString path = m_folder.filePath(QStringLiteral("film"));
        QCOMPARE(m_stock.begin(path, 1), QString());
        m_begun = monotonicNow();
        const double with = stretch();
        const double pulled = secondsRecorded();
        m_microphone.pullOut();
        QTRY_VERIFY_WITH_TIMEOUT(isMicrophoneMuted(), kTimeoutMs);
        const double without = stretch();
        m_microphone.putIn();
        QTRY_VERIFY_WITH_TIMEOUT(!isMicrophoneMuted(), kTimeoutMs);
        waitUntilAllIsHeard();
        const double again = stretch();
        QVERIFY(m_stock.engine().isRecording());
        QCOMPARE(m_stock.end(), QString());

        const MediaFile file(path + QLatin1String(".avi"));
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        const QList<std::optional<uint32_t>> numbers = file.numbers(TestPattern(m_stock.size()));
        QCOMPARE(countNumbers(numbers).unreadable, 0);
        QCOMPARE(countNumbers(numbers).backwards, 0);
        // The video went on, a busy machine's late ones apart.
        QVERIFY2(longestGap(numbers) < StockEngine::kPatternRate, qPrintable(QString::number(longestGap(numbers))));

        m_samples = file.samples(testtone::kSamplesPerSecond);
        const double length = static_cast<double>(m_samples.size()) / testtone::kSamplesPerSecond;
        QVERIFY2(std::abs(length - file.video()->durationSeconds) < 0.3, qPrintable(QString::number(length)));
        QVERIFY2(loudness(with, kVoiceHz) > 0.05, qPrintable(QString::number(loudness(with, kVoiceHz))));
        QVERIFY2(loudness(without, kVoiceHz) < 0.005, qPrintable(QString::number(loudness(without, kVoiceHz))));
        QVERIFY2(loudness(again, kVoiceHz) > 0.05, qPrintable(QString::number(loudness(again, kVoiceHz))));
        // The computer's audio is there throughout, and nowhere twice.
        const double desktop = loudness(with, testtone::kBaseFrequencyHz);
        QVERIFY2(desktop > 0.02, qPrintable(QString::number(desktop)));
        const int tenths = tenthsHeardTwice(pulled, desktop);
        qInfo("heard twice for %d tenths of a second", tenths);
        QVERIFY2(tenths <= 3, qPrintable(QString::number(tenths)));
        for (const double at : {without, again}) {
            const double ratio = loudness(at, testtone::kBaseFrequencyHz) / desktop;
            QVERIFY2(ratio > 0.8 && ratio < 1.25, qPrintable(QString::number(ratio)));
        }
    }

private:
    /// Until both sources are connected and their meters show audio. The sound server first connects a source without a
    /// device to another one, and delivers audio about a second after it has connected the right one.
    void waitUntilAllIsHeard() const
    {
        QTRY_VERIFY_WITH_TIMEOUT(isListenedTo(qEnvironmentVariable("KESTRANO_TEST_MICROPHONE")), kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(isListenedTo(qEnvironmentVariable("KESTRANO_TEST_SINK") + QLatin1String(".monitor")),
                                 kTimeoutMs);
        const Loudness microphone(m_stock.engine(), &ObsWrapper::micVolumeDataChange);
        const Loudness desktop(m_stock.engine(), &ObsWrapper::playerVolumeDataChange);
        QTRY_VERIFY_WITH_TIMEOUT(microphone.isHeard() && desktop.isHeard(), kTimeoutMs);
    }

    /// How many numbers on, at most, one frame is from the one before.
    static qint64 longestGap(const QList<std::optional<uint32_t>>& numbers)
    {
        qint64 longest = 0;
        for (qsizetype frame = 1; frame < numbers.size(); ++frame)
            longest = std::max(longest, qint64{numbers.at(frame).value_or(0)} - numbers.at(frame - 1).value_or(0));
        return longest;
    }

    static bool isMicrophoneMuted()
    {
        return obs_source_muted(ObsSourceHandle(obs_get_output_source(kMicrophoneChannel)).get());
    }

    /// Lets the recording run and returns the second in it, about, from which that stretch is judged.
    double stretch() const
    {
        QTest::qWait(kStretchMs);
        return secondsRecorded() - kMeasuredBeforeEnd;
    }

    double secondsRecorded() const { return static_cast<double>(monotonicNow() - m_begun) / 1e9; }

    /// Tenths of the second after the microphone was pulled out in which the computer's audio is not as loud as before:
    /// the stream of the microphone hears it, too, until it is muted.
    int tenthsHeardTwice(double pulled, double desktop) const
    {
        int tenths = 0;
        for (int tenth = 0; tenth < 10; ++tenth) {
            const auto first = static_cast<qsizetype>((pulled + 0.1 * tenth) * testtone::kSamplesPerSecond);
            const double ratio = testtone::amplitude(m_samples, first, testtone::kSamplesPerSecond / 10,
                                                     testtone::kBaseFrequencyHz, testtone::kSamplesPerSecond) /
                                 desktop;
            tenths += ratio > 1.25 || ratio < 0.8 ? 1 : 0;
        }
        return tenths;
    }

    double loudness(double atSeconds, double frequencyHz) const
    {
        constexpr int kSpan = testtone::kSamplesPerSecond / 2;
        const auto first = static_cast<qsizetype>(atSeconds * testtone::kSamplesPerSecond);
        return testtone::amplitude(m_samples, first, kSpan, frequencyHz, testtone::kSamplesPerSecond);
    }

    Microphone m_microphone;
    StockEngine m_stock;
    QTemporaryDir m_folder;
    int64_t m_begun = 0;
    QList<float> m_samples;
};

REGISTER_TEST(testrun::gui<TestStockMicrophone>);

#include "test_stockmicrophone.moc"
