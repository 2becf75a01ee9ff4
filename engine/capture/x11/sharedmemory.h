// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/x11/x11connection.h"

#include <xcb/shm.h>

#include <cstddef>
#include <cstdint>
#include <memory>

/// Memory that an X server writes its images into. Nobody else can open it, and nothing of it outlives the process and
/// the server's connection to it.
class SharedMemory
{
public:
    /// The best kind that the server has; null where it has none.
    ///
    /// @param connection must outlive the memory
    static std::unique_ptr<SharedMemory> make(const X11Connection& connection, std::size_t bytes);
    /// Handed to the server as a file descriptor.
    static std::unique_ptr<SharedMemory> makeFromDescriptor(const X11Connection& connection, std::size_t bytes);
    /// A System V segment that only this user can attach, and that is removed with its last user.
    static std::unique_ptr<SharedMemory> makeSystemV(const X11Connection& connection, std::size_t bytes);

    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    std::uint8_t* data() const { return m_data; }
    std::size_t bytes() const { return m_bytes; }
    /// The server's name for it.
    xcb_shm_seg_t id() const { return m_id; }

private:
    using Unmap = void (*)(void* data, std::size_t bytes);

    SharedMemory(const X11Connection& connection, void* data, std::size_t bytes, Unmap unmap);

    const X11Connection& m_connection;
    const xcb_shm_seg_t m_id;
    std::uint8_t* const m_data;
    const std::size_t m_bytes;
    const Unmap m_unmap;
    bool m_isAttached = false;
};
