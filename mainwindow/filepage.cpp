// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/filepage.h"

#include "app/savefolder.h"
#include "app/settings.h"
#include "files/scfilemanager.h"
#include "mainwindow/activity.h"
#include "mainwindow/filelistkeys.h"
#include "mainwindow/formicons.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/recordingview.h"
#include "platform/files/file_manager.h"
#include "ui_filepage.h"
#include "widgets/desktopservices.h"
#include "widgets/messagebox.h"

#include <QDir>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QPointer>

#include <utility>

#include <algorithm>

FilePage::FilePage(const QSettings& settings, const Activity& activity, Notices& notices)
    : m_ui(std::make_unique<Ui::FilePage>())
    , m_settings(settings)
    , m_activity(activity)
    , m_notices(notices)
    , m_files(new SCFileManager(this))
{
    m_ui->setupUi(this);
    connectControls();
    fillView();
    connectList();
}

FilePage::~FilePage() = default;

void FilePage::connectControls()
{
    new FormIcons(this);
    for (const QPushButton* const button :
         {m_ui->allFilter, m_ui->videoFilter, m_ui->audioFilter, m_ui->screenshotFilter})
        connect(button, &QPushButton::clicked, this, &FilePage::fillView);
    connect(m_ui->openFolderButton, &QPushButton::clicked, this, &FilePage::openFolder);
    connect(m_ui->reverseFilesButton, &QPushButton::clicked, m_files, &SCFileManager::reverseFileOrder);
    connect(m_ui->deleteFilesButton, &QPushButton::clicked, this,
            [this] { m_files->deleteSelectedFiles(m_ui->fileView); });
    connect(m_files, &SCFileManager::error, this, &FilePage::onError);
    connect(m_files, &SCFileManager::fileMissing, this, &FilePage::onFileMissing);
    connect(m_files, &SCFileManager::notOpened, this, &FilePage::onNotOpened);
}

/// Once the view has its model.
void FilePage::connectList()
{
    const QAbstractItemModel* const rows = m_ui->fileView->model();
    connect(rows, &QAbstractItemModel::modelReset, this, &FilePage::showState);
    connect(rows, &QAbstractItemModel::rowsInserted, this, &FilePage::showState);
    connect(rows, &QAbstractItemModel::rowsRemoved, this, &FilePage::showState);
    connect(m_ui->fileView->selectionModel(), &QItemSelectionModel::selectionChanged, this, &FilePage::showState);
    const auto* const keys = new FileListKeys(
        *m_ui->fileView, {m_ui->allFilter, m_ui->videoFilter, m_ui->audioFilter, m_ui->screenshotFilter});
    connect(keys, &FileListKeys::openRequested, this,
            [this](const QModelIndex& row) { m_files->openFile(row.data(SCFileManager::kPathRole).toString()); });
    connect(keys, &FileListKeys::folderRequested, this,
            [this](const QModelIndex& row) { m_files->showInFolder(row.data(SCFileManager::kPathRole).toString()); });
    connect(keys, &FileListKeys::deletionRequested, this, &FilePage::deleteByKey);
}

void FilePage::addFile(const QString& path, const QString& type)
{
    m_files->addFile(path, type);
    m_newType = type;
}

void FilePage::follow(const RecordingView& view)
{
    connect(&view.session(), &RecordingSession::fileProduced, this, &FilePage::setRecordedFile);
    connect(&view, &RecordingView::fileMoved, m_files, &SCFileManager::moveFile);
    connect(&view, &RecordingView::fileSaved, m_files, &SCFileManager::setFileSaved);
}

void FilePage::setRecordedFile(const QString& path, const QString& type)
{
    m_recordedType = type;
    m_files->setFileInUse(path);
}

void FilePage::onRecordingOver()
{
    m_files->setFileInUse({});
    if (!m_recordedType.isEmpty())
        m_newType = std::exchange(m_recordedType, {});
    const bool isCurrentPage = !isHidden();
    if (isCurrentPage)
        showNewest();
    else
        fillView();
    const QStringList errors = std::exchange(m_pendingErrors, {});
    for (const QString& error : errors)
        onError(error);
}

void FilePage::showNewest()
{
    uncoverNewFile();
    fillView();
    m_files->selectFile(0);
}

void FilePage::showScreenshots()
{
    m_ui->screenshotFilter->setChecked(true);
    showNewest();
}

void FilePage::uncoverNewFile()
{
    const QString type = std::exchange(m_newType, {});
    if (!type.isEmpty() && !filter().isEmpty() && filter() != type)
        m_ui->allFilter->setChecked(true);
}

/// As the button does; the row that takes the place of the first deleted one is selected.
void FilePage::deleteByKey()
{
    const QPointer<QListView> view = m_ui->fileView;
    const int rows = view->model()->rowCount();
    int first = rows;
    for (const QModelIndex& index : view->selectionModel()->selectedIndexes())
        first = std::min(first, index.row());
    m_ui->deleteFilesButton->click();
    if (!view.isNull() && view->model()->rowCount() < rows)
        m_files->selectFile(std::min(first, view->model()->rowCount() - 1));
}

QList<messagebox::Action> FilePage::actionsOn(const QString& path)
{
    return {{tr("Open"), [this, path] { m_files->openFile(path); }},
            {tr("Show in Folder"), [this, path] { m_files->showInFolder(path); }}};
}

QString FilePage::filter() const
{
    for (const QPushButton* const button : {m_ui->videoFilter, m_ui->audioFilter, m_ui->screenshotFilter}) {
        if (button->isChecked())
            return button->property("filter").toString();
    }
    return {};
}

void FilePage::fillView()
{
    m_files->setupView(m_ui->fileView, filter());
    showState();
}

void FilePage::showCounts()
{
    const auto show = [](QPushButton& button, const QString& text, qsizetype count) {
        button.setText(QStringLiteral("%1 (%2)").arg(text).arg(count));
    };
    show(*m_ui->allFilter, tr("All"), m_files->files().size());
    show(*m_ui->videoFilter, tr("Video"), m_files->count(QStringLiteral("video")));
    show(*m_ui->audioFilter, tr("Audio"), m_files->count(QStringLiteral("audio")));
    show(*m_ui->screenshotFilter, tr("Screenshot"), m_files->count(QStringLiteral("screenshot")));
}

void FilePage::showState()
{
    showCounts();
    const bool empty = m_ui->fileView->model()->rowCount() == 0;
    m_ui->fileStack->setCurrentWidget(empty ? static_cast<QWidget*>(m_ui->noFilesLabel) : m_ui->fileView);
    m_ui->reverseFilesButton->setEnabled(!empty);
    m_ui->deleteFilesButton->setEnabled(m_ui->fileView->selectionModel()->hasSelection());
}

void FilePage::retranslate()
{
    m_ui->retranslateUi(this);
    showCounts();
    m_ui->fileView->viewport()->update();
}

void FilePage::onError(const QString& message)
{
    // A box would be recorded, and a window that is about to close waits for nobody.
    if (!m_activity.isIdle())
        m_pendingErrors.append(message);
    else if (!m_activity.isClosing())
        messagebox::critical(window(), tr("Error"), message);
}

void FilePage::onFileMissing(const QString& path)
{
    m_notices.post({tr("The file is no longer there: %1").arg(QFileInfo(path).fileName())});
}

void FilePage::openFolder()
{
    const bool screenshots = m_ui->screenshotFilter->isChecked();
    const QLatin1String key =
        screenshots ? settingskeys::kScreenshotSaveLocation : settingskeys::kRecordingSaveLocation;
    const QString stored = m_settings.value(key).toString();
    // What can only be read can be shown.
    const bool isThere = stored != QLatin1String("/") && QDir::isAbsolutePath(stored) && QFileInfo(stored).isDir();
    openFile(isThere ? stored : usableSaveFolder(stored, key).path);
}

void FilePage::onNotOpened(const QString& path)
{
    m_notices.post({tr("No program can open %1.").arg(QFileInfo(path).fileName()), tr("Show in Folder"),
                    [path] { platform::revealInFileManager(path); }});
}
