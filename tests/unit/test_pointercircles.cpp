// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/pointercircles.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <vector>

namespace {

const PointerEffectChoice kAll{EffectColor{0.0F, 1.0F, 0.5F, 0.3F}, EffectColor{0.0F, 0.0F, 1.0F, 0.7F},
                               EffectColor{1.0F, 0.0F, 0.0F, 0.7F}};
using Bytes = std::array<std::uint8_t, 4>;
constexpr Bytes kHighlight{0, 255, 128, 77};
constexpr Bytes kLeftClick{0, 0, 255, 179};
constexpr Bytes kRightClick{255, 0, 0, 179};

std::vector<Bytes> coloursOf(const std::vector<PointerCircle>& circles)
{
    std::vector<Bytes> colours(circles.size());
    std::transform(circles.begin(), circles.end(), colours.begin(),
                   [](const PointerCircle& circle) { return circle.rgba; });
    return colours;
}

} // namespace

/// What the capture source's settings say of the circles around the pointer, and where they are.
class TestPointerCircles : public QObject
{
    Q_OBJECT

private slots:
    void colorsAreFourFractions_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QList<float>>("expected");
        QTest::newRow("as written") << QByteArray("0.0, 1.0, 0.5, 0.3") << QList<float>{0.0F, 1.0F, 0.5F, 0.3F};
        QTest::newRow("no blanks") << QByteArray("1,0,0,.7") << QList<float>{1.0F, 0.0F, 0.0F, 0.7F};
        QTest::newRow("many blanks") << QByteArray("  0.25 ,\t0.5,0.75 , 1 ") << QList<float>{0.25F, 0.5F, 0.75F, 1.0F};
        QTest::newRow("beyond the ends") << QByteArray("-1, 2, 0.5, 255") << QList<float>{0.0F, 1.0F, 0.5F, 1.0F};
    }

    void colorsAreFourFractions()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const QList<float>, expected);
        const auto color = parseEffectColor(text.constData());
        QVERIFY(color.has_value());
        QCOMPARE(QList<float>(color->begin(), color->end()), expected);
    }

    void brokenColorsAreNone_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("three") << QByteArray("0.0, 1.0, 0.5");
        QTest::newRow("five") << QByteArray("0.0, 1.0, 0.5, 0.3, 0.1");
        QTest::newRow("a word") << QByteArray("0.0, green, 0.5, 0.3");
        QTest::newRow("a gap") << QByteArray("0.0, , 0.5, 0.3");
        QTest::newRow("no number") << QByteArray("nan, 0, 0, 1");
        QTest::newRow("endless") << QByteArray("inf, 0, 0, 1");
        QTest::newRow("decimal commas") << QByteArray("0,0; 1,0; 0,5; 0,3");
        QTest::newRow("a name") << QByteArray("#00ff80");
        QTest::newRow("no text") << QByteArray("\xff\xfe");
    }

    void brokenColorsAreNone()
    {
        QFETCH(const QByteArray, text);
        QVERIFY(!parseEffectColor(text.constData()).has_value());
    }

    void eachCircleHasASwitchAndAColor()
    {
        const ObsDataHandle settings(obs_data_create());
        QVERIFY(PointerEffectChoice::from(settings.get()).isEmpty());
        obs_data_set_string(settings.get(), "fixed_circle_color", "0, 1, 0, 1");
        obs_data_set_string(settings.get(), "left_click_color", "0, 0, 1, 1");
        obs_data_set_string(settings.get(), "right_click_color", "1, 0, 0, 1");
        QVERIFY(PointerEffectChoice::from(settings.get()).isEmpty());
        obs_data_set_bool(settings.get(), "show_left_click", true);
        const PointerEffectChoice left = PointerEffectChoice::from(settings.get());
        QVERIFY(!left.highlight && !left.rightClick);
        QCOMPARE(left.leftClick, std::optional(EffectColor{0.0F, 0.0F, 1.0F, 1.0F}));
        obs_data_set_bool(settings.get(), "show_fixed_circle", true);
        obs_data_set_bool(settings.get(), "show_right_click", true);
        const PointerEffectChoice all = PointerEffectChoice::from(settings.get());
        QCOMPARE(all.highlight, std::optional(EffectColor{0.0F, 1.0F, 0.0F, 1.0F}));
        QCOMPARE(all.rightClick, std::optional(EffectColor{1.0F, 0.0F, 0.0F, 1.0F}));
    }

    void circleWithABrokenColorIsLeftOut()
    {
        const ObsDataHandle settings(obs_data_create());
        obs_data_set_bool(settings.get(), "show_fixed_circle", true);
        obs_data_set_string(settings.get(), "fixed_circle_color", "bright");
        obs_data_set_bool(settings.get(), "show_left_click", true);
        obs_data_set_string(settings.get(), "left_click_color", "0, 0, 1, 1");
        const PointerEffectChoice choice = PointerEffectChoice::from(settings.get());
        QVERIFY(!choice.highlight);
        QVERIFY(choice.leftClick.has_value());
    }

    void highlightIsBelowTheClicks()
    {
        using Colours = std::vector<Bytes>;
        QVERIFY(coloursOf(kAll.circlesAround({{}, false, false}, 1.0F)) == Colours{kHighlight});
        QVERIFY(coloursOf(kAll.circlesAround({{}, true, false}, 1.0F)) == (Colours{kHighlight, kLeftClick}));
        QVERIFY(coloursOf(kAll.circlesAround({{}, false, true}, 1.0F)) == (Colours{kHighlight, kRightClick}));
        QVERIFY(coloursOf(kAll.circlesAround({{}, true, true}, 1.0F)) ==
                (Colours{kHighlight, kLeftClick, kRightClick}));
    }

    void circlesThatAreNotChosenAreLeftOut()
    {
        PointerEffectChoice choice = kAll;
        choice.highlight.reset();
        QVERIFY(choice.circlesAround({{}, false, false}, 1.0F).empty());
        QVERIFY(coloursOf(choice.circlesAround({{}, true, false}, 1.0F)) == std::vector<Bytes>{kLeftClick});
        QVERIFY(PointerEffectChoice().circlesAround({{}, true, true}, 1.0F).empty());
    }

    void circlesLieAroundTheMiddleOfThePixel()
    {
        const std::vector<PointerCircle> circles = kAll.circlesAround({{100, -7}, true, false}, 1.5F);
        QCOMPARE(circles.size(), std::size_t{2});
        QCOMPARE(circles.at(0).radiusPx, 30.0F);
        QCOMPARE(circles.at(1).radiusPx, 18.0F);
        for (const PointerCircle& circle : circles)
            QCOMPARE(circle.centrePx, QPointF(100.5, -6.5));
    }
};

REGISTER_TEST(testrun::core<TestPointerCircles>);
#include "test_pointercircles.moc"
