#pragma once

#include <QMainWindow>

/// The program's one top-level window.
class SCMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    SCMainWindow();
};
