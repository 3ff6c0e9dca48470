#ifdef _WIN32

#include "gui/platform/win32_drop.h"

#include <shellapi.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace norava::win32 {

namespace {

// The first of the dragged files.
std::string FirstFileOf(IDataObject* data) {
    FORMATETC format{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    STGMEDIUM medium{};
    if (!data || FAILED(data->GetData(&format, &medium))) return {};
    const std::unique_ptr<STGMEDIUM, void (*)(STGMEDIUM*)> owner(&medium, ReleaseStgMedium);
    auto* const files = static_cast<HDROP>(GlobalLock(medium.hGlobal));
    if (!files) return {};
    std::vector<wchar_t> name(DragQueryFileW(files, 0, nullptr, 0) + size_t{1});
    const UINT length = DragQueryFileW(files, 0, name.data(), static_cast<UINT>(name.size()));
    GlobalUnlock(medium.hGlobal);
    return length > 0 ? PathOf(name.data()) : std::string();
}

}  // namespace

std::wstring Wide(const std::string& utf8) {
    const auto bytes = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<size_t>(std::max(0, length)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, wide.data(), length);
    return wide;
}

std::string PathOf(const wchar_t* text) {
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (length <= 0) return {};
    std::string path(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, path.data(), length, nullptr, nullptr);
    path.pop_back();
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

HRESULT DropTarget::QueryInterface(REFIID id, void** object) {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDropTarget);
    *object = known ? static_cast<IDropTarget*>(this) : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

ULONG DropTarget::Release() {
    const ULONG left = --references;
    if (left == 0) delete this;
    return left;
}

HRESULT DropTarget::DragEnter(IDataObject* data, DWORD, POINTL, DWORD* effect) {
    path = FirstFileOf(data);
    wanted = events && !path.empty() && events->FileEntered(path.c_str());
    *effect = wanted ? DROPEFFECT_COPY : DROPEFFECT_NONE;
    return S_OK;
}

HRESULT DropTarget::DragOver(DWORD, POINTL, DWORD* effect) {
    *effect = wanted ? DROPEFFECT_COPY : DROPEFFECT_NONE;
    return S_OK;
}

HRESULT DropTarget::DragLeave() {
    const std::string left = std::exchange(path, {});
    if (events && !left.empty()) events->FileLeft(left.c_str());
    return S_OK;
}

HRESULT DropTarget::Drop(IDataObject*, DWORD, POINTL, DWORD* effect) {
    const std::string file = std::exchange(path, {});
    const bool used = events && wanted && !file.empty() && events->FileDropped(file.c_str());
    *effect = used ? DROPEFFECT_COPY : DROPEFFECT_NONE;
    return S_OK;
}

}  // namespace norava::win32

#endif
