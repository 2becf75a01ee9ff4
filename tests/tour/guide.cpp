// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tour/guide.h"

#include <QApplication>
#include <QComboBox>
#include <QTimer>

namespace tour {

void lookAtBox(const Look& look, const QByteArray& name)
{
    QWidget* const box = QApplication::activeModalWidget();
    if (box == nullptr)
        qFatal("There is no box to look at: %s", name.constData());
    look({name, box->frameGeometry(), {box}});
    box->close();
}

void stopAtBox(const Look& look, const QByteArray& name, const std::function<void()>& show)
{
    QTimer::singleShot(kUntilShownMs, qApp, [&look, &name] { lookAtBox(look, name); });
    show();
}

void stopAtList(const Look& look, const QByteArray& name, QWidget& window, const char* box)
{
    child<QComboBox>(window, box).showPopup();
    wait();
    QWidget* const list = QApplication::activePopupWidget();
    look({name, window.frameGeometry() | list->geometry(), {&window, list}});
    list->close();
}

void everything(const Look& look)
{
    mainWindow(look);
    files(look);
    dialogs(look);
    messages(look);
    overlays(look);
    screenshotFrame(look);
}

} // namespace tour
