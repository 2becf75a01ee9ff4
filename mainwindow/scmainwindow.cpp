#include "mainwindow/scmainwindow.h"

SCMainWindow::SCMainWindow() = default;
