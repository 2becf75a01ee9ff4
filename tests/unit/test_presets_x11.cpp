// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "overlays/drawwindow.h"
#include "tests/support/captureform.h"
#include "tests/support/shownwindow.h"
#include "tests/support/windowtest.h"

#include <QFile>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>

namespace {

/// For Qt's platform without a display.
constexpr char kScreens[] = R"({"screens": [
    {"name": "Main", "x": 0, "y": 0, "width": 3840, "height": 2160,
     "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";
constexpr int kBorderPx = 4;

} // namespace

/// Ratio presets on a screen that has room for them, at a scale of 1.5.
class TestPresets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(SCLogger::instance()->initialize());
        QCOMPARE(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, 2560, 1440));
        QCOMPARE(QGuiApplication::primaryScreen()->devicePixelRatio(), 1.5);
    }

    void init() { windowtest::resetSettings(); }

    void presetHasItsOwnNumbersAndAFrameInTheMiddle_data()
    {
        QTest::addColumn<QString>("numbers");
        QTest::addColumn<QSize>("framed");
        QTest::newRow("16:9") << QStringLiteral("1920x1080") << QSize(1280, 720);
        // 405.33 logical pixels, truncated.
        QTest::newRow("9:16") << QStringLiteral("608x1080") << QSize(405, 720);
        QTest::newRow("4:3") << QStringLiteral("1440x1080") << QSize(960, 720);
        QTest::newRow("1:1") << QStringLiteral("1080x1080") << QSize(720, 720);
    }

    void presetHasItsOwnNumbersAndAFrameInTheMiddle()
    {
        QFETCH(const QString, numbers);
        QFETCH(const QSize, framed);
        const CaptureForm form;
        auto* const box = form.findChild<QComboBox*>(QStringLiteral("ratioBox"));
        box->setCurrentText(QLatin1String(QTest::currentDataTag()));
        emit box->textActivated(box->currentText());
        QCOMPARE(field(form, "widthEdit") + u'x' + field(form, "heightEdit"), numbers);
        const QRect frame = shownWindow<DrawWindow>()->geometry();
        QCOMPARE(frame.size(), framed + QSize(2 * kBorderPx, 2 * kBorderPx));
        const QSize around = QGuiApplication::primaryScreen()->size() - frame.size();
        QCOMPARE(frame.topLeft(), QPoint(around.width() / 2, around.height() / 2));
    }

private:
    static QString field(const CaptureForm& form, const char* name)
    {
        return form.findChild<QLineEdit*>(QLatin1String(name))->text();
    }
};

static int run(int argc, char* argv[])
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("screens.json")));
    if (!file.open(QIODevice::WriteOnly) || file.write(kScreens) < 0)
        return EXIT_FAILURE;
    file.close();
    qputenv("QT_SCREEN_SCALE_FACTORS", "Main=1.5");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName().toLocal8Bit());
    return windowtest::run<TestPresets>(argc, argv);
}

REGISTER_TEST(run);

#include "test_presets_x11.moc"
