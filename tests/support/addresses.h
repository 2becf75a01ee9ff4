// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/files/file_opening.h"

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

/// Replaces what the system opens addresses of some schemes with, and notes them, while it lives.
class OpenedAddresses : public QObject
{
    Q_OBJECT

public:
    explicit OpenedAddresses(const QStringList& schemes) : m_schemes(schemes)
    {
        platform::setOpeningWatched(false);
        for (const QString& scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~OpenedAddresses() override
    {
        for (const QString& scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
        platform::setOpeningWatched(true);
    }

    const QList<QUrl>& opened() const { return m_opened; }

    /// The local files among them, by path.
    QStringList files() const
    {
        QStringList paths;
        for (const QUrl& url : m_opened)
            paths.append(url.toLocalFile());
        return paths;
    }

public slots:
    void open(const QUrl& url) { m_opened.append(url); }

private:
    QStringList m_schemes;
    QList<QUrl> m_opened;
};
