// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "tests/support/widgetimage.h"
#include "widgets/volumecontrol.h"

#include <QAccessible>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QSignalSpy>
#include <QTest>

#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr float kSilence = -std::numeric_limits<float>::infinity();

/// Gives the meter the first channel's levels, the others silent.
void setFirstChannel(VolumeControl& meter, float magnitudeDb, float peakDb, float inputPeakDb)
{
    std::array<std::array<float, 8>, 3> levels{};
    for (auto& channels : levels)
        channels.fill(kSilence);
    levels[0][0] = magnitudeDb;
    levels[1][0] = peakDb;
    levels[2][0] = inputPeakDb;
    meter.setLevels(levels[0].data(), levels[1].data(), levels[2].data());
}

/// The image of a meter of that size with the first lit of the 17 segments of a meter 100 pixels wide.
QImage expectedImage(int widthPx, int heightPx, int lit)
{
    QImage image(widthPx, heightPx, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(40, 40, 46));
    painter.drawRoundedRect(QRect(0, 0, widthPx, heightPx), 4, 4, Qt::AbsoluteSize);
    QPen pen(QColor(30, 30, 30));
    pen.setWidthF(1.0);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::BevelJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRect(0, 0, widthPx - 1, heightPx - 1), 4, 4, Qt::AbsoluteSize);
    if (widthPx != 100)
        return image;

    // Percent of lightness of each segment's colour; of darkness for the last four.
    constexpr std::array<int, 17> kPercent{100, 102, 104, 107, 109, 111, 114, 116, 118,
                                           101, 105, 108, 112, 101, 107, 113, 119};
    painter.setPen(Qt::NoPen);
    for (std::size_t segment = 0; segment < kPercent.size(); ++segment) {
        QColor color(57, 57, 61);
        if (segment < static_cast<std::size_t>(lit) && segment < 9)
            color = QColor(89, 103, 242).lighter(kPercent.at(segment));
        else if (segment < static_cast<std::size_t>(lit) && segment < 13)
            color = QColor(76, 175, 80).lighter(kPercent.at(segment));
        else if (segment < static_cast<std::size_t>(lit))
            color = QColor(255, 152, 0).darker(kPercent.at(segment));
        const float segmentWidth = 52.0F / 17.0F;
        const QRectF position(static_cast<float>(segment) * (segmentWidth + 3), 2.0, segmentWidth, heightPx - 3);
        painter.setBrush(QColor(57, 57, 61));
        painter.drawRoundedRect(position, 1, 1, Qt::AbsoluteSize);
        if (segment < static_cast<std::size_t>(lit)) {
            painter.setBrush(color);
            painter.drawRoundedRect(position, 1, 1, Qt::AbsoluteSize);
        }
    }
    return image;
}

} // namespace

class TestVolumeControl : public QObject
{
    Q_OBJECT

private slots:
    void levelIsReadAsAValue()
    {
        VolumeControl meter(nullptr);
        meter.setAccessibleName(QStringLiteral("Microphone"));
        QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(&meter);
        QCOMPARE(seen->role(), QAccessible::ProgressBar);
        QCOMPARE(seen->text(QAccessible::Name), QStringLiteral("Microphone"));
        QVERIFY(seen->state().readOnly);
        QAccessibleValueInterface* const value = seen->valueInterface();
        QVERIFY(value != nullptr);
        QCOMPARE(value->minimumValue().toDouble(), -90.0);
        QCOMPARE(value->maximumValue().toDouble(), 0.0);
        QCOMPARE(value->currentValue().toDouble(), -90.0);
        setFirstChannel(meter, -12.0F, -6.0F, -6.0F);
        QCOMPARE(value->currentValue().toDouble(), -12.0);
        setFirstChannel(meter, 3.0F, 3.0F, 3.0F);
        QCOMPARE(value->currentValue().toDouble(), 0.0);
        meter.setActive(false);
        QCOMPARE(value->currentValue().toDouble(), -90.0);
    }

    void narrowMeterShowsOnlyItsFrame_data()
    {
        QTest::addColumn<int>("width");
        for (const int width : {1, 5, 10})
            QTest::addRow("%d wide", width) << width;
    }

    void narrowMeterShowsOnlyItsFrame()
    {
        QFETCH(const int, width);
        VolumeControl meter(nullptr);
        meter.resize(width, 12);
        meter.setFillFromMinimum(true);
        setFirstChannel(meter, -3, -3, -3);
        QCOMPARE(imageOf(meter), expectedImage(width, 12, 0));
    }

    void levelsLightSegments_data()
    {
        QTest::addColumn<bool>("fillFromMinimum");
        QTest::addColumn<float>("magnitudeDb");
        QTest::addColumn<int>("lit");
        QTest::newRow("full") << true << 0.0F << 16;
        QTest::newRow("over full") << true << 3.0F << 16;
        QTest::newRow("-1") << true << -1.0F << 15;
        QTest::newRow("-10") << true << -10.0F << 14;
        QTest::newRow("just above quiet") << true << -39.9F << 9;
        QTest::newRow("quiet") << true << -40.0F << 9;
        QTest::newRow("-45, of a candidate of 8") << true << -45.0F << 6;
        QTest::newRow("-50, half of a candidate of 7") << true << -50.0F << 3;
        QTest::newRow("just above silent, at least one") << true << -59.9F << 1;
        QTest::newRow("silent though there are peaks") << true << -60.0F << 0;
        QTest::newRow("minimum") << true << -90.0F << 0;
        QTest::newRow("below minimum") << true << -1000.0F << 0;
        QTest::newRow("no sound at all") << true << kSilence << 0;
        QTest::newRow("from the other end, full") << false << 0.0F << 0;
        QTest::newRow("from the other end, -10") << false << -10.0F << 1;
        QTest::newRow("from the other end, -39.9") << false << -39.9F << 7;
        QTest::newRow("from the other end, -50") << false << -50.0F << 4;
        QTest::newRow("from the other end, no sound") << false << kSilence << 0;
    }

    void levelsLightSegments()
    {
        QFETCH(const bool, fillFromMinimum);
        QFETCH(const float, magnitudeDb);
        QFETCH(const int, lit);
        VolumeControl meter(nullptr);
        meter.resize(100, 14);
        meter.setFillFromMinimum(fillFromMinimum);
        setFirstChannel(meter, magnitudeDb, -6, -6);
        QCOMPARE(imageOf(meter), expectedImage(100, 14, lit));
    }

    void onlyTheFirstChannelsMagnitudeCounts()
    {
        VolumeControl meter(nullptr);
        meter.resize(100, 14);
        meter.setFillFromMinimum(true);
        std::array<float, 8> magnitude{};
        magnitude.fill(-1);
        magnitude[0] = -60;
        meter.setLevels(magnitude.data(), magnitude.data(), magnitude.data());
        QCOMPARE(imageOf(meter), expectedImage(100, 14, 0));
    }

    void resetStateLightsNothingAlthoughZeroIsFull()
    {
        VolumeControl meter(nullptr);
        meter.resize(100, 14);
        meter.setFillFromMinimum(true);
        QCOMPARE(imageOf(meter), expectedImage(100, 14, 0));
        setFirstChannel(meter, 0, -6, 0);
        QCOMPARE(imageOf(meter), expectedImage(100, 14, 16));
        setFirstChannel(meter, 0, 0, -6);
        QCOMPARE(imageOf(meter), expectedImage(100, 14, 16));
        meter.resetLevels();
        QCOMPARE(imageOf(meter), expectedImage(100, 14, 0));
    }

    void inactiveMeterStaysEmptyWhateverArrives()
    {
        VolumeControl meter(nullptr);
        meter.resize(100, 14);
        meter.setFillFromMinimum(true);
        meter.setActive(false);
        setFirstChannel(meter, -3, -3, -3);
        QCOMPARE(imageOf(meter), expectedImage(100, 14, 0));
        meter.setActive(true);
        QVERIFY(imageOf(meter) != expectedImage(100, 14, 0));
    }

    void channelCountIsAtMostEight()
    {
        VolumeControl meter(nullptr);
        QCOMPARE(meter.channelCount(), 8);
        for (const auto& [count, stored] : {std::pair{2, 2}, {8, 8}, {9, 8}, {12, 8}}) {
            meter.setChannelCount(count);
            QCOMPARE(meter.channelCount(), stored);
        }
        QCOMPARE(meter.audioChannelCount(), 0);
        meter.setAudioChannelCount(2);
        QCOMPARE(meter.audioChannelCount(), 2);
    }

    void aClockRepaintsAndLevelsDoNot()
    {
        VolumeControl meter(nullptr);
        meter.setFillFromMinimum(true);
        PaintCounter counter;
        meter.installEventFilter(&counter);
        meter.resize(100, 14);
        meter.show();
        QVERIFY(QTest::qWaitForWindowExposed(&meter));
        counter.paints = 0;
        QTRY_VERIFY(counter.paints >= 3);
        QCOMPARE(VolumeControl::kRepaintIntervalMs, 40);
        counter.updates = 0;
        setFirstChannel(meter, -3, -3, -3);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(counter.updates, 0);
        meter.resetLevels();
        QCoreApplication::sendPostedEvents();
        QVERIFY(counter.updates > 0);
    }

    void whatLiesBelowIsNotRepaintedWithTheMeter()
    {
        QWidget window;
        window.resize(120, 40);
        window.setAutoFillBackground(true);
        window.setPalette(QPalette(Qt::darkGreen, Qt::darkGreen));
        PaintCounter ofWindow;
        window.installEventFilter(&ofWindow);
        VolumeControl meter(&window);
        PaintCounter ofMeter;
        meter.installEventFilter(&ofMeter);
        meter.setGeometry(10, 10, 100, 14);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY(ofMeter.paints >= 2);
        ofMeter.paints = 0;
        ofWindow.paints = 0;
        QTRY_VERIFY(ofMeter.paints >= 3);
        QCOMPARE(ofWindow.paints, 0);
        // The corners show it all the same, also when it changes.
        for (const Qt::GlobalColor colour : {Qt::darkGreen, Qt::darkBlue}) {
            window.setPalette(QPalette(colour, colour));
            QTRY_COMPARE(window.grab().toImage().pixelColor(10, 10), QColor(colour));
        }
    }

    void meterShowsWhatItsParentPaintsNow()
    {
        PaintedParent other;
        PaintedParent parent;
        VolumeControl meter(&parent);
        meter.setGeometry(10, 10, 100, 14);
        parent.show();
        QVERIFY(QTest::qWaitForWindowExposed(&parent));
        QCOMPARE(parent.grab().toImage().pixelColor(10, 10), QColor(Qt::darkGreen));
        parent.colour = Qt::darkBlue;
        QTRY_COMPARE(parent.grab().toImage().pixelColor(10, 10), QColor(Qt::darkBlue));
        // Another parent as well.
        other.show();
        meter.setParent(&other);
        meter.show();
        QCOMPARE(other.grab().toImage().pixelColor(10, 10), QColor(Qt::darkGreen));
        other.colour = Qt::darkBlue;
        QTRY_COMPARE(other.grab().toImage().pixelColor(10, 10), QColor(Qt::darkBlue));
    }

    void translucentParentIsPaintedOnce()
    {
        QWidget window;
        window.resize(120, 40);
        window.setAutoFillBackground(true);
        window.setPalette(QPalette(Qt::white, Qt::white));
        QWidget between(&window);
        between.setGeometry(0, 0, 120, 40);
        between.setAutoFillBackground(true);
        const QColor translucent(0, 0, 0, 100);
        between.setPalette(QPalette(translucent, translucent));
        VolumeControl meter(&between);
        meter.setGeometry(10, 10, 100, 14);
        const QImage shown = window.grab().toImage();
        QCOMPARE(shown.pixelColor(10, 10), shown.pixelColor(5, 5));
    }

private:
    /// Of one colour that nobody is told of.
    struct PaintedParent : QWidget
    {
        PaintedParent() { resize(120, 40); }
        void paintEvent(QPaintEvent* /*event*/) override { QPainter(this).fillRect(rect(), colour); }

        QColor colour{Qt::darkGreen};
    };

    struct PaintCounter : QObject
    {
        bool eventFilter(QObject* /*watched*/, QEvent* event) override
        {
            paints += event->type() == QEvent::Paint ? 1 : 0;
            updates += event->type() == QEvent::UpdateRequest ? 1 : 0;
            return false;
        }

        int paints = 0;
        int updates = 0;
    };
};

REGISTER_TEST(testrun::gui<TestVolumeControl>);
#include "test_volumecontrol.moc"
