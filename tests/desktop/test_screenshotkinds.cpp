// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "overlays/windowhighlighter.h"
#include "tests/desktop/desktoprun.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/screenshottest.h"
#include "tests/desktop/userinput.h"
#include "tests/support/testprofile.h"

#include <QApplication>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>

#include <cstdio>
#include <cstdlib>

using desktopuser::click;
using desktopuser::drag;
using desktopuser::pointTo;
using desktopuser::scale;
using userinput::xdotool;

namespace {

constexpr QRgb kRed = qRgb(255, 0, 0);
/// Within the frame: where a stroke begins, and how far it goes.
constexpr QPoint kStrokeBegin(60, 80);
constexpr QPoint kStroke(120, 0);

/// The argument with which this program is another one that shows an image; the window's geometry follows.
constexpr char kImageProgram[] = "--image-program";

/// Like nothing else on the desktop, and each pixel has a colour of its own.
QImage imageOfSize(const QSize& size)
{
    QImage image = gridImage((QSizeF(size) * scale()).toSize());
    image.invertPixels();
    return image;
}

/// The window of the other program.
class ShownImage : public QWidget
{
public:
    explicit ShownImage(const QRect& geometry) : QWidget(nullptr, Qt::FramelessWindowHint)
    {
        setGeometry(geometry);
        m_image = imageOfSize(geometry.size());
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter(this).drawImage(rect(), m_image);
        std::puts("painted");
        std::fflush(stdout);
    }

private:
    QImage m_image;
};

/// A window of another program with an image in it, for as long as the object lives.
class ImageWindow
{
public:
    explicit ImageWindow(const QRect& geometry) : m_geometry(geometry), m_image(imageOfSize(geometry.size())) {}

    ~ImageWindow()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    ImageWindow(const ImageWindow&) = delete;
    ImageWindow& operator=(const ImageWindow&) = delete;

    /// False when it does not come.
    bool show()
    {
        QStringList arguments{QStringLiteral("test_screenshotkinds"), QLatin1String(kImageProgram)};
        for (const int number : {m_geometry.x(), m_geometry.y(), m_geometry.width(), m_geometry.height()})
            arguments.append(QString::number(number));
        m_process.start(QCoreApplication::applicationFilePath(), arguments);
        return m_process.waitForReadyRead();
    }

    const QRect& geometry() const { return m_geometry; }
    const QImage& image() const { return m_image; }

private:
    QRect m_geometry;
    QImage m_image;
    QProcess m_process;
};

/// Somewhere on the widget where none of its children is.
QPoint gripOf(const QWidget& widget)
{
    QPoint position(widget.width() - 1, widget.height() / 2);
    while (position.x() > 0 && widget.childAt(position) != nullptr)
        position.rx() -= 1;
    return widget.mapToGlobal(position);
}

bool isReddish(QRgb colour)
{
    return qRed(colour) > 180 && qGreen(colour) < 90 && qBlue(colour) < 90;
}

} // namespace

/// Each kind of screenshot from its tile to its file, with all that can be done to its frame on the way.
class TestScreenshotKinds : public ScreenshotTest
{
    Q_OBJECT

private slots:
    void frameIsResizedMovedDrawnOnAndSaved_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("format");
        for (const auto& [kind, format] : {std::pair{"screen", "PNG"}, {"region", "JPG"}, {"window", "PNG"}})
            QTest::addRow("%s as %s", kind, format) << QString(kind) << QString(format);
    }

    void frameIsResizedMovedDrawnOnAndSaved()
    {
        QFETCH(const QString, kind);
        QFETCH(const QString, format);
        openSettings()->setValue(settingskeys::kScreenshotFormat, format);
        ImageWindow window(region());
        const QRect framed = openFrame(kind, window);
        QTRY_COMPARE(frame()->geometry(), framed);

        drag(framed.bottomRight(), framed.bottomRight() - QPoint(80, 40));
        const QRect resized = framed.adjusted(0, 0, -80, -40);
        QTRY_COMPARE(frame()->geometry(), resized);
        desktopuser::waitUntilStill();
        const QPoint grip = gripOf(bar());
        drag(grip, grip + QPoint(20, 30));
        const QRect moved = resized.translated(20, 30);
        QTRY_COMPARE(frame()->geometry(), moved);
        click(barButton("drawButton"));
        drag(moved.topLeft() + kStrokeBegin, moved.topLeft() + kStrokeBegin + kStroke);
        desktopuser::waitUntilStill();
        click(barButton("saveButton"));

        QTRY_COMPARE(m_produced->size(), 1);
        QVERIFY(frame() == nullptr);
        const QString path = m_produced->at(0).at(0).toString();
        QVERIFY(path.endsWith(u'.' + format.toLower()));
        const QImage desktop = kind == QLatin1String("window") ? desktopWith(window) : m_desktop;
        expectPixels(QImage(path), desktop.copy(pixels(moved)), format);
    }

    /// Without the pen, nothing at all is in the shot but the window.
    void pickedWindowIsShotToThePixel()
    {
        ImageWindow window(region());
        QCOMPARE(openFrame(QStringLiteral("window"), window), region());
        desktopuser::press(QStringLiteral("Return"));
        QTRY_COMPARE(m_produced->size(), 1);
        const QImage shot(m_produced->at(0).at(0).toString());
        QCOMPARE(shot.size(), window.image().size());
        QCOMPARE(largestDifference(shot, window.image()), 0);
        QTRY_VERIFY(!m_window->isMinimized());
    }

private:
    /// Gets the frame by the tile of its kind. Where it has to stand.
    QRect openFrame(const QString& kind, ImageWindow& window) const
    {
        if (kind == QLatin1String("region")) {
            dragRegion();
            return region();
        }
        if (kind == QLatin1String("screen"))
            clickTile("screenshotFullScreenTile");
        else
            pick(window);
        [] { QTRY_VERIFY(frame() != nullptr); }();
        waitForTheKeyboard();
        return kind == QLatin1String("screen") ? QGuiApplication::primaryScreen()->geometry() : region();
    }

    void pick(ImageWindow& window) const
    {
        QVERIFY(window.show());
        desktopuser::waitUntilStill();
        clickTile("screenshotWindowTile");
        QTRY_VERIFY(shownWindow<WindowHighlighter>() != nullptr);
        pointTo(window.geometry().center());
        QTRY_COMPARE(shownWindow<WindowHighlighter>()->geometry(), window.geometry());
        xdotool({"click", "1"});
        QTRY_VERIFY(shownWindow<WindowHighlighter>() == nullptr);
    }

    QImage desktopWith(const ImageWindow& window) const
    {
        QImage desktop = m_desktop;
        QPainter painter(&desktop);
        painter.drawImage(pixels(window.geometry()).topLeft(), window.image());
        return desktop;
    }

    /// The shot is what was on the desktop, with the stroke and without anything else.
    static void expectPixels(const QImage& shot, QImage desktop, const QString& format)
    {
        QCOMPARE(shot.size(), desktop.size());
        const QPoint begin = (QPointF(kStrokeBegin) * scale()).toPoint();
        const QPoint end = (QPointF(kStrokeBegin + kStroke) * scale()).toPoint();
        // Its ends are round.
        constexpr int kEnd = 16;
        for (int x = begin.x() + kEnd; x <= end.x() - kEnd; x += 4)
            QVERIFY2(isReddish(shot.pixel(x, begin.y())), qPrintable(QString::number(x)));
        // The stroke covers the desktop, and an encoder blurs its edges.
        const QRect stroke = QRect(begin, end).adjusted(-16, -16, 16, 16);
        QPainter(&desktop).drawImage(stroke.topLeft(), shot, stroke);
        if (format == QLatin1String("PNG")) {
            QCOMPARE(shot.pixel((begin + end) / 2), kRed);
            // What makes the frame take the pointer is seen by nobody, but it is there.
            constexpr int kFill = 2;
            QVERIFY(largestDifference(shot, desktop) <= kFill);
        } else {
            const QString wrong = differenceFromGrid(shot, shot.rect(), desktop);
            QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        }
    }
};

static int run(int argc, char* argv[])
{
    constexpr int kArgument = 1;
    constexpr int kGeometry = 2;
    if (argc != kGeometry + 4 || qstrcmp(argv[kArgument], kImageProgram) != 0)
        return desktopuser::run<TestScreenshotKinds>(argc, argv);
    const auto number = [argv](int index) { return QByteArray(argv[kGeometry + index]).toInt(); };
    const QRect geometry(number(0), number(1), number(2), number(3));
    const TestProfile profile;
    const QApplication application(argc, argv);
    ShownImage window(geometry);
    window.show();
    return QApplication::exec();
}

REGISTER_TEST(run);

#include "test_screenshotkinds.moc"
