// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "files/avformathandles.h"
#include "files/filework.h"
#include "files/mp4file.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStorageInfo>

#include <utility>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using avformathandles::Input;
using avformathandles::Packet;

/// For the index, which is not in the source.
constexpr qint64 kSpareBytes = qint64{16} * 1024 * 1024;

struct CloseOutput
{
    void operator()(AVFormatContext* context) const
    {
        avio_closep(&context->pb);
        avformat_free_context(context);
    }
};
using Output = std::unique_ptr<AVFormatContext, CloseOutput>;

QString textOf(int code)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return QString::fromUtf8(text.data());
}

/// One file that becomes another.
class Remux
{
public:
    Remux(const QString& source, const QString& target, FileWork& work);

    /// A code of libavformat, negative where it failed.
    int run();

private:
    int openSource();
    int openTarget();
    int copyPackets();
    void moveFirstPacket(AVPacket& packet) const;
    int writePacket(AVPacket& packet);

    const QByteArray m_source;
    const QByteArray m_target;
    const FileWork& m_work;
    const AVIOInterruptCB m_interrupt;
    Input m_input;
    Output m_output;
    bool m_isEmpty = true;
};

Remux::Remux(const QString& source, const QString& target, FileWork& work)
    : m_source(QFile::encodeName(source))
    , m_target(QFile::encodeName(target))
    , m_work(work)
    , m_interrupt(avformathandles::interruptedBy(work))
{}

int Remux::openSource()
{
    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        return AVERROR(ENOMEM);
    context->interrupt_callback = m_interrupt;
    // Frees the context where it fails.
    const int opened = avformat_open_input(&context, m_source.constData(), nullptr, nullptr);
    if (opened < 0)
        return opened;
    m_input.reset(context);
    return avformat_find_stream_info(context, nullptr);
}

int Remux::openTarget()
{
    AVFormatContext* context = nullptr;
    if (const int made = avformat_alloc_output_context2(&context, nullptr, "mp4", m_target.constData()); made < 0)
        return made;
    m_output.reset(context);
    context->interrupt_callback = m_interrupt;
    av_dict_copy(&context->metadata, m_input->metadata, 0);
    for (unsigned i = 0; i < m_input->nb_streams; ++i) {
        const AVStream& from = *m_input->streams[i];
        AVStream* const to = avformat_new_stream(context, nullptr);
        if (!to)
            return AVERROR(ENOMEM);
        if (const int copied = avcodec_parameters_copy(to->codecpar, from.codecpar); copied < 0)
            return copied;
        to->codecpar->codec_tag = 0;
        to->time_base = from.time_base;
        to->avg_frame_rate = from.avg_frame_rate;
    }
    const int opened = avio_open2(&context->pb, m_target.constData(), AVIO_FLAG_WRITE, &m_interrupt, nullptr);
    if (opened < 0)
        return opened;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    const int written = avformat_write_header(context, &options);
    av_dict_free(&options);
    return written;
}

/// The first packet of audio begins before the video does. Fragments give it the time 0 and all space up to the second.
void Remux::moveFirstPacket(AVPacket& packet) const
{
    AVStream* const stream = m_input->streams[packet.stream_index];
    const AVCodecParameters& codec = *stream->codecpar;
    const AVIndexEntry* const second = avformat_index_get_entry(stream, 1);
    if (packet.dts != 0 || !second || codec.frame_size <= 0 || codec.sample_rate <= 0)
        return;
    const std::int64_t length = av_rescale_q(codec.frame_size, {1, codec.sample_rate}, stream->time_base);
    const std::int64_t late = std::max<std::int64_t>(second->timestamp - length, 0);
    packet.pts += late;
    packet.dts += late;
    packet.duration = length;
}

int Remux::writePacket(AVPacket& packet)
{
    moveFirstPacket(packet);
    const int stream = packet.stream_index;
    av_packet_rescale_ts(&packet, m_input->streams[stream]->time_base, m_output->streams[stream]->time_base);
    packet.pos = -1;
    return av_interleaved_write_frame(m_output.get(), &packet);
}

/// Up to the end, or to where a killed program has left off.
int Remux::copyPackets()
{
    const Packet packet(av_packet_alloc());
    int read = 0;
    while ((read = av_read_frame(m_input.get(), packet.get())) >= 0) {
        const bool isWhole = (packet->flags & AV_PKT_FLAG_CORRUPT) == 0;
        const int written = isWhole ? writePacket(*packet) : 0;
        av_packet_unref(packet.get());
        if (written < 0)
            return written;
        m_isEmpty = m_isEmpty && !isWhole;
    }
    if (m_work.isCancelled())
        return AVERROR_EXIT;
    if (const int disk = avformathandles::diskError(*m_input); disk < 0)
        return disk;
    if (read != AVERROR_EOF && read != AVERROR_INVALIDDATA)
        return read;
    return m_isEmpty ? AVERROR_INVALIDDATA : 0;
}

int Remux::run()
{
    for (const auto step : {&Remux::openSource, &Remux::openTarget, &Remux::copyPackets})
        if (const int result = (this->*step)(); result < 0)
            return result;
    const int ended = av_write_trailer(m_output.get());
    const int closed = avio_closep(&m_output->pb);
    return ended < 0 ? ended : closed;
}

/// What tells a file, and a state of it, from others.
struct FileState
{
    explicit FileState(const QString& path)
    {
        struct stat status = {};
        if (lstat(QFile::encodeName(path).constData(), &status) == 0)
            take(status);
    }
    explicit FileState(int descriptor)
    {
        struct stat status = {};
        if (fstat(descriptor, &status) == 0)
            take(status);
    }

    bool operator==(const FileState&) const = default;
    bool isPlainFile() const { return inode != 0; }
    bool isSameFile(const FileState& other) const
    {
        return isPlainFile() && device == other.device && inode == other.inode;
    }

    dev_t device = 0;
    ino_t inode = 0;
    off_t bytes = 0;
    std::int64_t changedNs = 0;

private:
    void take(const struct stat& status)
    {
        if (!S_ISREG(status.st_mode))
            return;
        device = status.st_dev;
        inode = status.st_ino;
        bytes = status.st_size;
        changedNs = status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec;
    }
};

/// Whether another user can neither have put it there nor reach another of his files through it.
bool isOwnFile(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
           status.st_nlink == 1;
}

/// The new file until it replaces the recording. Of several instances of the program that finish the same recording,
/// one has it. Removed with the object.
class UnfinishedFile
{
public:
    explicit UnfinishedFile(const QString& path) : m_path(path) {}
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    /// Empties what a killed program has left, and goes round what somebody else has put there. 0, or the system's
    /// number of the error.
    int open();
    bool isThere() const { return FileState(m_path).isSameFile(FileState(m_descriptor)); }
    /// For libavformat, to which its name may have come to mean another file.
    QString openPath() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }
    /// 0, or the system's number of the error.
    int syncWith(QFile::Permissions permissions) const;
    /// Afterwards the object has nothing to remove.
    int replace(const QString& path);

private:
    int make();
    int takeLeft();
    int makeElsewhere();

    QString m_path;
    int m_descriptor = -1;
};

UnfinishedFile::~UnfinishedFile()
{
    if (m_descriptor < 0)
        return;
    if (isThere())
        QFile::remove(m_path);
    close(m_descriptor);
}

int UnfinishedFile::open()
{
    const int error = make();
    return error == EEXIST ? takeLeft() : error;
}

int UnfinishedFile::make()
{
    const int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    m_descriptor = ::open(QFile::encodeName(m_path).constData(), flags, S_IRUSR | S_IWUSR);
    if (m_descriptor < 0)
        return errno;
    // Another instance has it already. Where the file system has no locks, who has made the file has it.
    if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        close(std::exchange(m_descriptor, -1));
        return EWOULDBLOCK;
    }
    return 0;
}

int UnfinishedFile::takeLeft()
{
    const int flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int descriptor = ::open(QFile::encodeName(m_path).constData(), flags);
    if (descriptor < 0)
        return makeElsewhere();
    int error = isOwnFile(descriptor) ? 0 : EPERM;
    if (error == 0 && flock(descriptor, LOCK_EX | LOCK_NB) != 0)
        error = errno;
    // Another instance may have just finished with it.
    if (error == 0 && !FileState(m_path).isSameFile(FileState(descriptor)))
        error = EWOULDBLOCK;
    if (error == 0 && ftruncate(descriptor, 0) != 0)
        error = errno;
    if (error == 0)
        m_descriptor = descriptor;
    else
        close(descriptor);
    return error == 0 || error == EWOULDBLOCK ? error : makeElsewhere();
}

int UnfinishedFile::makeElsewhere()
{
    SCLogger::warning(QStringLiteral("%1 is not free, another name is taken").arg(QFileInfo(m_path).fileName()));
    const QString number = QString::number(QRandomGenerator::system()->generate64(), 16);
    m_path = QStringLiteral("%1/.%2.unfinished").arg(QFileInfo(m_path).path(), number);
    return make();
}

int UnfinishedFile::syncWith(QFile::Permissions permissions) const
{
    // Some disks and networks have permissions of their own and refuse others.
    (void)QFile(openPath()).setPermissions(permissions);
    // EINVAL: not a file system that could.
    return fsync(m_descriptor) == 0 || errno == EINVAL ? 0 : errno;
}

int UnfinishedFile::replace(const QString& path)
{
    if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(path).constData()) != 0)
        return errno;
    close(std::exchange(m_descriptor, -1));
    return 0;
}

bool hasNoSpace(int code)
{
    return code == AVERROR(ENOSPC) || code == AVERROR(EDQUOT);
}

/// A code as libavformat has them.
int remux(const QString& path, UnfinishedFile& made, const FileState& before, FileWork& work)
{
    int code = AVERROR_EXIT;
    work.change([&made, &code] { code = AVERROR(made.open()); });
    if (code < 0)
        return code == AVERROR(EWOULDBLOCK) ? AVERROR_EXIT : code;
    if (code = Remux(path, made.openPath(), work).run(); code < 0)
        return code;
    if (code = AVERROR(made.syncWith(QFile::permissions(path))); code < 0)
        return code;
    code = AVERROR_EXIT;
    work.change([&] {
        // Somebody may have moved the file away, and recorded another one under its name.
        if (FileState(path) == before && made.isThere())
            code = AVERROR(made.replace(path));
    });
    return code;
}

} // namespace

PlainMp4 makePlainMp4(const QString& path, FileWork& work, QString& error)
{
    const FileState before(path);
    if (!before.isPlainFile()) {
        error = QStringLiteral("it is a link");
        return PlainMp4::Failed;
    }
    // What a killed program has left takes the space that is wanted.
    const QString target = unfinishedMp4Path(path);
    const qint64 free = QStorageInfo(QFileInfo(path).path()).bytesAvailable() + QFileInfo(target).size();
    if (free < before.bytes + kSpareBytes)
        return PlainMp4::NoSpace;
    UnfinishedFile made(target);
    const int code = remux(path, made, before, work);
    if (code == 0)
        return PlainMp4::Made;
    if (work.isCancelled() || code == AVERROR_EXIT)
        return PlainMp4::Cancelled;
    error = textOf(code);
    return hasNoSpace(code) ? PlainMp4::NoSpace : PlainMp4::Failed;
}
