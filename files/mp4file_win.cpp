// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/mp4file.h"

/// The libavformat that records here makes files plain by itself. Only what a killed program left is in fragments.
PlainMp4 makePlainMp4(const QString&, FileWork&, QString& error)
{
    error = QStringLiteral("this system leaves it in fragments");
    return PlainMp4::Failed;
}
