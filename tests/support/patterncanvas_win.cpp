// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/patterncanvas.h"

#include <windows.h>
#include <utility>

namespace {

/// Set by the window's procedure, which has no other way to the canvas; there is one canvas in the program.
bool g_exposed = false;
bool g_closed = false;

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_PAINT) {
        ValidateRect(window, nullptr);
        g_exposed = true;
        return 0;
    }
    // Whatever comes to the front, the pattern stays behind it.
    if (message == WM_WINDOWPOSCHANGING)
        reinterpret_cast<WINDOWPOS*>(lParam)->hwndInsertAfter = HWND_BOTTOM;
    if (message == WM_MOUSEACTIVATE)
        return MA_NOACTIVATE;
    g_closed = g_closed || message == WM_DESTROY;
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

struct PatternCanvas::Private
{
    HWND window = nullptr;
    HDC context = nullptr;
};

PatternCanvas::PatternCanvas() : m_private(std::make_unique<Private>()) {}

PatternCanvas::~PatternCanvas()
{
    if (m_private->context != nullptr)
        ReleaseDC(m_private->window, m_private->context);
    if (m_private->window != nullptr)
        DestroyWindow(m_private->window);
}

bool PatternCanvas::isBroken() const
{
    return g_closed;
}

QSize PatternCanvas::size() const
{
    return {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
}

void PatternCanvas::show(const QColor& /*background*/)
{
    WNDCLASSEXW description{};
    description.cbSize = sizeof(description);
    // One context for the window's whole life.
    description.style = CS_OWNDC;
    description.lpfnWndProc = &onMessage;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = L"KestranoTestPattern";
    RegisterClassExW(&description);
    m_private->window = CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, description.lpszClassName,
                                        L"Moving test pattern", WS_POPUP, 0, 0, size().width(), size().height(),
                                        nullptr, nullptr, description.hInstance, nullptr);
    g_closed = m_private->window == nullptr;
    m_private->context = GetDC(m_private->window);
    ShowWindow(m_private->window, SW_SHOWNOACTIVATE);
    g_exposed = true;
}

void PatternCanvas::fill(const QRect& area, const QColor& colour)
{
    const RECT rect{area.left(), area.top(), area.left() + area.width(), area.top() + area.height()};
    SetDCBrushColor(m_private->context, RGB(colour.red(), colour.green(), colour.blue()));
    FillRect(m_private->context, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void PatternCanvas::flush()
{
    GdiFlush();
}

bool PatternCanvas::takeExposure()
{
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0)
        DispatchMessageW(&message);
    return std::exchange(g_exposed, false);
}
