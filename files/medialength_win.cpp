// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filework.h"
#include "files/flvgiflength.h"
#include "files/medialength.h"

#include <QDir>
#include <QFileInfo>

#include <windows.h>

#include <propsys.h>
#include <shobjidl.h>

namespace {

/// System.Media.Duration, in units of 100 ns.
constexpr PROPERTYKEY kDuration{{0x64440490, 0x4c8b, 0x11d1, {0x8b, 0x70, 0x08, 0x00, 0x36, 0xb1, 0x1a, 0x03}}, 3};
constexpr ULONGLONG kUnitsPerMs = 10'000;

/// Of the calling thread.
class ComApartment
{
public:
    ComApartment() : m_result(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ~ComApartment()
    {
        if (SUCCEEDED(m_result))
            CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    HRESULT m_result;
};

std::optional<std::chrono::milliseconds> lengthIn(IPropertyStore& properties)
{
    PROPVARIANT value{};
    if (FAILED(properties.GetValue(kDuration, &value)))
        return std::nullopt;
    const ULONGLONG ms = value.vt == VT_UI8 ? value.uhVal.QuadPart / kUnitsPerMs : 0;
    PropVariantClear(&value);
    if (ms == 0)
        return std::nullopt;
    return std::chrono::milliseconds(static_cast<qint64>(ms));
}

/// As the system's own reader has it.
MediaLength lengthByShell(const QString& path, FileWork& work)
{
    const ComApartment apartment;
    const QString native = QDir::toNativeSeparators(path);
    IPropertyStore* properties = nullptr;
    const HRESULT opened =
        work.isCancelled()
            ? E_ABORT
            : SHGetPropertyStoreFromParsingName(reinterpret_cast<const wchar_t*>(native.utf16()), nullptr, GPS_DEFAULT,
                                                __uuidof(IPropertyStore), reinterpret_cast<void**>(&properties));
    if (FAILED(opened) || properties == nullptr)
        return {};
    const auto length = lengthIn(*properties);
    properties->Release();
    return {length};
}

} // namespace

MediaLength mediaLength(const QString& path, FileWork& work)
{
    const QString ending = QFileInfo(path).suffix();
    if (ending == QLatin1String("flv"))
        return flvLength(path, work);
    return ending == QLatin1String("gif") ? gifLength(path, work) : lengthByShell(path, work);
}
