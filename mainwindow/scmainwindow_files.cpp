// The page of the files that were made: the list, its filters and what is done with it.

#include "app/sclogger.h"
#include "files/scfilemanager.h"
#include "mainwindow/recording/recordingpath.h"
#include "mainwindow/scmainwindow.h"
#include "ui_scmainwindow.h"
#include "widgets/desktopservices.h"
#include "widgets/icons.h"
#include "widgets/messagebox.h"

#include <QItemSelectionModel>

#include <utility>

void SCMainWindow::setUpFiles()
{
    new HoverIcons(m_ui->openFolderButton, QStringLiteral("folder"));
    new HoverIcons(m_ui->reverseFilesButton, QStringLiteral("reverse"));
    new HoverIcons(m_ui->deleteFilesButton, QStringLiteral("delete"));
    for (const QPushButton* const filter :
         {m_ui->allFilter, m_ui->videoFilter, m_ui->audioFilter, m_ui->screenshotFilter})
        connect(filter, &QPushButton::clicked, this, &SCMainWindow::onFilterChosen);
    connect(m_ui->openFolderButton, &QPushButton::clicked, this, &SCMainWindow::openFilesFolder);
    connect(m_ui->reverseFilesButton, &QPushButton::clicked, m_files, &SCFileManager::reverseFileOrder);
    connect(m_ui->deleteFilesButton, &QPushButton::clicked, this,
            [this] { m_files->deleteSelectedFiles(m_ui->fileView); });
    connect(this, &SCMainWindow::fileProduced, m_files, &SCFileManager::addFile);
    connect(m_files, &SCFileManager::error, this, &SCMainWindow::onFileError);

    fillFileView();
    const QAbstractItemModel* const rows = m_ui->fileView->model();
    connect(rows, &QAbstractItemModel::modelReset, this, &SCMainWindow::showFileState);
    connect(rows, &QAbstractItemModel::rowsInserted, this, &SCMainWindow::showFileState);
    connect(rows, &QAbstractItemModel::rowsRemoved, this, &SCMainWindow::showFileState);
    connect(m_ui->fileView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SCMainWindow::showFileState);
}

void SCMainWindow::onPageChosen(int index)
{
    if (m_ui->pages->widget(index) == m_ui->filesPage)
        showFiles();
    else
        m_ui->pages->setCurrentIndex(index);
}

void SCMainWindow::showFiles()
{
    m_ui->pages->setCurrentWidget(m_ui->filesPage);
    fillFileView();
    m_files->selectFile(0);
}

QString SCMainWindow::chosenFilter() const
{
    for (const QPushButton* const filter : {m_ui->videoFilter, m_ui->audioFilter, m_ui->screenshotFilter}) {
        if (filter->isChecked())
            return filter->property("filter").toString();
    }
    return {};
}

void SCMainWindow::onFilterChosen()
{
    fillFileView();
}

void SCMainWindow::fillFileView()
{
    m_files->setupView(m_ui->fileView, chosenFilter());
    showFileState();
}

/// How many files there are of each kind, and what can be done with those that are shown.
void SCMainWindow::showFileState()
{
    const auto label = [](QPushButton& button, const QString& text, qsizetype count) {
        button.setText(QStringLiteral("%1 (%2)").arg(text).arg(count));
    };
    label(*m_ui->allFilter, tr("All"), m_files->files().size());
    label(*m_ui->videoFilter, tr("Video"), m_files->count(QStringLiteral("video")));
    label(*m_ui->audioFilter, tr("Audio"), m_files->count(QStringLiteral("audio")));
    label(*m_ui->screenshotFilter, tr("Screenshot"), m_files->count(QStringLiteral("screenshot")));

    const bool empty = m_ui->fileView->model()->rowCount() == 0;
    m_ui->fileStack->setCurrentWidget(empty ? static_cast<QWidget*>(m_ui->noFilesLabel) : m_ui->fileView);
    m_ui->reverseFilesButton->setEnabled(!empty);
    m_ui->deleteFilesButton->setEnabled(m_ui->fileView->selectionModel()->hasSelection());
}

void SCMainWindow::onRecordingBegun(const QString& path, const QString& type)
{
    m_files->setFileInUse(path);
    emit fileProduced(path, type);
}

void SCMainWindow::showScreenshots()
{
    m_ui->filesTab->setChecked(true);
    m_ui->screenshotFilter->setChecked(true);
    showFiles();
}

/// The list has the new file; what could not be told before is told now.
void SCMainWindow::onRecordingOver()
{
    m_files->setFileInUse({});
    fillFileView();
    if (m_ui->pages->currentWidget() == m_ui->filesPage)
        m_files->selectFile(0);
    const QStringList errors = std::exchange(m_untoldErrors, {});
    for (const QString& error : errors)
        onFileError(error);
}

void SCMainWindow::onFileError(const QString& message)
{
    // A box would be recorded, and a window that is about to close waits for nobody.
    if (!m_activity.isIdle())
        m_untoldErrors.append(message);
    else if (!m_activity.isClosing())
        messagebox::critical(this, tr("Error"), message);
}

void SCMainWindow::openFilesFolder()
{
    const bool screenshots = m_ui->screenshotFilter->isChecked();
    openFolder(screenshots ? m_ui->screenshotLocationEdit->text() : m_ui->saveLocationEdit->text());
}

void SCMainWindow::openFolder(const QString& folder)
{
    if (!ensureFolder(folder))
        SCLogger::error(QStringLiteral("The save folder does not exist and cannot be made: %1").arg(folder));
    openFile(folder);
}
