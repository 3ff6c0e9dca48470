#pragma once

#include <string>

#include "gui/window_port.h"

namespace norava {

// A window port in a window of its own, which follows its size and closes when the user closes it.
class CWindowPortStandalone : public CWindowPort {
  public:
    using CWindowPort::CWindowPort;
    using CWindowPort::Open;
    using CWindowPort::SetSize;

    // There is no parent to open in.
    bool Open(void* parent) override;
    // A window cannot be smaller than one pixel.
    void SetSize(CSize newSize) override;
    // What the desktop calls the window. UTF-8.
    void SetTitle(const char* newTitle);
    // Returns when the window is closed. Not to be deleted by its own handlers meanwhile.
    void Run();

  private:
    std::string title = "Norava";
};

}  // namespace norava
