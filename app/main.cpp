#include "app/appidentity.h"
#include "mainwindow/scmainwindow.h"
#include "platform/console.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    platform::attachToParentConsole();
    appidentity::apply();
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QApplication application(argc, argv);
    SCMainWindow window;
    window.show();
    return QApplication::exec();
}
