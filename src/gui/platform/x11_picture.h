#pragma once

#include <span>
#include <vector>

#include "gui/geometry.h"
#include "gui/platform/x11_connection.h"

namespace norava::x11 {

// Brings finished pixels into a window: through memory shared with the server, else in requests.
class Picture {
  public:
    Picture(const Connection& server, xcb_window_t target);
    ~Picture();
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    // Stored pixels.
    void Resize(CSize newSize);
    // Shows the part `clip` of `words`, whose rows lie bottom-up.
    void Show(const uint32_t* words, CSize wordsSize, CRect clip);
    // The server still reads what was shown before: showing more would change it under its eyes.
    [[nodiscard]] bool IsBusy() const { return unfinished > 0; }
    [[nodiscard]] bool IsShared() const { return memory != nullptr; }

    enum class Event { other, ours, failed };
    // Failed: sharing memory does not work after all, everything has to be shown again.
    Event Handle(const xcb_generic_event_t& event);

  private:
    void Share();
    void StopSharing();
    void ShowShared(const uint32_t* words, CSize wordsSize, CRect clip);
    void ShowInRequests(const uint32_t* words, CSize wordsSize, CRect clip);
    // One row in the layout of the window.
    void Convert(std::span<const uint32_t> row, uint32_t* target) const;

    const Connection& connection;
    const xcb_window_t window;
    const xcb_gcontext_t context;
    const xcb_query_extension_reply_t* sharing = nullptr;  // null: not to be had
    CSize size;
    void* memory = nullptr;
    size_t memoryBytes = 0;
    xcb_shm_seg_t segment = 0;
    int unfinished = 0;
    std::vector<uint32_t> rows;
};

}  // namespace norava::x11
