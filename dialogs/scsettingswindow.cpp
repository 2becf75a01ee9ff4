// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/scsettingswindow.h"

#include "app/settings.h"
#include "app/settingstables.h"
#include "dialogs/dialogwindow.h"
#include "dialogs/folderfield.h"
#include "dialogs/hotkeychoices.h"
#include "platform/windowing/frameless_window.h"
#include "ui_scsettingswindow.h"
#include "widgets/combobox.h"
#include "widgets/icons.h"
#include "widgets/stylesheet.h"

#include <QButtonGroup>
#include <QFileDialog>
#include <QPushButton>

#include <utility>

namespace {

void fillFormats(QComboBox& box, const settingstables::PositionToText& formats)
{
    for (const auto& [position, name] : formats)
        box.insertItem(position, QCoreApplication::translate("SCSettingsWindow", name.toUtf8().constData()));
}

} // namespace

SCSettingsWindow::SCSettingsWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::SCSettingsWindow>())
    , m_tabs(new QButtonGroup(this))
    , m_settings(openSettings())
{
    m_ui->setupUi(this);
    m_recordingFolder = new FolderField(m_ui->recordingFileLocationLE, *m_ui->recordingFolderNote);
    m_screenshotFolder = new FolderField(m_ui->screenshotFileLocationLE, *m_ui->screenshotFolderNote);
    dialogwindow::prepare(*this, m_ui->logoLabel, m_ui->closeBtn).setTitleBar(m_ui->titleBar);
    setUpLook();
    setUpTabs();
    connectControls();
    loadSettings();
    showSettings();
    m_ui->recordingSettingsTab->setChecked(true);
    onTabChanged(m_tabs->checkedId());
}

SCSettingsWindow::~SCSettingsWindow() = default;

void SCSettingsWindow::setUpLook()
{
    for (QComboBox* const box : {m_ui->recordingFormatComboBox, m_ui->screenshotFormatComboBox, m_ui->recordingComboBox,
                                 m_ui->screenshotComboBox})
        prepareComboBox(*box);
    fillFormats(*m_ui->recordingFormatComboBox, settingstables::kRecordingFormats);
    fillFormats(*m_ui->screenshotFormatComboBox, settingstables::kScreenshotFormats);
    QPushButton* const saveButton = m_ui->buttonBox->button(QDialogButtonBox::Save);
    QPushButton* const cancelButton = m_ui->buttonBox->button(QDialogButtonBox::Cancel);
    saveButton->setText(tr("Save"));
    cancelButton->setText(tr("Cancel"));
    saveButton->setObjectName(QStringLiteral("saveBtn"));
    for (QPushButton* const button : {saveButton, cancelButton}) {
        // Some desktops have icons for them.
        button->setIcon({});
    }
    // Last: it goes by the names.
    applyStyleSheet(*this, QStringLiteral(":/res/style/settings-window.qss"));
}

void SCSettingsWindow::setUpTabs()
{
    // The ids are indexes of pages; the tabs have another order.
    m_tabs->addButton(m_ui->recordingSettingsTab, 0);
    m_tabs->addButton(m_ui->screenshotSettingsTab, 1);
    m_tabs->addButton(m_ui->mouseSettingsTab, 2);
    m_tabs->addButton(m_ui->hotkeysSettingsTab, 3);
    new HoverIcons(m_ui->recordingSettingsTab, QStringLiteral("recording"));
    new HoverIcons(m_ui->screenshotSettingsTab, QStringLiteral("screenshot"));
    new HoverIcons(m_ui->hotkeysSettingsTab, QStringLiteral("hotkeys"));
    new HoverIcons(m_ui->mouseSettingsTab, QStringLiteral("mouse"));
}

void SCSettingsWindow::connectControls()
{
    connect(m_tabs, &QButtonGroup::idClicked, this, &SCSettingsWindow::onTabChanged);
    connect(m_ui->closeBtn, &QPushButton::clicked, this, &SCSettingsWindow::onCloseClicked);
    connect(m_ui->buttonBox, &QDialogButtonBox::clicked, this, &SCSettingsWindow::onButtonBoxClicked);
    connect(m_ui->recordingComboBox, &QComboBox::currentIndexChanged, this,
            &SCSettingsWindow::onRecordingHotkeyChanged);
    connect(m_ui->screenshotComboBox, &QComboBox::currentIndexChanged, this,
            &SCSettingsWindow::onScreenshotHotkeyChanged);
    connect(m_ui->showCursorCheckBox, &QCheckBox::stateChanged, this, [this](int state) {
        if (state == Qt::Unchecked)
            m_ui->highlightCursorCheckBox->setChecked(false);
    });
    connect(m_ui->highlightCursorCheckBox, &QCheckBox::stateChanged, this, [this](int state) {
        if (state == Qt::Checked)
            m_ui->showCursorCheckBox->setChecked(true);
    });
}

void SCSettingsWindow::loadSettings()
{
    const auto text = [this](QLatin1String key) { return m_settings->value(key).toString(); };
    m_language = text(settingskeys::kLanguage);
    m_recordingHotkey = text(settingskeys::kRecordingHotkey);
    m_screenshotHotkey = text(settingskeys::kScreenshotHotkey);
    m_recordingFormat = text(settingskeys::kRecordingFormat);
    m_recordingSaveLocation = text(settingskeys::kRecordingSaveLocation);
    m_screenshotFormat = text(settingskeys::kScreenshotFormat);
    m_screenshotSaveLocation = text(settingskeys::kScreenshotSaveLocation);
    m_showCursor = m_settings->value(settingskeys::kMouseShowCursor).toBool();
    m_showHighlight = m_settings->value(settingskeys::kMouseShowHighlight).toBool();
}

void SCSettingsWindow::showSettings()
{
    fillRecordingHotkeys();
    fillScreenshotHotkeys();
    m_ui->recordingFormatComboBox->setCurrentIndex(settingstables::kRecordingFormatPositions.at(m_recordingFormat));
    m_ui->screenshotFormatComboBox->setCurrentIndex(settingstables::kScreenshotFormatPositions.at(m_screenshotFormat));
    m_recordingFolder->setFolder(m_recordingSaveLocation);
    m_screenshotFolder->setFolder(m_screenshotSaveLocation);
    m_ui->showCursorCheckBox->setChecked(m_showCursor);
    m_ui->highlightCursorCheckBox->setChecked(m_showHighlight);
}

void SCSettingsWindow::fillRecordingHotkeys()
{
    hotkeychoices::fill(*m_ui->recordingComboBox, m_recordingHotkey, m_screenshotHotkey);
}

void SCSettingsWindow::fillScreenshotHotkeys()
{
    hotkeychoices::fill(*m_ui->screenshotComboBox, m_screenshotHotkey, m_recordingHotkey);
}

void SCSettingsWindow::onTabChanged(int index)
{
    m_ui->stackedWidget->setCurrentIndex(index);
}

void SCSettingsWindow::onCloseClicked()
{
    close();
}

void SCSettingsWindow::onButtonBoxClicked(QAbstractButton* button)
{
    const QDialogButtonBox::StandardButton which = m_ui->buttonBox->standardButton(button);
    if (which == QDialogButtonBox::Save)
        saveAfterCheck();
    else if (which == QDialogButtonBox::Cancel)
        close();
}

/// And close, once the disk has answered for both folders.
void SCSettingsWindow::saveAfterCheck()
{
    if (m_isSaving)
        return;
    setSaving(true);
    checkFolder(*m_recordingFolder, *m_ui->recordingSettingsTab, [this] {
        checkFolder(*m_screenshotFolder, *m_ui->screenshotSettingsTab, [this] {
            setSaving(false);
            save();
            close();
        });
    });
}

void SCSettingsWindow::setSaving(bool isSaving)
{
    m_isSaving = isSaving;
    m_ui->sideBar->setDisabled(isSaving);
    m_ui->stackedWidget->setDisabled(isSaving);
    // The button stays enabled: it would pass the keyboard on to Cancel.
    const QString note = isSaving ? tr("Checking the folder...") : QString();
    m_ui->savingNote->setText(note);
    m_ui->buttonBox->button(QDialogButtonBox::Save)->setAccessibleDescription(note);
}

/// Whatever the disk says then, nothing is saved.
void SCSettingsWindow::closeEvent(QCloseEvent* event)
{
    setSaving(false);
    QMainWindow::closeEvent(event);
}

/// Goes on, or shows the page of the folder that cannot be used.
void SCSettingsWindow::checkFolder(FolderField& field, QAbstractButton& tab, const std::function<void()>& next)
{
    field.check([this, &field, &tab, next](bool isUsable) {
        if (!m_isSaving)
            return;
        if (isUsable) {
            next();
            return;
        }
        setSaving(false);
        tab.click();
        field.takeFocus();
    });
}

void SCSettingsWindow::on_changeRecordingFileLocationBtn_clicked()
{
    chooseFolder(*m_recordingFolder, tr("Choose Save Location"), settingskeys::kRecordingSaveLocation);
}

void SCSettingsWindow::on_changeScreenshotFileLocationBtn_clicked()
{
    chooseFolder(*m_screenshotFolder, tr("Choose Screenshot Save Location"), settingskeys::kScreenshotSaveLocation);
}

void SCSettingsWindow::onRecordingHotkeyChanged(int /*index*/)
{
    m_recordingHotkey = hotkeychoices::chosen(*m_ui->recordingComboBox);
    fillRecordingHotkeys();
    fillScreenshotHotkeys();
}

void SCSettingsWindow::onScreenshotHotkeyChanged(int /*index*/)
{
    m_screenshotHotkey = hotkeychoices::chosen(*m_ui->screenshotComboBox);
    fillScreenshotHotkeys();
    fillRecordingHotkeys();
}

void SCSettingsWindow::chooseFolder(FolderField& field, const QString& title, QLatin1String key)
{
    const QString folder = QFileDialog::getExistingDirectory(
        this, title, field.folder(), QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (folder.isEmpty())
        return;
    field.setFolder(folder);
    m_settings->setValue(key, folder);
    emit saveLocationChanged();
}

void SCSettingsWindow::save()
{
    const auto recordingFormat = settingstables::kRecordingFormats.at(m_ui->recordingFormatComboBox->currentIndex());
    const auto screenshotFormat = settingstables::kScreenshotFormats.at(m_ui->screenshotFormatComboBox->currentIndex());
    m_settings->setValue(settingskeys::kRecordingHotkey, hotkeychoices::chosen(*m_ui->recordingComboBox));
    m_settings->setValue(settingskeys::kScreenshotHotkey, hotkeychoices::chosen(*m_ui->screenshotComboBox));
    m_settings->setValue(settingskeys::kRecordingFormat, recordingFormat);
    m_settings->setValue(settingskeys::kRecordingSaveLocation, m_recordingFolder->folder());
    m_settings->setValue(settingskeys::kScreenshotFormat, screenshotFormat);
    m_settings->setValue(settingskeys::kScreenshotSaveLocation, m_screenshotFolder->folder());
    m_settings->setValue(settingskeys::kMouseShowCursor, m_ui->showCursorCheckBox->isChecked());
    m_settings->setValue(settingskeys::kMouseShowHighlight, m_ui->highlightCursorCheckBox->isChecked());
    emit updateSettings();
}
