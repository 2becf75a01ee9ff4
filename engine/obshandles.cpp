#include "engine/obshandles.h"

#include <utility>

ObsSignalConnection::ObsSignalConnection(signal_handler_t* handler, const char* signal, signal_callback_t callback,
                                         void* data)
    : m_handler(handler), m_signal(signal), m_callback(callback), m_data(data)
{
    signal_handler_connect_ref(m_handler, m_signal, m_callback, m_data);
}

ObsSignalConnection::ObsSignalConnection(ObsSignalConnection&& other) noexcept
    : m_handler(std::exchange(other.m_handler, nullptr))
    , m_signal(std::exchange(other.m_signal, nullptr))
    , m_callback(std::exchange(other.m_callback, nullptr))
    , m_data(std::exchange(other.m_data, nullptr))
{}

ObsSignalConnection& ObsSignalConnection::operator=(ObsSignalConnection&& other) noexcept
{
    if (this != &other) {
        reset();
        m_handler = std::exchange(other.m_handler, nullptr);
        m_signal = std::exchange(other.m_signal, nullptr);
        m_callback = std::exchange(other.m_callback, nullptr);
        m_data = std::exchange(other.m_data, nullptr);
    }
    return *this;
}

ObsSignalConnection::~ObsSignalConnection()
{
    reset();
}

void ObsSignalConnection::reset()
{
    if (m_handler)
        signal_handler_disconnect(m_handler, m_signal, m_callback, m_data);
    m_handler = nullptr;
    m_signal = nullptr;
    m_callback = nullptr;
    m_data = nullptr;
}
