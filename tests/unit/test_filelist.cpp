// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/fileitemdelegate.h"
#include "files/scfilemanager.h"
#include "tests/support/addresses.h"
#include "tests/support/filelibrary.h"
#include "tests/support/pointerevents.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHelpEvent>
#include <QImage>
#include <QListView>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QTranslator>
#include <QUrl>

#include <functional>
#include <memory>

using FileItemDelegate = SCFileManager::FileItemDelegate;

namespace {

const auto kVideo = QStringLiteral("video");
const auto kAudio = QStringLiteral("audio");
const auto kScreenshot = QStringLiteral("screenshot");

constexpr QRect kRow(0, 0, 300, FileItemDelegate::kHeight);
constexpr QColor kPlain(0x28, 0x28, 0x2e);
constexpr QColor kRaised(0x37, 0x37, 0x3d);
constexpr QColor kGrey(0x99, 0xa1, 0xb0);
constexpr QColor kWhite(0xff, 0xff, 0xff);
constexpr QColor kLine(0x22, 0x22, 0x22);

/// Puts every text between brackets.
class Brackets : public QTranslator
{
public:
    Brackets() { QCoreApplication::installTranslator(this); }
    ~Brackets() override { QCoreApplication::removeTranslator(this); }

    bool isEmpty() const override { return false; }
    QString translate(const char* /*context*/, const char* text, const char* /*disambiguation*/,
                      int /*count*/) const override
    {
        return QStringLiteral("<%1>").arg(QString::fromUtf8(text));
    }
};

/// What the delegate paints of a row of that name, in physical pixels.
QImage painted(const QString& name, QStyle::State state, const QRect& row = kRow, qreal devicePixelRatio = 1.0)
{
    QStandardItemModel model;
    model.appendRow(new QStandardItem(name));
    QImage image(row.size() * devicePixelRatio, QImage::Format_RGB32);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    QStyleOptionViewItem option;
    option.rect = row;
    option.state = state;
    const FileItemDelegate delegate;
    delegate.paint(&painter, option, model.index(0, 0));
    painter.end();
    return image;
}

/// Whether the image shows exactly that colour within the rectangle.
bool shows(const QImage& image, const QRect& rect, const QColor& colour)
{
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            if (image.pixelColor(x, y) == colour)
                return true;
        }
    }
    return false;
}

bool isPlain(const QImage& image, const QRect& rect, const QColor& colour)
{
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            if (image.pixelColor(x, y) != colour)
                return false;
        }
    }
    return true;
}

/// Icons are blank where Qt has no plug-in for their format.
bool canShowIcons()
{
    return !QIcon(QStringLiteral(":/res/forms/images/folder.svg")).pixmap(18).isNull();
}

} // namespace

/// The rows of the file list, what the pointer does on them, and the deletions.
class TestFileList : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        LibraryRefuge::clear();
        m_produced = std::make_unique<ProducedFiles>();
        m_library = std::make_unique<SCFileManager>();
        m_view = std::make_unique<QListView>();
        m_view->resize(kRow.width(), 240);
        // The newest is the first row.
        add("shot.png", kScreenshot);
        add("song.mp3", kAudio);
        add("sound.aac", kAudio);
        add("old.mp4", kVideo);
        add("new.mp4", kVideo);
        m_library->setupView(m_view.get(), QString());
        m_view->show();
    }

    void cleanup()
    {
        m_view.reset();
        m_library.reset();
    }

    void rowHoldsNameAndPath()
    {
        QCOMPARE(names(), QStringList({"new.mp4", "old.mp4", "sound.aac", "song.mp3", "shot.png"}));
        const QModelIndex first = m_view->model()->index(0, 0);
        QCOMPARE(first.data(Qt::UserRole + 1).toString(), m_produced->folder() + QLatin1String("/new.mp4"));
        QCOMPARE(m_view->model()->columnCount(), 1);
    }

    void viewIsPrepared()
    {
        QVERIFY(m_view->hasMouseTracking());
        QCOMPARE(m_view->focusPolicy(), Qt::NoFocus);
        QCOMPARE(m_view->frameShape(), QFrame::NoFrame);
        QCOMPARE(m_view->verticalScrollMode(), QAbstractItemView::ScrollPerPixel);
        QCOMPARE(m_view->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QVERIFY(m_view->viewport()->testAttribute(Qt::WA_Hover));
        QCOMPARE(m_view->editTriggers(), QAbstractItemView::NoEditTriggers);
        QCOMPARE(m_view->selectionMode(), QAbstractItemView::ExtendedSelection);
        QCOMPARE(m_view->selectionBehavior(), QAbstractItemView::SelectRows);
        QVERIFY(qobject_cast<FileItemDelegate*>(m_view->itemDelegate()) != nullptr);
    }

    void filterShowsItsTypeAndIsRememberedByTheView_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("all") << "" << QStringList{"new.mp4", "old.mp4", "sound.aac", "song.mp3", "shot.png"};
        QTest::newRow("video") << kVideo << QStringList{"new.mp4", "old.mp4"};
        QTest::newRow("audio") << kAudio << QStringList{"sound.aac", "song.mp3"};
        QTest::newRow("screenshot") << kScreenshot << QStringList{"shot.png"};
        QTest::newRow("none of the types") << "Video" << QStringList{};
    }

    void filterShowsItsTypeAndIsRememberedByTheView()
    {
        QFETCH(const QString, filter);
        QFETCH(const QStringList, expected);
        m_library->setupView(m_view.get(), filter);
        QCOMPARE(names(), expected);
        QCOMPARE(m_view->property("currentFilter"), QVariant(filter));
    }

    void noViewIsIgnored()
    {
        m_library->setupView(nullptr, kVideo);
        QCOMPARE(names().size(), 5);
        const messagebox::Recorder boxes;
        m_library->deleteSelectedFiles(nullptr);
        QListView bare;
        m_library->deleteSelectedFiles(&bare);
        m_view.reset();
        m_library->selectFile(0);
        m_library->reverseFileOrder();
        QVERIFY(boxes.questions().empty());
        QCOMPARE(m_library->files().front().filepath, m_produced->folder() + QLatin1String("/new.mp4"));
    }

    void reversingKeepsTheFilter()
    {
        m_library->setupView(m_view.get(), kAudio);
        m_library->reverseFileOrder();
        QCOMPARE(names(), QStringList({"song.mp3", "sound.aac"}));
        QCOMPARE(filelibrary::paths().front(), m_produced->folder() + QLatin1String("/shot.png"));
    }

    void addedFileShowsAfterTheNextSetUp()
    {
        add("late.mp4", kVideo);
        QCOMPARE(names().size(), 5);
        m_library->setupView(m_view.get(), QString());
        QCOMPARE(names().front(), QStringLiteral("late.mp4"));
    }

    void selectingMakesOneRowCurrentAndVisible()
    {
        for (int number = 0; number < 30; ++number)
            add(QStringLiteral("%1.mp4").arg(number), kVideo);
        m_library->setupView(m_view.get(), QString());
        m_view->selectAll();
        m_library->selectFile(34);
        QCOMPARE(selectedNames(), QStringList({"shot.png"}));
        QCOMPARE(m_view->currentIndex().row(), 34);
        QVERIFY(m_view->viewport()->rect().contains(m_view->visualRect(m_view->currentIndex())));
        m_library->selectFile(0);
        QCOMPARE(selectedNames(), QStringList({"29.mp4"}));
        QVERIFY(m_view->viewport()->rect().contains(m_view->visualRect(m_view->currentIndex())));
    }

    void selectingNoSuchRowChangesNothing()
    {
        m_library->selectFile(1);
        for (const int row : {-1, 5, 1000})
            m_library->selectFile(row);
        QCOMPARE(selectedNames(), QStringList({"old.mp4"}));
        // More records than the filter shows.
        m_library->setupView(m_view.get(), kScreenshot);
        m_library->selectFile(3);
        QVERIFY(selectedNames().isEmpty());
    }

    void rowIsDividedAsItLooks()
    {
        const QRect row(10, 64, 300, 32);
        QCOMPARE(FileItemDelegate::textRect(row), QRect(QPoint(18, 64), QPoint(309 - 48, 95)));
        QCOMPARE(FileItemDelegate::folderRect(row), QRect(309 - 46, 71, 18, 18));
        QCOMPARE(FileItemDelegate::deleteRect(row), QRect(309 - 20, 72, 16, 16));
    }

    void rowIsAsWideAsItsViewAnd32High()
    {
        QStyleOptionViewItem option;
        option.rect = QRect(0, 0, 417, 99);
        const FileItemDelegate delegate;
        QCOMPARE(delegate.sizeHint(option, {}), QSize(417, 32));
        for (int row = 0; row < 5; ++row) {
            const QRect rect = m_view->visualRect(m_view->model()->index(row, 0));
            QCOMPARE(rect, QRect(0, row * 32, m_view->viewport()->width(), 32));
        }
    }

    void rowIsPaintedInItsColours_data()
    {
        QTest::addColumn<QStyle::State>("state");
        QTest::addColumn<QColor>("background");
        QTest::addColumn<QColor>("text");
        QTest::addColumn<bool>("icons");
        const QStyle::State enabled = QStyle::State_Enabled;
        QTest::newRow("plain") << enabled << kPlain << kGrey << false;
        QTest::newRow("selected") << (enabled | QStyle::State_Selected) << kRaised << kWhite << false;
        QTest::newRow("hovered") << (enabled | QStyle::State_MouseOver) << kRaised << kWhite << true;
        QTest::newRow("both") << (enabled | QStyle::State_Selected | QStyle::State_MouseOver) << kRaised << kWhite
                              << true;
    }

    void rowIsPaintedInItsColours()
    {
        QFETCH(const QStyle::State, state);
        QFETCH(const QColor, background);
        QFETCH(const QColor, text);
        QFETCH(const bool, icons);
        const QImage image = painted(QString(20, QChar(0x2588)), state);
        QCOMPARE(image.pixelColor(0, 0), background);
        QCOMPARE(image.pixelColor(7, 16), background);
        QVERIFY(shows(image, FileItemDelegate::textRect(kRow), text));
        QVERIFY(isPlain(image, QRect(0, 31, 300, 1), kLine));
        QVERIFY(isPlain(image, QRect(0, 0, 300, 2), background));
        for (const QRect& icon : {FileItemDelegate::folderRect(kRow), FileItemDelegate::deleteRect(kRow)}) {
            QCOMPARE(shows(image, icon, kGrey), icons && canShowIcons());
            QCOMPARE(isPlain(image, icon, background), !icons || !canShowIcons());
        }
        // Nothing but the icons stands right of the text.
        QVERIFY(isPlain(image, QRect(280 - 1 - 20 + 18, 2, 3, 28), background));
    }

    void longNameIsCutAtTheTextsEdgeWithoutAnEllipsis()
    {
        const QString name(80, u'M');
        const QImage narrow = painted(name, QStyle::State_Enabled);
        const QImage wide = painted(name, QStyle::State_Enabled, QRect(0, 0, 600, FileItemDelegate::kHeight));
        const QRect text = FileItemDelegate::textRect(kRow);
        // The same letters as where there is more room, to the last pixel, and nothing beyond.
        QCOMPARE(narrow.copy(text), wide.copy(text));
        QVERIFY(shows(wide, text.adjusted(text.width() - 10, 0, 0, -2), kGrey));
        QVERIFY(isPlain(narrow, QRect(QPoint(text.right() + 1, 0), QPoint(kRow.right(), 30)), kPlain));
    }

    void nameWithALineBreakStaysOnItsLine()
    {
        const QImage one = painted(QStringLiteral("a b"), QStyle::State_Enabled);
        const QImage two = painted(QStringLiteral("a\nb"), QStyle::State_Enabled);
        QCOMPARE(two, one);
    }

    void endingIsSeenWhateverChangesTheDirectionOfTheName()
    {
        const QImage plain = painted(QStringLiteral("a[U+202E]4pm.exe"), QStyle::State_Enabled);
        QCOMPARE(painted(QStringLiteral("a\u202e4pm.exe"), QStyle::State_Enabled), plain);
        QVERIFY(painted(QStringLiteral("aexe.mp4"), QStyle::State_Enabled) != plain);
    }

    void painterIsLeftAsItWas()
    {
        QStandardItemModel model;
        model.appendRow(new QStandardItem(QStringLiteral("a.mp4")));
        QImage image(kRow.size(), QImage::Format_RGB32);
        QPainter painter(&image);
        painter.setPen(Qt::red);
        QStyleOptionViewItem option;
        option.rect = kRow;
        option.state = QStyle::State_MouseOver;
        const FileItemDelegate delegate;
        delegate.paint(&painter, option, model.index(0, 0));
        QCOMPARE(painter.pen().color(), QColor(Qt::red));
        QVERIFY(!painter.hasClipping());
    }

    void iconsAreDrawnInAllPixelsOfADenseScreen()
    {
        if (!canShowIcons()) {
            QVERIFY(isPlain(painted({}, QStyle::State_MouseOver), FileItemDelegate::folderRect(kRow), kRaised));
            return;
        }
        const QImage once = painted({}, QStyle::State_MouseOver);
        const QImage twice = painted({}, QStyle::State_MouseOver, kRow, 2.0);
        // An enlarged icon would consist of blocks of two by two.
        QImage blocks = once.scaled(twice.size());
        blocks.setDevicePixelRatio(2.0);
        const QRect folder(FileItemDelegate::folderRect(kRow).topLeft() * 2,
                           FileItemDelegate::folderRect(kRow).size() * 2);
        QVERIFY(twice.copy(folder) != blocks.copy(folder));
        QVERIFY(shows(twice, folder, kGrey));
    }

    void toolTipSaysWhatAnIconDoes()
    {
        const QRect row = m_view->visualRect(m_view->model()->index(1, 0));
        showToolTip(FileItemDelegate::folderRect(row).center());
        QCOMPARE(QToolTip::text(), QStringLiteral("Show in Folder"));
        showToolTip(FileItemDelegate::deleteRect(row).center());
        QCOMPARE(QToolTip::text(), QStringLiteral("Delete"));
        showToolTip(FileItemDelegate::textRect(row).center());
        QTRY_VERIFY(!QToolTip::isVisible());
    }

    void toolTipsAreTranslated()
    {
        const Brackets translator;
        const QRect row = m_view->visualRect(m_view->model()->index(0, 0));
        showToolTip(FileItemDelegate::folderRect(row).center());
        QCOMPARE(QToolTip::text(), QStringLiteral("<Show in Folder>"));
        QToolTip::hideText();
    }

    void otherHelpIsNotTheDelegates()
    {
        // Of the test before, perhaps: a tip takes its time to go.
        QToolTip::hideText();
        QTRY_VERIFY(!QToolTip::isVisible());
        FileItemDelegate delegate;
        QStyleOptionViewItem option;
        option.rect = m_view->visualRect(m_view->model()->index(0, 0));
        const QPoint position = FileItemDelegate::folderRect(option.rect).center();
        QHelpEvent whatsThis(QEvent::WhatsThis, position, position);
        QVERIFY(!delegate.helpEvent(&whatsThis, m_view.get(), option, m_view->model()->index(0, 0)));
        QVERIFY(!QToolTip::isVisible());
    }

    void doubleClickOpensTheFileOnce()
    {
        // Bound several times, heard once.
        m_library->setupView(m_view.get(), kVideo);
        m_library->setupView(m_view.get(), QString());
        const OpenedAddresses opener({"file"});
        doubleClick(FileItemDelegate::textRect(rowRect(2)).center());
        QCOMPARE(opener.files(), QStringList({m_produced->folder() + QLatin1String("/sound.aac")}));
        doubleClick(QPoint(50, rowRect(4).bottom() + 20));
        QCOMPARE(opener.files().size(), 1);
    }

    void doubleClickOpensByTheLeftButtonAlone()
    {
        const OpenedAddresses opener({"file"});
        const QPoint text = onDesktop(FileItemDelegate::textRect(rowRect(2)).center());
        for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton})
            pointerevents::mouse(*m_view->viewport(), QEvent::MouseButtonDblClick, text, button, button);
        QCOMPARE(opener.files(), QStringList());
    }

    void doubleClickOnAnIconOpensTheFileOfItsRow()
    {
        const OpenedAddresses opener({"file"});
        const QPoint icon = onDesktop(FileItemDelegate::folderRect(rowRect(2)).center());
        pointerevents::mouse(*m_view->viewport(), QEvent::MouseButtonDblClick, icon, Qt::LeftButton, Qt::LeftButton);
        QCOMPARE(opener.files(), QStringList({m_produced->folder() + QLatin1String("/sound.aac")}));
    }

    void doubleClickOpensFilesOfUnusualNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("percent signs") << "100%20 %1 %.mp4";
        QTest::newRow("hash") << "take #2.mp4";
        QTest::newRow("leading dashes") << "--version.mp4";
        QTest::newRow("shell") << "$(id) & `id`; 'x'.mp4";
        QTest::newRow("Chinese") << u"\u5f55\u5236.mp4"_qs;
        if (QDir::separator() == u'\\')
            return;
        QTest::newRow("question mark") << "what?x=1.mp4";
        QTest::newRow("double quotes") << "\"so\".mp4";
        QTest::newRow("line breaks") << "one\ntwo.mp4";
    }

    void doubleClickOpensFilesOfUnusualNames()
    {
        QFETCH(const QString, name);
        add(name, kVideo);
        m_library->setupView(m_view.get(), QString());
        const OpenedAddresses opener({"file"});
        doubleClick(FileItemDelegate::textRect(rowRect(0)).center());
        QCOMPARE(opener.files(), QStringList({m_produced->folder() + u'/' + name}));
    }

    void pressOnTheTextSelectsAndOneOnTheFolderIconDoesNot()
    {
        press(FileItemDelegate::textRect(rowRect(1)).center());
        QCOMPARE(selectedNames(), QStringList({"old.mp4"}));
        // A row without a path: the press is consumed, and no file manager comes up.
        m_view->model()->setData(m_view->model()->index(3, 0), QString(), SCFileManager::kPathRole);
        press(FileItemDelegate::folderRect(rowRect(3)).center());
        QCOMPARE(selectedNames(), QStringList({"old.mp4"}));
        press(FileItemDelegate::textRect(rowRect(3)).center());
        QCOMPARE(selectedNames(), QStringList({"song.mp3"}));
    }

    void dragFromAnIconSelectsNothing()
    {
        press(FileItemDelegate::textRect(rowRect(0)).center());
        m_view->model()->setData(m_view->model()->index(3, 0), QString(), SCFileManager::kPathRole);
        const QPoint icon = FileItemDelegate::folderRect(rowRect(3)).center();
        pointerevents::drag(*m_view->viewport(), onDesktop(icon), {-4, 2});
        QCOMPARE(selectedNames(), QStringList({"new.mp4"}));
    }

    void dragFromATextSelectsAfterAnIconWasPressed_data()
    {
        QTest::addColumn<bool>("isReleaseSeen");
        QTest::newRow("and released") << true;
        QTest::newRow("and released while a box is open") << false;
    }

    void dragFromATextSelectsAfterAnIconWasPressed()
    {
        QFETCH(const bool, isReleaseSeen);
        m_view->model()->setData(m_view->model()->index(3, 0), QString(), SCFileManager::kPathRole);
        const QPoint icon = onDesktop(FileItemDelegate::folderRect(rowRect(3)).center());
        pointerevents::press(*m_view->viewport(), icon);
        if (isReleaseSeen)
            pointerevents::release(*m_view->viewport(), icon);
        const QPoint text = FileItemDelegate::textRect(rowRect(1)).center();
        pointerevents::drag(*m_view->viewport(), onDesktop(text), {0, FileItemDelegate::kHeight});
        QCOMPARE(selectedNames(), QStringList({"old.mp4", "sound.aac"}));
    }

    void iconsAreWhereTheyAreAndNotAPixelFurther()
    {
        for (const QRect& icon : {FileItemDelegate::folderRect(rowRect(1)), FileItemDelegate::deleteRect(rowRect(1))}) {
            m_view->model()->setData(m_view->model()->index(1, 0), QString(), SCFileManager::kPathRole);
            for (const QPoint& inside : {icon.topLeft(), icon.topRight(), icon.bottomLeft(), icon.bottomRight()}) {
                m_view->clearSelection();
                press(inside);
                QVERIFY(selectedNames().isEmpty());
            }
            for (const QPoint& beside : {icon.topLeft() - QPoint(1, 0), icon.topLeft() - QPoint(0, 1),
                                         icon.bottomRight() + QPoint(1, 0), icon.bottomRight() + QPoint(0, 1)}) {
                m_view->clearSelection();
                press(beside);
                QCOMPARE(selectedNames(), QStringList({"old.mp4"}));
            }
        }
    }

    void rightButtonOnAnIconOnlySelects()
    {
        const messagebox::Recorder boxes;
        QTest::mouseClick(m_view->viewport(), Qt::RightButton, {}, FileItemDelegate::deleteRect(rowRect(2)).center());
        QVERIFY(boxes.questions().empty());
        QCOMPARE(selectedNames(), QStringList({"sound.aac"}));
    }

    void deleteIconAsksInWordsThatAreNotTranslated()
    {
        const Brackets translator;
        messagebox::Recorder boxes;
        press(FileItemDelegate::deleteRect(rowRect(1)).center());
        QCOMPARE(boxes.questions().size(), std::size_t{1});
        const messagebox::Question& question = boxes.questions().front();
        QCOMPARE(question.title, QStringLiteral("Delete"));
        QCOMPARE(question.text, QStringLiteral("Do you want to delete this file?"));
        QCOMPARE(question.checkText, QStringLiteral("Delete file from disk as well."));
        QCOMPARE(question.buttonText, QStringLiteral("Delete"));
        QCOMPARE(question.buttonName, QStringLiteral("deleteButton"));
        QCOMPARE(question.parent, m_view->window());
        QVERIFY(selectedNames().isEmpty());
        QCOMPARE(names().size(), 5);
    }

    void deleteIconRemovesTheFileFromTheListAlone()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, false});
        const QString path = pathAt(1);
        press(FileItemDelegate::deleteRect(rowRect(1)).center());
        QCOMPARE(names(), QStringList({"new.mp4", "sound.aac", "song.mp3", "shot.png"}));
        QVERIFY(!filelibrary::paths().contains(path));
        QCOMPARE(m_library->files().size(), 4);
        QVERIFY(QFileInfo::exists(path));
    }

    void deleteIconRemovesTheFileFromDiskAsWell()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, true});
        const QString path = pathAt(1);
        press(FileItemDelegate::deleteRect(rowRect(1)).center());
        QCOMPARE(names().size(), 4);
        QVERIFY(!filelibrary::paths().contains(path));
        QVERIFY(!QFileInfo::exists(path));
        QVERIFY(QFileInfo::exists(pathAt(0)));
    }

    void checkWithoutTheButtonDeletesNothing()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({false, true});
        press(FileItemDelegate::deleteRect(rowRect(0)).center());
        m_view->selectAll();
        m_library->deleteSelectedFiles(m_view.get());
        QCOMPARE(names().size(), 5);
        QCOMPARE(filelibrary::paths().size(), 5);
        QVERIFY(QFileInfo::exists(pathAt(0)));
    }

    void fileThatCannotBeDeletedFromDiskLeavesTheList()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, true});
        const QString path = pathAt(0);
        // A folder with something in it, by now.
        QVERIFY(QFile::remove(path));
        QVERIFY(QDir().mkpath(path + QLatin1String("/inner")));
        press(FileItemDelegate::deleteRect(rowRect(0)).center());
        QCOMPARE(names().front(), QStringLiteral("old.mp4"));
        QVERIFY(QFileInfo(path).isDir());
    }

    void deletingOneOfTwoRecordsOfAFileRemovesTheFirst()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, false});
        const QString twice = pathAt(4);
        m_library->addFile(twice, kVideo);
        m_library->setupView(m_view.get(), QString());
        press(FileItemDelegate::deleteRect(rowRect(5)).center());
        QCOMPARE(names(), QStringList({"shot.png", "new.mp4", "old.mp4", "sound.aac", "song.mp3"}));
        QCOMPARE(m_library->files().size(), 5);
        QCOMPARE(m_library->files().last().filepath, twice);
        QCOMPARE(m_library->files().last().properties.value("type"), QVariant(kScreenshot));
    }

    void listThatChangesBehindTheBoxIsShownAgain()
    {
        const QString path = pathAt(1);
        answerRealBox([this](QMessageBox& box) {
            m_library->setupView(m_view.get(), kVideo);
            button(box, "deleteButton")->click();
        });
        press(FileItemDelegate::deleteRect(rowRect(1)).center());
        QCOMPARE(names(), QStringList({"new.mp4"}));
        QVERIFY(!filelibrary::paths().contains(path));
    }

    void threeSelectedRowsAreAskedAboutAsThreeFilesInTranslatedWords()
    {
        select({0, 2, 4});
        const Brackets translator;
        const messagebox::Recorder boxes;
        m_library->deleteSelectedFiles(m_view.get());
        QCOMPARE(boxes.questions().size(), std::size_t{1});
        const messagebox::Question& question = boxes.questions().front();
        QCOMPARE(question.title, QStringLiteral("<Delete>"));
        QCOMPARE(question.text, QStringLiteral("<Do you want to delete 3 files?>"));
        QCOMPARE(question.checkText, QStringLiteral("<Delete files from disk as well.>"));
        QCOMPARE(question.buttonText, QStringLiteral("<Delete>"));
        QCOMPARE(question.buttonName, QStringLiteral("deleteButton"));
        QCOMPARE(question.parent, m_view->window());
        QCOMPARE(names().size(), 5);
    }

    void nothingSelectedIsNotAskedAbout()
    {
        const messagebox::Recorder boxes;
        m_library->deleteSelectedFiles(m_view.get());
        QVERIFY(boxes.questions().empty());
    }

    void selectedFilesLeaveTheListAndStayOnDisk()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, false});
        select({0, 2, 4});
        const QStringList paths{pathAt(0), pathAt(2), pathAt(4)};
        m_library->deleteSelectedFiles(m_view.get());
        QCOMPARE(names(), QStringList({"old.mp4", "song.mp3"}));
        QCOMPARE(filelibrary::paths(), QStringList({pathAt(0), pathAt(1)}));
        for (const QString& path : paths)
            QVERIFY(QFileInfo::exists(path));
    }

    void selectedFilesAreDeletedFromDiskAsWell()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, true});
        select({1, 3});
        const QStringList gone{pathAt(1), pathAt(3)};
        const QStringList stay{pathAt(0), pathAt(2), pathAt(4)};
        m_library->deleteSelectedFiles(m_view.get());
        for (const QString& path : gone)
            QVERIFY(!QFileInfo::exists(path));
        for (const QString& path : stay)
            QVERIFY(QFileInfo::exists(path));
        QCOMPARE(filelibrary::paths(), stay);
    }

    void deletingUnderAFilterKeepsTheFilter()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, false});
        m_library->setupView(m_view.get(), kAudio);
        select({0});
        m_library->deleteSelectedFiles(m_view.get());
        QCOMPARE(m_view->property("currentFilter"), QVariant(kAudio));
        QCOMPARE(names(), QStringList({"song.mp3"}));
        QCOMPARE(m_library->files().size(), 4);
    }

    void selectedRecordsOfOneFileAreAllRemoved()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, false});
        m_library->addFile(pathAt(4), kVideo);
        m_library->addFile(pathAt(4), kVideo);
        m_library->setupView(m_view.get(), QString());
        select({0, 6});
        m_library->deleteSelectedFiles(m_view.get());
        QCOMPARE(names(), QStringList({"new.mp4", "old.mp4", "sound.aac", "song.mp3", "shot.png"}));
    }

    void boxThatIsCancelledClosedOrEscapedDeletesNothing_data()
    {
        QTest::addColumn<bool>("several");
        QTest::addColumn<QString>("way");
        for (const char* way : {"Cancel", "close", "Escape", "Enter"}) {
            QTest::addRow("one file, %s", way) << false << QString(way);
            QTest::addRow("several files, %s", way) << true << QString(way);
        }
    }

    void boxThatIsCancelledClosedOrEscapedDeletesNothing()
    {
        QFETCH(const bool, several);
        QFETCH(const QString, way);
        const QStringList before = filelibrary::paths();
        answerRealBox([&way](QMessageBox& box) {
            box.checkBox()->setChecked(true);
            if (way == QLatin1String("Cancel"))
                box.button(QMessageBox::Cancel)->click();
            else if (way == QLatin1String("close"))
                box.close();
            else
                QTest::keyClick(&box, way == QLatin1String("Escape") ? Qt::Key_Escape : Qt::Key_Enter);
        });
        if (several) {
            m_view->selectAll();
            m_library->deleteSelectedFiles(m_view.get());
        } else {
            press(FileItemDelegate::deleteRect(rowRect(0)).center());
        }
        QCOMPARE(m_boxesAnswered, 1);
        QCOMPARE(names().size(), 5);
        QCOMPARE(filelibrary::paths(), before);
        for (const QString& path : before)
            QVERIFY(QFileInfo::exists(path));
    }

    void fileThatIsBeingRecordedIsNotDeleted()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, true});
        const QString path = pathAt(0);
        m_library->setFileInUse(path);
        press(FileItemDelegate::deleteRect(rowRect(0)).center());
        m_view->selectAll();
        m_library->deleteSelectedFiles(m_view.get());
        QVERIFY(boxes.questions().empty());
        QCOMPARE(boxes.calls().size(), std::size_t{2});
        QCOMPARE(boxes.calls().front().text, QStringLiteral("The file that is being recorded cannot be deleted."));
        QCOMPARE(names().size(), 5);
        QVERIFY(QFileInfo::exists(path));
        m_library->setFileInUse({});
        press(FileItemDelegate::deleteRect(rowRect(0)).center());
        QVERIFY(!QFileInfo::exists(path));
    }

    void rowOfAFileThatIsMovedPointsThereAndIsNotDeletedBeforeItIsSaved()
    {
        messagebox::Recorder boxes;
        boxes.setAnswer({true, true});
        const QString from = pathAt(0);
        const QString to = from + QLatin1String(".saved.mp4");
        m_library->moveFile(from, to);
        QCOMPARE(pathAt(0), to);
        QCOMPARE(names().at(0), QFileInfo(to).fileName());
        QVERIFY(filelibrary::paths().contains(to) && !filelibrary::paths().contains(from));
        press(FileItemDelegate::deleteRect(rowRect(0)).center());
        QVERIFY(boxes.questions().empty());
        QCOMPARE(boxes.calls().front().text,
                 QStringLiteral("The file is still being saved and cannot be deleted yet."));
        m_library->setFileSaved(to);
        press(FileItemDelegate::deleteRect(rowRect(0)).center());
        QCOMPARE(boxes.questions().size(), std::size_t{1});
        QVERIFY(!filelibrary::paths().contains(to));
    }

    void tenThousandFilesAreDeletedInOneGo()
    {
        const QString path = pathAt(0);
        messagebox::Recorder boxes;
        boxes.setAnswer({true, false});
        // Records of one file: there need not be as many files.
        QByteArray text = "[";
        for (int number = 0; number < 10000; ++number)
            text += QByteArray(number == 0 ? "" : ",") + "{\"filepath\":\"" + path.toUtf8() +
                    "\",\"properties\":{\"type\":\"video\"}}";
        filelibrary::write(text + "]");
        QVERIFY(m_library->load());
        m_library->setupView(m_view.get(), QString());
        QCOMPARE(names().size(), 10000);
        m_view->selectAll();
        m_library->deleteSelectedFiles(m_view.get());
        QCOMPARE(boxes.questions().front().text, QStringLiteral("Do you want to delete 10000 files?"));
        QVERIFY(names().isEmpty());
        QVERIFY(filelibrary::paths().isEmpty());
    }

private:
    void add(const QString& name, const QString& type) { m_library->addFile(m_produced->add(name), type); }

    QStringList names() const
    {
        QStringList names;
        for (int row = 0; row < m_view->model()->rowCount(); ++row)
            names.append(m_view->model()->index(row, 0).data().toString());
        return names;
    }

    QStringList selectedNames() const
    {
        QStringList names;
        const QModelIndexList selected = m_view->selectionModel()->selectedIndexes();
        for (const QModelIndex& index : selected)
            names.append(index.data().toString());
        return names;
    }

    QString pathAt(int row) const { return m_view->model()->index(row, 0).data(SCFileManager::kPathRole).toString(); }
    QPoint onDesktop(const QPoint& position) const { return m_view->viewport()->mapToGlobal(position); }
    QRect rowRect(int row) const { return m_view->visualRect(m_view->model()->index(row, 0)); }

    void select(const QList<int>& rows)
    {
        m_view->clearSelection();
        for (const int row : rows)
            m_view->selectionModel()->select(m_view->model()->index(row, 0), QItemSelectionModel::Select);
    }

    void press(const QPoint& position) { QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, position); }

    void doubleClick(const QPoint& position) { QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, position); }

    void showToolTip(const QPoint& position)
    {
        QHelpEvent event(QEvent::ToolTip, position, m_view->viewport()->mapToGlobal(position));
        QCoreApplication::sendEvent(m_view->viewport(), &event);
    }

    static QPushButton* button(const QMessageBox& box, const char* name)
    {
        return box.findChild<QPushButton*>(QLatin1String(name));
    }

    /// Does something with the next box that is shown.
    void answerRealBox(const std::function<void(QMessageBox&)>& answer)
    {
        m_boxesAnswered = 0;
        QTimer::singleShot(0, m_view.get(), [this, answer] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            ++m_boxesAnswered;
            answer(*box);
        });
    }

    std::unique_ptr<ProducedFiles> m_produced;
    std::unique_ptr<SCFileManager> m_library;
    std::unique_ptr<QListView> m_view;
    int m_boxesAnswered = 0;
};

REGISTER_TEST(windowtest::run<TestFileList>);

#include "test_filelist.moc"
