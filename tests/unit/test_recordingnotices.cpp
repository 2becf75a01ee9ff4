// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingnotices.h"
#include "tests/support/testrun.h"
#include "tests/support/translationfile.h"

#include <QTest>

using Kind = RecordingOutcome::Kind;

/// What the user is told about recordings.
class TestRecordingNotices : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_choices = 0; }

    void outcomesInPlainWords_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<StopCause>("cause");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("action");
        using enum StopCause;
        const QString choose = QStringLiteral("Choose Another Folder");
        QTest::newRow("full at the start")
            << Kind::NotStarted << DiskFull << "The disk is full: the recording did not start." << choose;
        QTest::newRow("no engine") << Kind::NotStarted << Unknown << "The recorder failed: the recording did not start."
                                   << "";
        QTest::newRow("not opened") << Kind::EndedByItself << CannotOpen
                                    << "The file could not be opened: the recording did not start." << choose;
        QTest::newRow("unsupported") << Kind::EndedByItself << Unsupported
                                     << "The format is not supported on this computer: the recording did not start."
                                     << "";
        QTest::newRow("not prepared") << Kind::NotPrepared << Unknown
                                      << "The screen could not be captured: the recording did not start."
                                      << "";
        QTest::newRow("full") << Kind::EndedByItself << DiskFull << "The disk is full: the recording has ended."
                              << choose;
        QTest::newRow("not written") << Kind::EndedByItself << CannotWrite
                                     << "The file could not be written: the recording has ended." << choose;
        QTest::newRow("went away") << Kind::EndedByItself << FolderGone
                                   << "The folder of the recording went away: the recording has ended." << choose;
        QTest::newRow("not encoded") << Kind::EndedByItself << CannotEncode
                                     << "Video or sound could not be encoded: the recording has ended."
                                     << "";
        QTest::newRow("end missing") << Kind::EndMissing << CannotWrite
                                     << "The file could not be written: the end of the recording is missing." << choose;
        QTest::newRow("never confirmed") << Kind::EndMissing << Unknown
                                         << "The recorder failed: the end of the recording is missing."
                                         << "";
        QTest::newRow("shortened") << Kind::Shortened << AsAsked
                                   << "The disk is nearly full: the recording was ended and is saved."
                                   << "Open Folder";
        QTest::newRow("away for a while")
            << Kind::FolderGone << AsAsked
            << "The file could not be reached for a while: the recording was ended and is saved."
            << "Open Folder";
    }

    void outcomesInPlainWords()
    {
        QFETCH(const Kind, kind);
        QFETCH(const StopCause, cause);
        QFETCH(const QString, text);
        QFETCH(const QString, action);
        const auto notice = m_notices.ofOutcome({kind, cause, QStringLiteral("/videos/demo.mp4")});
        QVERIFY(notice.has_value());
        QCOMPARE(notice->text, text);
        QCOMPARE(notice->actionText, action);
        QCOMPARE(notice->action != nullptr, !action.isEmpty());
        QCOMPARE(notice->turn, NoticeTurn::First);
    }

    void onlyWhatHasBecomeOfARecordingComesFirst()
    {
        const QString path = QStringLiteral("/videos/demo.mp4");
        for (const Notice& notice : {m_notices.moved(path), m_notices.saved(path), m_notices.lost()})
            QCOMPARE(notice.turn, NoticeTurn::First);
        QCOMPARE(m_notices.littleSpace(3).turn, NoticeTurn::UntilRecordingEnds);
    }

    void recordingThatEndedAsAskedIsNotWorthANotice()
    {
        QVERIFY(!m_notices.ofOutcome({}).has_value());
        QVERIFY(!m_notices.ofOutcome({Kind::Complete, StopCause::AsAsked, QStringLiteral("/videos/demo.mp4")}));
    }

    void actionLetsAnotherFolderBeChosen()
    {
        m_notices.littleSpace(3).action();
        m_notices.lost().action();
        m_notices.ofOutcome({Kind::EndedByItself, StopCause::DiskFull, {}})->action();
        QCOMPARE(m_choices, 3);
    }

    void littleSpaceIsToldInMinutes()
    {
        QCOMPARE(m_notices.littleSpace(0).text,
                 QStringLiteral("The disk is nearly full: there is room for less than a minute."));
        QCOMPARE(m_notices.littleSpace(7).text,
                 QStringLiteral("The disk is nearly full: there is room for about 7 min."));
    }

    void folderThatWentAway()
    {
        const QString path = QStringLiteral("/home/user/Videos/demo.mp4");
        QCOMPARE(m_notices.saved(path).actionText, QStringLiteral("Open Folder"));
        QCOMPARE(m_notices.savedAsChosen(path).actionText, QStringLiteral("Open Folder"));
        QCOMPARE(m_notices.moved(path).actionText, QStringLiteral("Open Folder"));
        QSet<QString> texts;
        for (const Notice& notice : {m_notices.saved(path), m_notices.moved(path), m_notices.lost()}) {
            QVERIFY2(notice.text.startsWith(QLatin1String("The folder of the recording ")), qPrintable(notice.text));
            texts.insert(notice.text);
        }
        QCOMPARE(texts.size(), 3);
    }

    /// Every sentence is the frame of one key and the reason of another.
    void everyPartHasAKeyInTheFilesOfTheLanguages()
    {
        const QStringList keys = translationfile::keys("en_US");
        using enum StopCause;
        for (const StopCause cause :
             {CannotOpen, CannotWrite, DiskFull, FolderGone, CannotEncode, Unsupported, Unknown}) {
            const QString text = m_notices.ofOutcome({Kind::EndMissing, cause, {}})->text;
            QVERIFY2(keys.contains(text.section(QLatin1String(": "), 0, 0)), qPrintable(text));
            QVERIFY2(keys.contains(QStringLiteral("%1: ") + text.section(QLatin1String(": "), 1)), qPrintable(text));
        }
        const QString path = QStringLiteral("/videos/demo.mp4");
        for (const Notice& notice :
             {m_notices.saved(path), m_notices.savedAsChosen(path), m_notices.moved(path), m_notices.lost(),
              m_notices.littleSpace(0), *m_notices.ofOutcome({Kind::FolderGone, AsAsked, path}),
              *m_notices.ofOutcome({Kind::Shortened, AsAsked, path}),
              *m_notices.ofOutcome({Kind::NotPrepared, Unknown, path})}) {
            QVERIFY2(keys.contains(notice.text), qPrintable(notice.text));
            QVERIFY2(notice.actionText.isEmpty() || keys.contains(notice.actionText), qPrintable(notice.actionText));
        }
    }

private:
    int m_choices = 0;
    RecordingNotices m_notices{[this] { ++m_choices; }};
};

REGISTER_TEST(testrun::core<TestRecordingNotices>);
#include "test_recordingnotices.moc"
