#pragma once

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <ole2.h>
#include <windows.h>

#include <atomic>
#include <string>

#include "gui/platform/platform_view.h"

namespace norava::win32 {

// Text of the system and ours. What is not valid becomes U+FFFD.
std::wstring Wide(const std::string& utf8);
// '/' between folders.
std::string PathOf(const wchar_t* text);

// Where a file is dragged to and dropped. The system counts its references.
class DropTarget final : public IDropTarget {
  public:
    explicit DropTarget(PlatformEvents& listener) : events(&listener) {}
    virtual ~DropTarget() = default;

    // The window goes; the system may hold this a little longer.
    void Forget() { events = nullptr; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL at,
                                        DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragOver(DWORD keys, POINTL at, DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragLeave() override;
    HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD keys, POINTL at,
                                   DWORD* effect) override;

  private:
    PlatformEvents* events;
    std::atomic<ULONG> references{1};
    std::string path;
    bool wanted = false;
};

}  // namespace norava::win32
