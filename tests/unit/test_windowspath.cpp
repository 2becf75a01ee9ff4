// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/windows_path.h"
#include "tests/support/testrun.h"

#include <QTest>

/// Paths for Windows' own calls and for its file manager.
class TestWindowsPath : public QObject
{
    Q_OBJECT

private slots:
    void pathIsMarkedAsOneOfAnyLength_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("extended");
        QTest::newRow("plain") << "C:/videos/a.mp4"
                               << R"(\\?\C:\videos\a.mp4)";
        QTest::newRow("native separators") << R"(c:\videos\a.mp4)"
                                           << R"(\\?\c:\videos\a.mp4)";
        QTest::newRow("blanks") << "C:/Users/Jo Doe/a b"
                                << R"(\\?\C:\Users\Jo Doe\a b)";
        QTest::newRow("Japanese") << u"C:/\u9332\u753b"_qs << u"\\\\?\\C:\\\u9332\u753b"_qs;
        QTest::newRow("dots and doubled separators") << "C:/a/./b//../c"
                                                     << R"(\\?\C:\a\c)";
        QTest::newRow("another machine's") << "//host/share/a"
                                           << R"(\\?\UNC\host\share\a)";
        QTest::newRow("another machine's, native") << R"(\\host\share\.\a)"
                                                   << R"(\\?\UNC\host\share\a)";
    }

    void pathIsMarkedAsOneOfAnyLength()
    {
        QFETCH(const QString, path);
        QTEST(platform::extendedWindowsPath(path), "extended");
    }

    void markIsTakenOffAgain()
    {
        for (const QString& path : {QStringLiteral(R"(C:\videos\a.mp4)"), QStringLiteral(R"(\\host\share\a)")})
            QCOMPARE(platform::withoutWindowsMark(platform::extendedWindowsPath(path)), path);
        QCOMPARE(platform::withoutWindowsMark(QStringLiteral(R"(C:\a)")), QStringLiteral(R"(C:\a)"));
    }

    void markedDeviceAndRelativePathsAreLeftAlone()
    {
        for (const char* const path : {R"(\\?\C:\a\..\b)", R"(\\.\pipe\a)", R"(a\b)", "C:"})
            QCOMPARE(platform::extendedWindowsPath(QLatin1String(path)), QLatin1String(path));
        QCOMPARE(platform::extendedWindowsPath(QStringLiteral("a/b")), QStringLiteral(R"(a\b)"));
    }

    void explorerGetsOneArgumentWhateverThePathHolds_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("arguments");
        QTest::newRow("plain") << "C:/videos/a.mp4"
                               << R"(/select, "C:\videos\a.mp4")";
        QTest::newRow("native separators") << R"(C:\videos\a.mp4)"
                                           << R"(/select, "C:\videos\a.mp4")";
        QTest::newRow("blanks") << "C:/my videos/a b.mp4"
                                << R"(/select, "C:\my videos\a b.mp4")";
        QTest::newRow("comma") << "C:/a,/e,b.mp4"
                               << R"(/select, "C:\a,\e,b.mp4")";
        QTest::newRow("percent signs") << "C:/100%/%1 %TEMP%.mp4"
                                       << R"(/select, "C:\100%\%1 %TEMP%.mp4")";
        QTest::newRow("leading dashes") << "C:/--help/-rf.mp4"
                                        << R"(/select, "C:\--help\-rf.mp4")";
        QTest::newRow("shell") << "C:/a & calc ^ (b); 'c'.mp4"
                               << R"(/select, "C:\a & calc ^ (b); 'c'.mp4")";
        QTest::newRow("Japanese") << u"C:/\u9332\u753b.mp4"_qs << u"/select, \"C:\\\u9332\u753b.mp4\""_qs;
        QTest::newRow("another machine's") << "//host/share/a.mp4"
                                           << R"(/select, "\\host\share\a.mp4")";
    }

    void explorerGetsOneArgumentWhateverThePathHolds()
    {
        QFETCH(const QString, path);
        QFETCH(const QString, arguments);
        QCOMPARE(platform::explorerArguments(path), std::optional(arguments));
    }

    void explorerIsNotAskedForWhatNoFileCanHave_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("quote") << R"(C:/a" /root,"C:/b.mp4)";
        QTest::newRow("empty") << "";
    }

    void explorerIsNotAskedForWhatNoFileCanHave()
    {
        QFETCH(const QString, path);
        QVERIFY(!platform::explorerArguments(path).has_value());
    }
};

REGISTER_TEST(testrun::core<TestWindowsPath>);

#include "test_windowspath.moc"
