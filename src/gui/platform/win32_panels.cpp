#ifdef _WIN32

#include <shobjidl.h>

#include "gui/platform/win32_view.h"

namespace norava::win32 {

namespace {

template <typename T>
struct ReleaseObject {
    void operator()(T* object) const { object->Release(); }
};
template <typename T>
using Object = std::unique_ptr<T, ReleaseObject<T>>;

void SetStart(IFileDialog& dialog, const FileDialogRequest& request) {
    std::wstring folder = Wide(request.folder);
    for (wchar_t& letter : folder)
        if (letter == L'/') letter = L'\\';
    IShellItem* found = nullptr;
    if (SUCCEEDED(SHCreateItemFromParsingName(folder.c_str(), nullptr, IID_PPV_ARGS(&found)))) {
        dialog.SetFolder(found);
        found->Release();
    }
    dialog.SetFileName(Wide(request.suggestedName).c_str());
    dialog.SetTitle(Wide(request.title).c_str());
}

void SetTypes(IFileDialog& dialog, const FileDialogRequest& request) {
    if (request.extensions.empty()) return;
    std::string patterns;
    for (const std::string& extension : request.extensions)
        patterns += (patterns.empty() ? "*." : ";*.") + extension;
    const std::wstring name = Wide(request.typeName);
    const std::wstring wide = Wide(patterns);
    const COMDLG_FILTERSPEC type{name.c_str(), wide.c_str()};
    dialog.SetFileTypes(1, &type);
    dialog.SetDefaultExtension(Wide(request.extensions.front()).c_str());
}

// Runs a loop of messages of its own until the user has chosen.
std::string AskUser(HWND owner, const FileDialogRequest& request) {
    IFileDialog* made = nullptr;
    const CLSID& kind = request.save ? CLSID_FileSaveDialog : CLSID_FileOpenDialog;
    if (FAILED(CoCreateInstance(kind, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&made))))
        return {};
    const Object<IFileDialog> dialog(made);
    SetStart(*dialog, request);
    SetTypes(*dialog, request);
    dialog->SetOptions(FOS_FORCEFILESYSTEM | FOS_NOCHANGEDIR |
                       (request.save ? FOS_OVERWRITEPROMPT : FOS_FILEMUSTEXIST));
    if (FAILED(dialog->Show(owner))) return {};
    IShellItem* found = nullptr;
    if (FAILED(dialog->GetResult(&found))) return {};
    const Object<IShellItem> item(found);
    PWSTR text = nullptr;
    if (FAILED(item->GetDisplayName(SIGDN_FILESYSPATH, &text))) return {};
    const std::unique_ptr<wchar_t, void (*)(void*)> owned(text, CoTaskMemFree);
    return PathOf(text);
}

}  // namespace

bool View::AskForFile(const FileDialogRequest& request, FileChosen chosen) {
    if (!window || !oleStarted) return false;
    Post([this, request, chosen = std::move(chosen)] {
        const std::shared_ptr<bool> stillThere = alive;
        const std::string path = AskUser(GetAncestor(window, GA_ROOT), request);
        if (*stillThere && !path.empty()) chosen(path);
    });
    return true;
}

bool View::ShowMessage(const std::string& title, const std::string& text) {
    if (!window) return false;
    Post([this, title, text] {
        MessageBoxW(GetAncestor(window, GA_ROOT), Wide(text).c_str(), Wide(title).c_str(), MB_OK);
    });
    return true;
}

}  // namespace norava::win32

#endif
