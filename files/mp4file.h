// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class FileWork;

/// Whether a file is an MP4 in fragments, as a recording writes it. One that was made plain is none.
bool isFragmentedMp4(const QString& path);

/// A full disk or a kill may leave a file that ends within the head of a fragment, and no program opens such a file: it
/// is cut off.
/// @return whether there was one
bool cutBrokenFragmentHead(const QString& path, FileWork& work);

enum class PlainMp4
{
    Made,
    Cancelled,
    NoSpace,
    Failed,
};

/// Where plainMp4() writes to.
QString unfinishedMp4Path(const QString& path);

/// Makes a fragmented MP4 a plain one with its index in front. The streams stay as they are. The file is replaced when
/// the new one is complete and on the disk, and left as it is where that fails; a file that ends in the middle of a
/// fragment is taken up to it. Nothing is replaced where the path has come to name another file, or the file has
/// changed, or another instance of the program is at it. Takes as much space as the file. Any thread.
///
/// @param error in words, for Failed
PlainMp4 makePlainMp4(const QString& path, FileWork& work, QString& error);
