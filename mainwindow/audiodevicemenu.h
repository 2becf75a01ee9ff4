// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

class QAction;
class QMenu;
class QPushButton;

struct AudioDeviceEntry
{
    QString name;
    QString id;
};

/// A button opens a menu of the system's microphones, or of its speakers, of which one is chosen. The choice lasts as
/// long as this object. User-interface thread.
class AudioDeviceMenu : public QObject
{
    Q_OBJECT

public:
    /// What the engine lists at this moment.
    using List = std::function<QList<AudioDeviceEntry>()>;

    /// Belongs to button.
    AudioDeviceMenu(QPushButton& button, List list);
    ~AudioDeviceMenu() override;

    /// For the engine.
    const QString& deviceId() const { return m_chosen.id; }

    /// Chooses the default device without a signal. @return the name of the one that was chosen
    QString fallBack();
    /// Chooses the one again that was chosen before that, unless the user has chosen since.
    void returnToChosen();

signals:
    /// By the user, and another one than before.
    void chosen();

private:
    void popUp();
    QMenu* build();
    QAction* addEntry(QMenu& menu, const AudioDeviceEntry& device);
    void choose(const AudioDeviceEntry& device);

    QPushButton& m_button;
    const List m_list;
    AudioDeviceEntry m_chosen;
    /// By the default device; without an id where none was.
    AudioDeviceEntry m_replaced;
    QPointer<QMenu> m_menu;
};
