#ifdef __linux__

#include "gui/platform/x11_library.h"

#include <dlfcn.h>

namespace norava::x11 {

namespace {

// The libraries stay loaded: there is no moment at which no window can come any more.
void* Open(const char* name) {
    return dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

template <typename T>
bool Find(void* library, const char* name, T& target) {
    if (!library) return false;
    target = reinterpret_cast<T>(dlsym(library, name));
    return target != nullptr;
}

bool FindCalls(Library& calls) {
    void* const xcb = Open("libxcb.so.1");
    bool all = true;
#define NORAVA_FIND(name) all = all && Find(xcb, "xcb_" #name, calls.name);
    NORAVA_XCB_CALLS(NORAVA_FIND)
#undef NORAVA_FIND
    return all;
}

void FindSharedMemory(Library::SharedMemory& shm) {
    void* const library = Open("libxcb-shm.so.0");
    const bool all = Find(library, "xcb_shm_id", shm.extension) &&
                     Find(library, "xcb_shm_query_version", shm.queryVersion) &&
                     Find(library, "xcb_shm_query_version_reply", shm.queryVersionReply) &&
                     Find(library, "xcb_shm_attach_fd_checked", shm.attach) &&
                     Find(library, "xcb_shm_detach", shm.detach) &&
                     Find(library, "xcb_shm_put_image", shm.putImage);
    if (!all) shm = {};
}

void FindKeyboard(Library::Keyboard& xkb) {
    void* const library = Open("libxcb-xkb.so.1");
    const bool all = Find(library, "xcb_xkb_id", xkb.extension) &&
                     Find(library, "xcb_xkb_use_extension", xkb.use) &&
                     Find(library, "xcb_xkb_use_extension_reply", xkb.useReply) &&
                     Find(library, "xcb_xkb_select_events", xkb.selectEvents);
    if (!all) xkb = {};
}

struct Loaded {
    Library calls;
    bool complete;

    Loaded() : complete(FindCalls(calls)) {
        if (!complete) return;
        FindSharedMemory(calls.shm);
        FindKeyboard(calls.xkb);
        Find(Open("libxkbcommon.so.0"), "xkb_keysym_to_utf32", calls.characterOfKey);
    }
};

}  // namespace

const Library* GetLibrary() {
    static const Loaded loaded;
    return loaded.complete ? &loaded.calls : nullptr;
}

}  // namespace norava::x11

#endif
