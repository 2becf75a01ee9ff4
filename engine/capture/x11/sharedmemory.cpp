// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/sharedmemory.h"

#include "platform/system_failure.h"

#include <cerrno>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <unistd.h>

namespace {

constexpr char kName[] = "kestrano-frames";
/// Read and write, for this user alone.
constexpr int kOwnerOnly = 0600;

void unmapDescriptor(void* data, std::size_t bytes)
{
    munmap(data, bytes);
}

void unmapSystemV(void* data, std::size_t)
{
    shmdt(data);
}

void* failed(const char* call)
{
    platform::reportSystemFailure(call, static_cast<unsigned long>(errno));
    return nullptr;
}

/// Maps the descriptor's memory; null, and reported, where that fails.
void* mapDescriptor(int descriptor, std::size_t bytes)
{
    if (ftruncate(descriptor, static_cast<off_t>(bytes)) != 0)
        return failed("ftruncate");
    void* const data = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    return data == MAP_FAILED ? failed("mmap") : data;
}

/// Attaches the segment; null, and reported, where that fails.
void* mapSystemV(int segment)
{
    void* const data = shmat(segment, nullptr, 0);
    // What shmat() returns when it fails.
    return reinterpret_cast<std::intptr_t>(data) == -1 ? failed("shmat") : data;
}

} // namespace

SharedMemory::SharedMemory(const X11Connection& connection, void* data, std::size_t bytes, Unmap unmap)
    : m_connection(connection)
    , m_id(xcb_generate_id(connection.get()))
    , m_data(static_cast<std::uint8_t*>(data))
    , m_bytes(bytes)
    , m_unmap(unmap)
{}

SharedMemory::~SharedMemory()
{
    if (m_isAttached)
        m_connection.check(xcb_shm_detach_checked(m_connection.get(), m_id));
    m_unmap(m_data, m_bytes);
}

std::unique_ptr<SharedMemory> SharedMemory::make(const X11Connection& connection, std::size_t bytes)
{
    std::unique_ptr<SharedMemory> memory;
    if (connection.takesDescriptors())
        memory = makeFromDescriptor(connection, bytes);
    if (!memory && connection.hasSharedMemory())
        memory = makeSystemV(connection, bytes);
    return memory;
}

std::unique_ptr<SharedMemory> SharedMemory::makeFromDescriptor(const X11Connection& connection, std::size_t bytes)
{
    const int descriptor = memfd_create(kName, MFD_CLOEXEC);
    if (descriptor < 0) {
        failed("memfd_create");
        return nullptr;
    }
    void* const data = mapDescriptor(descriptor, bytes);
    if (!data) {
        close(descriptor);
        return nullptr;
    }
    std::unique_ptr<SharedMemory> memory(new SharedMemory(connection, data, bytes, &unmapDescriptor));
    // xcb closes the descriptor when it has sent it.
    memory->m_isAttached =
        connection.check(xcb_shm_attach_fd_checked(connection.get(), memory->m_id, descriptor, /*read_only*/ 0));
    return memory->m_isAttached ? std::move(memory) : nullptr;
}

std::unique_ptr<SharedMemory> SharedMemory::makeSystemV(const X11Connection& connection, std::size_t bytes)
{
    const int segment = shmget(IPC_PRIVATE, bytes, IPC_CREAT | kOwnerOnly);
    if (segment < 0) {
        failed("shmget");
        return nullptr;
    }
    void* const data = mapSystemV(segment);
    // It lives on while somebody has attached it. Linux lets the server attach it all the same, and a process that is
    // killed leaves nothing.
    shmctl(segment, IPC_RMID, nullptr);
    if (!data)
        return nullptr;
    std::unique_ptr<SharedMemory> memory(new SharedMemory(connection, data, bytes, &unmapSystemV));
    memory->m_isAttached = connection.check(
        xcb_shm_attach_checked(connection.get(), memory->m_id, static_cast<std::uint32_t>(segment), /*read_only*/ 0));
    return memory->m_isAttached ? std::move(memory) : nullptr;
}
