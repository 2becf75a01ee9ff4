// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/audiodevicemenu.h"

#include "app/sclogger.h"
#include "engine/ports.h"
#include "mainwindow/menustyle.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>

#include <utility>

#include <algorithm>

namespace {

/// A menu takes an ampersand for the mark of a shortcut.
QString withoutShortcut(QString name)
{
    return name.replace(QLatin1Char('&'), QLatin1String("&&"));
}

QAction* checkedEntry(const QMenu& menu)
{
    const QList<QAction*> entries = menu.actions();
    const auto checked = std::ranges::find_if(entries, &QAction::isChecked);
    return checked == entries.cend() ? nullptr : *checked;
}

bool isDefault(const AudioDeviceEntry& device)
{
    return device.id == kDefaultAudioDevice;
}

} // namespace

AudioDeviceMenu::AudioDeviceMenu(QPushButton& button, List list)
    : QObject(&button), m_button(button), m_list(std::move(list)), m_chosen{{}, kDefaultAudioDevice}
{
    connect(&m_button, &QPushButton::clicked, this, &AudioDeviceMenu::popUp);
}

AudioDeviceMenu::~AudioDeviceMenu()
{
    delete m_menu;
}

QString AudioDeviceMenu::fallBack()
{
    m_replaced = std::exchange(m_chosen, {{}, kDefaultAudioDevice});
    return m_replaced.name;
}

void AudioDeviceMenu::returnToChosen()
{
    if (!m_replaced.id.isEmpty())
        m_chosen = std::exchange(m_replaced, {});
}

void AudioDeviceMenu::popUp()
{
    delete m_menu;
    m_menu = build();
    // Deferred: the chosen entry, which the menu owns, is carried out after the menu has hidden.
    connect(m_menu, &QMenu::aboutToHide, m_menu, &QObject::deleteLater);
    m_menu->popup(m_button.mapToGlobal(QPoint(0, m_button.height())));
    m_menu->setActiveAction(checkedEntry(*m_menu));
}

QMenu* AudioDeviceMenu::build()
{
    auto* const menu = new QMenu;
    menu->setStyleSheet(menuStyleSheet());
    menu->setAccessibleName(m_button.accessibleName());
    addEntry(*menu, {tr("Default"), kDefaultAudioDevice});
    const QList<AudioDeviceEntry> devices = m_list();
    for (const AudioDeviceEntry& device : devices)
        if (!isDefault(device))
            addEntry(*menu, device);
    if (checkedEntry(*menu) == nullptr)
        addEntry(*menu, m_chosen)->setEnabled(false);
    return menu;
}

QAction* AudioDeviceMenu::addEntry(QMenu& menu, const AudioDeviceEntry& device)
{
    QAction* const entry = menu.addAction(withoutShortcut(device.name));
    entry->setCheckable(true);
    entry->setChecked(device.id == m_chosen.id);
    connect(entry, &QAction::triggered, this, [this, device] { choose(device); });
    return entry;
}

void AudioDeviceMenu::choose(const AudioDeviceEntry& device)
{
    // The default device is not used for the time being any more.
    const bool wasReplaced = !std::exchange(m_replaced, {}).id.isEmpty();
    if (device.id == m_chosen.id && !wasReplaced)
        return;
    m_chosen = device;
    SCLogger::info(QStringLiteral("Audio device: %1 (%2)").arg(device.name, device.id));
    emit chosen();
}
