#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "gui/control_group.h"
#include "gui/platform/platform_view.h"
#include "gui/window_events.h"

namespace norava {

// What outlives a window port while one of its events is being handled. A handler may destroy the
// group it runs in, close the window or delete the port itself: all that waits here until the
// outermost event is over.
struct DispatchState : std::enable_shared_from_this<DispatchState> {
    explicit DispatchState(CWindowPort* owner) : port(owner) {}

    void DeleteWaiting() {
        // Their destructors may add more.
        while (!groups.empty() || !views.empty()) {
            std::exchange(groups, {}).clear();
            std::exchange(views, {}).clear();
        }
    }

    int depth = 0;
    CWindowPort* port;  // null once the port is deleted
    WindowEvents events{*this};
    std::vector<std::unique_ptr<CControlGroup>> groups;
    std::vector<std::unique_ptr<PlatformView>> views;
};

// Held while the port or its view calls handlers. The outermost one deletes what waits and finishes
// the event.
class Dispatch {
  public:
    explicit Dispatch(DispatchState& portState) : state(portState.shared_from_this()) {
        ++state->depth;
    }
    ~Dispatch();
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;

    // False once a handler has deleted the port: nothing of it may be touched then.
    [[nodiscard]] bool IsPortAlive() const { return state->port != nullptr; }

  private:
    std::shared_ptr<DispatchState> state;
};

}  // namespace norava
