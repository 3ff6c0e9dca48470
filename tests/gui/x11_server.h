#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gui/geometry.h"

namespace norava::test {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
std::unique_ptr<T, Free> Own(T* memory) {
    return std::unique_ptr<T, Free>(memory);
}

// A display server of the test's own that shows nothing to anybody. Not running where Xvfb is not
// installed.
class Server {
  public:
    explicit Server(const std::string& options = {}) {
        int ends[2];
        if (pipe(ends) != 0) return;
        process = fork();
        if (process == 0) {
            const std::string command = "exec Xvfb -displayfd " + std::to_string(ends[1]) +
                                        " -screen 0 640x480x24 -nolisten tcp -ac " + options +
                                        " 2>/dev/null";
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
        close(ends[1]);
        char number[16] = "";
        FILE* const told = fdopen(ends[0], "r");
        if (std::fscanf(told, "%15s", number) == 1) display = std::string(":") + number;
        std::fclose(told);
        if (IsRunning()) setenv("DISPLAY", display.c_str(), 1);
    }
    ~Server() { Kill(); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    void Kill() {
        if (process > 0) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
            // Its number may be that of another test's server in a moment.
            const char* const named = std::getenv("DISPLAY");
            if (named && display == named) setenv("DISPLAY", ":9999", 1);
        }
        process = 0;
    }
    [[nodiscard]] bool IsRunning() const { return !display.empty(); }

  private:
    pid_t process = 0;
    std::string display;
};

// The user and the host on a server: real mouse and keys, a parent window, pictures of the screen.
class Desktop {
  public:
    Desktop()
        : raw(xcb_connect(nullptr, nullptr)),
          root(xcb_setup_roots_iterator(xcb_get_setup(raw)).data->root) {
        // Where a server begins to take input depends on it.
        MoveMouse({0, 0});
    }
    ~Desktop() { xcb_disconnect(raw); }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    xcb_connection_t* const raw;
    const xcb_window_t root;

    xcb_window_t MakeWindow(CRect at, uint32_t events = 0) {
        const xcb_window_t made = xcb_generate_id(raw);
        const uint32_t values[] = {1, events};  // no window manager: stays where it is put
        xcb_create_window(raw, XCB_COPY_FROM_PARENT, made, root, static_cast<int16_t>(at.left),
                          static_cast<int16_t>(at.top), static_cast<uint16_t>(at.width),
                          static_cast<uint16_t>(at.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                          values);
        xcb_map_window(raw, made);
        Synchronise();
        return made;
    }
    void Synchronise() { Own(xcb_get_input_focus_reply(raw, xcb_get_input_focus(raw), nullptr)); }

    void Fake(uint8_t kind, uint8_t detail, CPoint at = {}) {
        xcb_test_fake_input(raw, kind, detail, 0, root, static_cast<int16_t>(at.x),
                            static_cast<int16_t>(at.y), 0);
        Synchronise();
    }
    void MoveMouse(CPoint to) { Fake(XCB_MOTION_NOTIFY, 0, to); }
    void MoveMouseBy(CPoint distance) { Fake(XCB_MOTION_NOTIFY, 1, distance); }
    void Press(uint8_t button = 1) { Fake(XCB_BUTTON_PRESS, button); }
    void Release(uint8_t button = 1) { Fake(XCB_BUTTON_RELEASE, button); }
    void Click(uint8_t button = 1) {
        Press(button);
        Release(button);
    }
    // The key that carries this symbol on the server's keyboard.
    uint8_t FindKey(xcb_keysym_t symbol) {
        const xcb_setup_t* setup = xcb_get_setup(raw);
        const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        const auto keys = Own(xcb_get_keyboard_mapping_reply(
            raw, xcb_get_keyboard_mapping(raw, setup->min_keycode, count), nullptr));
        const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(keys.get());
        unsigned key = 0;
        while (key < count && symbols[key * keys->keysyms_per_keycode] != symbol)
            ++key;
        EXPECT_LT(key, count) << "no key " << symbol;
        return static_cast<uint8_t>(setup->min_keycode + key);
    }
    void Type(xcb_keysym_t symbol) {
        const uint8_t code = FindKey(symbol);
        Fake(XCB_KEY_PRESS, code);
        Fake(XCB_KEY_RELEASE, code);
    }
    void ChangeKey(xcb_keysym_t from, xcb_keysym_t to) {
        xcb_change_keyboard_mapping(raw, 1, FindKey(from), 1, &to);
        Synchronise();
    }

    [[nodiscard]] CPoint WhereIsMouse() const {
        const auto reply = Own(xcb_query_pointer_reply(raw, xcb_query_pointer(raw, root), nullptr));
        return {reply->root_x, reply->root_y};
    }
    [[nodiscard]] xcb_window_t WhoHasFocus() const {
        return Own(xcb_get_input_focus_reply(raw, xcb_get_input_focus(raw), nullptr))->focus;
    }
    // Words as an opaque buffer holds them.
    [[nodiscard]] std::vector<uint32_t> Picture(CRect part) const {
        const auto reply = Own(xcb_get_image_reply(
            raw,
            xcb_get_image(raw, XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<int16_t>(part.left),
                          static_cast<int16_t>(part.top), static_cast<uint16_t>(part.width),
                          static_cast<uint16_t>(part.height), ~0u),
            nullptr));
        if (!reply) return {};
        std::vector<uint32_t> words(static_cast<size_t>(part.width * part.height));
        std::memcpy(words.data(), xcb_get_image_data(reply.get()), words.size() * 4);
        for (uint32_t& word : words)
            word = 0xFF000000u | (word & 0xFFu) << 16 | (word & 0xFF00u) | (word >> 16 & 0xFFu);
        return words;
    }
    xcb_atom_t Atom(const std::string& name) {
        const auto cookie =
            xcb_intern_atom(raw, 0, static_cast<uint16_t>(name.size()), name.data());
        return Own(xcb_intern_atom_reply(raw, cookie, nullptr))->atom;
    }
    void Send(xcb_window_t to, xcb_atom_t type, const std::vector<uint32_t>& words) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = to;
        message.type = type;
        std::memcpy(message.data.data32, words.data(), 4 * words.size());
        xcb_send_event(raw, 0, to, 0, reinterpret_cast<const char*>(&message));
        Synchronise();
    }
    // The next event of a kind, waited for while `meanwhile` runs; null after two seconds.
    std::unique_ptr<xcb_generic_event_t, Free> Await(uint8_t kind,
                                                     const std::function<void()>& meanwhile) {
        for (int i = 0; i < 400; ++i) {
            meanwhile();
            while (auto event = Own(xcb_poll_for_event(raw)))
                if ((event->response_type & 0x7Fu) == kind) return event;
            usleep(5000);
        }
        return nullptr;
    }
};

}  // namespace norava::test
