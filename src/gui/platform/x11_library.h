#pragma once

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

// The calls of the window system's client libraries. They are looked up when the first window
// opens, never linked: the module must load, and play, where they are not installed. Only the types
// come from their headers.
namespace norava::x11 {

#define NORAVA_XCB_CALLS(CALL)           \
    CALL(connect)                        \
    CALL(disconnect)                     \
    CALL(connection_has_error)           \
    CALL(get_file_descriptor)            \
    CALL(get_setup)                      \
    CALL(get_maximum_request_length)     \
    CALL(get_extension_data)             \
    CALL(generate_id)                    \
    CALL(flush)                          \
    CALL(poll_for_event)                 \
    CALL(poll_for_queued_event)          \
    CALL(request_check)                  \
    CALL(discard_reply)                  \
    CALL(setup_roots_iterator)           \
    CALL(screen_next)                    \
    CALL(screen_allowed_depths_iterator) \
    CALL(depth_next)                     \
    CALL(depth_visuals_iterator)         \
    CALL(visualtype_next)                \
    CALL(setup_pixmap_formats_iterator)  \
    CALL(format_next)                    \
    CALL(intern_atom)                    \
    CALL(intern_atom_reply)              \
    CALL(get_property)                   \
    CALL(get_property_reply)             \
    CALL(get_property_value)             \
    CALL(get_property_value_length)      \
    CALL(change_property)                \
    CALL(delete_property)                \
    CALL(create_colormap)                \
    CALL(create_window_checked)          \
    CALL(destroy_window)                 \
    CALL(change_window_attributes)       \
    CALL(map_window)                     \
    CALL(configure_window)               \
    CALL(create_gc)                      \
    CALL(free_gc)                        \
    CALL(poly_fill_rectangle)            \
    CALL(create_pixmap)                  \
    CALL(free_pixmap)                    \
    CALL(create_cursor)                  \
    CALL(put_image)                      \
    CALL(grab_pointer)                   \
    CALL(ungrab_pointer)                 \
    CALL(warp_pointer)                   \
    CALL(get_input_focus)                \
    CALL(get_input_focus_reply)          \
    CALL(set_input_focus)                \
    CALL(send_event)                     \
    CALL(convert_selection)              \
    CALL(get_keyboard_mapping)           \
    CALL(get_keyboard_mapping_reply)     \
    CALL(get_keyboard_mapping_keysyms)   \
    CALL(get_keyboard_mapping_keysyms_length)

struct Library {
// The name of a field cannot be enclosed.
#define NORAVA_DECLARE(name) \
    decltype(&xcb_##name) name = nullptr;  // NOLINT(bugprone-macro-parentheses)
    NORAVA_XCB_CALLS(NORAVA_DECLARE)
#undef NORAVA_DECLARE

    // Shared memory for pictures. All null when that library is not installed.
    struct SharedMemory {
        xcb_extension_t* extension = nullptr;
        decltype(&xcb_shm_query_version) queryVersion = nullptr;
        decltype(&xcb_shm_query_version_reply) queryVersionReply = nullptr;
        decltype(&xcb_shm_attach_fd_checked) attach = nullptr;
        decltype(&xcb_shm_detach) detach = nullptr;
        decltype(&xcb_shm_put_image) putImage = nullptr;
    } shm;

    // With this a server tells in which of several keyboard layouts a key was typed. All null when
    // not installed. Its header is not C++, so the calls are declared here.
    struct Keyboard {
        struct UseCookie {
            unsigned sequence;
        };
        xcb_extension_t* extension = nullptr;
        UseCookie (*use)(xcb_connection_t*, uint16_t major, uint16_t minor) = nullptr;
        void* (*useReply)(xcb_connection_t*, UseCookie, xcb_generic_error_t**) = nullptr;
        xcb_void_cookie_t (*selectEvents)(xcb_connection_t*, uint16_t device, uint16_t affected,
                                          uint16_t clear, uint16_t selectAll, uint16_t affectedMap,
                                          uint16_t map, const void* details) = nullptr;
    } xkb;

    // The character of a key symbol, 0 for none; null when that library is not installed.
    uint32_t (*characterOfKey)(uint32_t symbol) = nullptr;
};

// Null where the window system's library is not installed. Any thread.
const Library* GetLibrary();

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
// A reply or an event: the library allocates it, the caller frees it.
template <typename T>
using Owned = std::unique_ptr<T, FreeMemory>;

}  // namespace norava::x11
