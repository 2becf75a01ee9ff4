#include "platform/explorer_arguments.h"
#include "tests/support/testrun.h"

#include <QTest>

/// How Windows' file manager is told which file to show.
class TestExplorerArguments : public QObject
{
    Q_OBJECT

private slots:
    void pathIsOneArgumentWhateverItHolds_data()
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

    void pathIsOneArgumentWhateverItHolds()
    {
        QFETCH(const QString, path);
        QFETCH(const QString, arguments);
        QCOMPARE(platform::explorerArguments(path), std::optional(arguments));
    }

    void pathThatNoFileCanHaveIsRefused_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("quote") << R"(C:/a" /root,"C:/b.mp4)";
        QTest::newRow("empty") << "";
    }

    void pathThatNoFileCanHaveIsRefused()
    {
        QFETCH(const QString, path);
        QVERIFY(!platform::explorerArguments(path).has_value());
    }
};

REGISTER_TEST(testrun::core<TestExplorerArguments>);

#include "test_explorerarguments.moc"
